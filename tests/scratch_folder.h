// A folder that is there while the object lives, and the files in it.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

class ScratchFolder {
public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "velmora-XXXXXX").string();
        if (!mkdtemp(&name[0]))
            throw std::runtime_error("mkdtemp failed");
        path = name;
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() { std::filesystem::remove_all(path); }

    std::string file(const std::string& name) const { return (path / name).string(); }

    // Writes a file and returns its path.
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    }

    std::string read(const std::string& name) const {
        std::ifstream input(file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(input), {}};
    }

    // What is in the folder, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(path))
            all.push_back(entry.path().filename().string());
        std::sort(all.begin(), all.end());
        return all;
    }

private:
    std::filesystem::path path;
};
