// SPDX-License-Identifier: BSD-3-Clause

// A page of the documentation and the blocks between its fences.
#pragma once

#include <string>
#include <vector>

struct Block {
    std::string page; // from the root of the tree
    int line;         // of its first line, from 1
    std::string language;
    std::string text; // whole lines

    // For messages: "docs/a.md:12".
    std::string place() const { return page + ":" + std::to_string(line); }
};

// README.md and the pages in docs/, sorted.
std::vector<std::string> all_pages();

std::string text_of_page(const std::string& page);
std::vector<Block> blocks_of_page(const std::string& page);
