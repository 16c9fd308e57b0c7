// SPDX-License-Identifier: BSD-3-Clause

// That the files and folders which docs/architecture.md names are there.
#include "tests/docs/page.h"

#include <glob.h>
#include <gtest/gtest.h>
#include <regex>

// Whether a pattern of the shell's, from the root of the tree, has a match.
static bool is_there(const std::string& pattern) {
    glob_t matches;
    const int result = glob((VELMORA_SOURCE "/" + pattern).c_str(), 0, nullptr, &matches);
    globfree(&matches);
    return result == 0;
}

TEST(ArchitecturePage, NamesFilesThatAreThere) {
    // Between backquotes, with a slash and without blanks; headers of others are in brackets.
    static const std::regex path("`([a-z][\\w*.]*/[\\w*./-]*)`", std::regex::icase);
    const std::string text = text_of_page("docs/architecture.md");
    int paths = 0;
    for (std::sregex_iterator each(text.begin(), text.end(), path), end; each != end; ++each) {
        EXPECT_TRUE(is_there((*each)[1])) << (*each)[1];
        paths++;
    }
    EXPECT_GT(paths, 30);
}
