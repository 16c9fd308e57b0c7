// SPDX-License-Identifier: BSD-3-Clause

// The build, installed into a scratch folder of its own for each test.
#pragma once

#include "tests/scratch_folder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

class Installed : public testing::Test {
protected:
    ScratchFolder folder;
    const std::string home = folder.file("velmora");

    void SetUp() override {
        ASSERT_TRUE(runs(CMAKE " --install " VELMORA_BUILD " --prefix '" + home + "'"))
            << folder.read("said");
    }

    // Runs a command in the root folder, far from everything; what it says goes into the file said.
    bool runs(const std::string& command) const {
        return std::system(
                   ("cd / && " + command + " </dev/null >'" + folder.file("said") + "' 2>&1")
                       .c_str()) == 0;
    }

    // Runs the installed program, which says `said`.
    void velmora(const std::string& arguments, const std::string& said = "") const {
        EXPECT_TRUE(runs("'" + home + "/bin/velmora' " + arguments)) << arguments;
        EXPECT_EQ(folder.read("said"), said) << arguments;
    }
};
