// SPDX-License-Identifier: BSD-3-Clause

// The writer against a disk that fills.
#include "catalog/database_writer.h"

#include "tests/message_of.h"
#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"

#include <cerrno>
#include <gtest/gtest.h>

using namespace velmora;

typedef std::vector<std::string> Names;

// The header and 20000 stars go out in five blocks. The calls around them are the whole file's
// and fail in its own tests.
TEST(DatabaseWriterFailure, OfALaterBlockLeavesTheOldFile) {
    const ScratchFolder folder;
    const std::string path = folder.write("sky", "the old file");
    const std::vector<star> stars(20000, star());
    {
        SystemCalls calls;
        calls.fail("write", ENOSPC, 3);
        EXPECT_EQ(message_without_place_of([&] { write_star_database(path, stars); }),
                  "write: No space left on device");
        EXPECT_EQ(calls.count("write"), 3);
    }
    EXPECT_EQ(folder.read("sky"), "the old file");
    EXPECT_EQ(folder.names(), Names{"sky"});

    write_star_database(path, stars);
    EXPECT_EQ(folder.read("sky").size(), 20001u * 32);
}
