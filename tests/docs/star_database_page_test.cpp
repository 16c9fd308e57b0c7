// SPDX-License-Identifier: BSD-3-Clause

// The example in docs/star-database.md, taken from the page itself.
#include "catalog/database_writer.h"
#include "tests/docs/hex_dump.h"
#include "tests/docs/page.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(StarDatabasePage, ShowsTheBytesThatAreWritten) {
    const ScratchFolder folder;
    const star vega = {279.25, 38.75, 1, 204, 217, 255, 0, 7.6875};
    write_star_database(folder.file("one.velmora"), {vega});
    EXPECT_EQ(bytes_of_dump(blocks_of_page("docs/star-database.md").at(0).text),
              folder.read("one.velmora"));
}
