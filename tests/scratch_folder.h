// SPDX-License-Identifier: BSD-3-Clause

// A folder that exists while the object lives, and the files in it.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <vector>

class ScratchFolder {
public:
    // Readable by everyone, so that tests can continue as another user.
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "velmora-XXXXXX").string();
        if (!mkdtemp(&name[0]) || chmod(name.c_str(), 0755) != 0)
            throw std::runtime_error("no folder for the test");
        root = name;
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }

    std::string path() const { return root.string(); }

    // The path of a file of this name, whether it exists or not.
    std::string file(const std::string& name) const { return (root / name).string(); }

    // Writes a file and returns its path.
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    }

    // Makes a folder and returns its path.
    std::string folder(const std::string& name) const {
        std::filesystem::create_directory(root / name);
        return file(name);
    }

    std::string read(const std::string& name) const {
        std::ifstream input(file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(input), {}};
    }

    // What is in the folder, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(root))
            all.push_back(entry.path().filename().string());
        std::sort(all.begin(), all.end());
        return all;
    }

private:
    std::filesystem::path root;
};
