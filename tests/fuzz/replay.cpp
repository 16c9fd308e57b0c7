// SPDX-License-Identifier: BSD-3-Clause

// Gives every file of a folder, whole and cut at every length, to the fuzz program that this is
// linked with, and prints its name. A file that breaks a law is the last one named.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace fs = std::filesystem;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

static std::vector<fs::path> files_in(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

static std::vector<uint8_t> bytes_of(const fs::path& path) {
    std::ifstream input(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(input), {}};
}

static void replay(const std::vector<uint8_t>& bytes) {
    for (size_t length = 0; length <= bytes.size(); length++) {
        // A block of exactly that size, so that a sanitizer sees reads beyond its end.
        const std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + std::ptrdiff_t(length));
        LLVMFuzzerTestOneInput(cut.data(), length);
    }
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    size_t inputs = 0;
    const std::vector<fs::path> files = files_in(argv[1]);
    for (const fs::path& file : files) {
        const std::vector<uint8_t> bytes = bytes_of(file);
        printf("%s, at %zu lengths\n", file.filename().c_str(), bytes.size() + 1);
        fflush(stdout);
        replay(bytes);
        inputs += bytes.size() + 1;
    }
    printf("%zu files, %zu inputs\n", files.size(), inputs);
    if (files.empty()) {
        fprintf(stderr, "no file in %s\n", argv[1]);
        return 1;
    }
    return 0;
}
