// The example in docs/star-database.md, taken from the page itself.
#include "catalog/database_writer.h"
#include "tests/docs/page.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace velmora;

// The bytes of a dump with lines "offset  hex … hex  |text|".
static std::string bytes_of_dump(const std::string& dump) {
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

TEST(StarDatabasePage, ShowsTheBytesThatAreWritten) {
    const ScratchFolder folder;
    const star vega = {279.25, 38.75, 1, 204, 217, 255, 0, 7.6875};
    write_star_database(folder.file("one.velmora"), {vega});
    EXPECT_EQ(bytes_of_dump(blocks_of_page("docs/star-database.md").at(0).text),
              folder.read("one.velmora"));
}
