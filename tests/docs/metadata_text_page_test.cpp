// SPDX-License-Identifier: BSD-3-Clause

// The examples in docs/metadata-text.md, taken from the page itself.
#include "kessimage/image.h"
#include "tests/docs/hex_dump.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

typedef Kess::ImageSpec::MetaData MetaData;

static const std::string introduction = "KESSMETA1";

namespace {

struct Tag {
    std::string type, name, value;
};

struct Page {
    std::string text;
    std::vector<std::string> blocks;     // between fences, without the last line end
    std::vector<Tag> tags;               // rows of the example's table
    std::string line, dump, matrix_line; // the last three blocks
};

// Interned names live until the test's end.
class MetadataTextPage : public testing::Test {
protected:
    ~MetadataTextPage() override { InString::cleanup(); }
};

} // namespace

static bool starts_with(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

// The row "| type | `name` | `value` |"; false for any other line.
static bool parse_row(const std::string& row, Tag& tag) {
    for (const char* type : {"float", "string"}) {
        const std::string start = "| " + std::string(type) + " | `";
        const std::string between = "` | `", end = "` |";
        const size_t middle = row.find(between);
        if (!starts_with(row, start) || middle == std::string::npos)
            continue;
        const size_t value = middle + between.size();
        tag = {type, row.substr(start.size(), middle - start.size()),
               row.substr(value, row.size() - end.size() - value)};
        return true;
    }
    return false;
}

static Page read_page() {
    Page page;
    std::ifstream input(METADATA_TEXT_PAGE, std::ios::binary);
    bool in_block = false, in_example = false;
    for (std::string line; std::getline(input, line);) {
        page.text += line + "\n";
        in_example |= line == "## An example";
        if (line == "```") {
            in_block = !in_block;
            if (in_block)
                page.blocks.emplace_back();
        } else if (in_block) {
            std::string& block = page.blocks.back();
            block += (block.empty() ? "" : "\n") + line;
        }
        Tag tag;
        if (in_example && parse_row(line, tag))
            page.tags.push_back(tag);
    }
    if (page.blocks.size() >= 3) {
        page.matrix_line = page.blocks.end()[-1];
        page.dump = page.blocks.end()[-2];
        page.line = page.blocks.end()[-3];
    }
    return page;
}

static void set_tag(MetaData& set, const Tag& tag) {
    if (tag.type == "float")
        set.set_meta("float", tag.name.c_str(), std::stof(tag.value));
    else
        set.set_meta("string", tag.name.c_str(), String(tag.value.c_str()));
}

// The items of the page's set in the page's order, each as it is written by itself.
static std::vector<std::string> items_of(const std::vector<Tag>& tags) {
    std::vector<std::string> items;
    for (const Tag& tag : tags) {
        MetaData set;
        set_tag(set, tag);
        items.push_back(std::string(set.stringify().str).substr(introduction.size()));
    }
    return items;
}

static std::string line_of(const std::vector<std::string>& items) {
    std::string line = introduction;
    for (const std::string& item : items)
        line += item;
    return line;
}

TEST_F(MetadataTextPage, ShowsALineAndItsBytes) {
    const Page page = read_page();
    ASSERT_EQ(page.tags.size(), 4u);
    EXPECT_EQ(bytes_of_dump(page.dump), page.line);
    EXPECT_NE(page.text.find("a line of " + std::to_string(page.line.size()) + " bytes:"),
              std::string::npos);
}

TEST_F(MetadataTextPage, ShowsWhatIsWritten) {
    const Page page = read_page();
    std::vector<std::string> items = items_of(page.tags);
    EXPECT_EQ(line_of(items), page.line);

    // All in one set they come in the set's own order.
    MetaData set;
    for (const Tag& tag : page.tags)
        set_tag(set, tag);
    const std::string written = set.stringify().str;
    std::sort(items.begin(), items.end());
    bool found = false;
    do
        found |= line_of(items) == written;
    while (std::next_permutation(items.begin(), items.end()));
    EXPECT_TRUE(found) << written;
}

TEST_F(MetadataTextPage, ShowsALineThatReadsBack) {
    const Page page = read_page();
    MetaData described, read;
    for (const Tag& tag : page.tags)
        set_tag(described, tag);
    read.from_string(page.line.c_str());
    EXPECT_TRUE(read == described);
    EXPECT_TRUE(described == read);
}

TEST_F(MetadataTextPage, ShowsTheIdentityMatrix) {
    const Page page = read_page();
    Matrix4<float> identity;
    for (int i = 0; i < 16; i++)
        identity.e[i] = i % 5 == 0 ? 1.0f : 0.0f;
    MetaData set, read;
    set.set_meta("m44f", "world", identity);
    EXPECT_STREQ(set.stringify().str, page.matrix_line.c_str());
    read.from_string(page.matrix_line.c_str());
    EXPECT_TRUE(read == set);
}

TEST_F(MetadataTextPage, BeginsWithALineThatReads) {
    MetaData set;
    set.from_string(read_page().blocks.at(0).c_str());
    float gain = 0;
    String label;
    EXPECT_EQ(set.get_meta("float", "gain", gain), 0);
    EXPECT_EQ(gain, 1.5f);
    EXPECT_EQ(set.get_meta("string", "label", label), 0);
    EXPECT_STREQ(label.str, "two words");
}
