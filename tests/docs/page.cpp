// SPDX-License-Identifier: BSD-3-Clause
#include "tests/docs/page.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

std::vector<std::string> all_pages() {
    std::vector<std::string> pages = {"README.md"};
    for (const fs::directory_entry& entry : fs::directory_iterator(VELMORA_SOURCE "/docs"))
        if (entry.path().extension() == ".md")
            pages.push_back("docs/" + entry.path().filename().string());
    std::sort(pages.begin(), pages.end());
    return pages;
}

std::string text_of_page(const std::string& page) {
    std::ifstream input(VELMORA_SOURCE "/" + page, std::ios::binary);
    if (!input)
        throw std::runtime_error(page + " cannot be read");
    return {std::istreambuf_iterator<char>(input), {}};
}

std::vector<Block> blocks_of_page(const std::string& page) {
    static const std::string fence = "```";
    std::vector<Block> blocks;
    bool inside = false;
    int number = 0;
    std::istringstream input(text_of_page(page));
    for (std::string line; std::getline(input, line);) {
        number++;
        if (line.compare(0, fence.size(), fence) == 0) {
            inside = !inside;
            if (inside)
                blocks.push_back({page, number + 1, line.substr(fence.size()), ""});
        } else if (inside) {
            blocks.back().text += line + "\n";
        }
    }
    if (inside)
        throw std::runtime_error(page + ": the last fence is never closed");
    return blocks;
}
