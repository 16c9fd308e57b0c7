// SPDX-License-Identifier: BSD-3-Clause

// Runs the built command line as a user does, in a scratch folder, and reads what it leaves.
#pragma once

#include "tests/scratch_folder.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <vector>

// What a run gave back.
struct Ran {
    int status; // exit status, or minus the signal that ended it
    std::string out, err;
};

// A folder of its own for each test, with the program run inside it.
class Program : public testing::Test {
protected:
    ScratchFolder folder;

    // `arguments` as a shell takes them, redirections too; `before` precedes the program's
    // name.
    Ran run(const std::string& arguments, const std::string& before = "") const {
        const ScratchFolder streams;
        const std::string command = "cd '" + folder.file("") + "' && " + before +
                                    " " VELMORA_PROGRAM " </dev/null >" + streams.file("out") +
                                    " 2>" + streams.file("err") + " " + arguments;
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), streams.read("out"),
                streams.read("err")};
    }

    // The floats of a --raw file.
    std::vector<float> floats_of(const std::string& name) const {
        const std::string bytes = folder.read(name);
        std::vector<float> floats(bytes.size() / sizeof(float));
        std::memcpy(floats.data(), bytes.data(), floats.size() * sizeof(float));
        return floats;
    }
};
