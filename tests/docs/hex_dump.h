// SPDX-License-Identifier: BSD-3-Clause

// The bytes of a page's hex dump.
#pragma once

#include <gtest/gtest.h>
#include <sstream>
#include <string>

// Of a dump with lines "offset  hex … hex  |text|", whose offsets are checked.
inline std::string bytes_of_dump(const std::string& dump) {
    std::string bytes;
    std::istringstream lines(dump);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line.substr(0, line.find('|')));
        std::string word;
        words >> word;
        EXPECT_EQ(std::stoul(word, nullptr, 16), bytes.size()) << line;
        while (words >> word)
            bytes += char(std::stoul(word, nullptr, 16));
    }
    return bytes;
}
