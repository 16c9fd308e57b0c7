// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/database_file.h"
#include "catalog/database_record.h"
#include "tests/catalog/failures.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace velmora {

// The bytes of a database whose records are all zeros.
static std::string database(const std::string& magic, uword stars) {
    return magic + std::string(24 + 32 * stars, '\0');
}

TEST(DatabaseFile, CountsWholeRecordsAfterTheHeader) {
    const ScratchFolder folder;
    for (const char* magic : {"VELMORA1", "VELMORA2"})
        for (const uword extra : {0, 1, 31}) {
            const std::string bytes = database(magic, 3) + std::string(extra, 'x');
            EXPECT_EQ(stars_in_database(folder.write("sky", bytes)), 3u) << extra;
        }
    EXPECT_EQ(stars_in_database(folder.write("sky", database("VELMORA2", 0))), 0u);
}

TEST(DatabaseFile, OpensAfterTheHeader) {
    const ScratchFolder folder;
    const std::string path = folder.write("sky", database("VELMORA2", 0) + "first record");
    const OSAPI::FileDescriptor file(open_star_database(path));
    unsigned char bytes[12];
    read_star_database(file.fd, path, bytes, sizeof bytes);
    EXPECT_EQ(std::string(bytes, bytes + 12), "first record");
}

// A file that is shortened after it was opened: reading reports it, a mapping would end the
// process.
TEST(DatabaseFile, ReportsThatItGotShorter) {
    const ScratchFolder folder;
    const std::string path = folder.write("sky", database("VELMORA2", 3));
    const OSAPI::FileDescriptor file(open_star_database(path));
    unsigned char bytes[3 * record_size];
    ASSERT_EQ(truncate(path.c_str(), 70), 0);
    EXPECT_EQ(catalog_error_of([&] { read_star_database(file.fd, path, bytes, sizeof bytes); }),
              path + ": got shorter while it was read");
}

// Sparse files: no byte of them is on the disk.
TEST(DatabaseFile, RefusesMoreRecordsThanReadersCount) {
    const ScratchFolder folder;
    const std::string path = folder.write("sky", database("VELMORA2", 0));
    const off_t most = off_t(0xffffffff) * 32;
    ASSERT_EQ(truncate(path.c_str(), most + 31), 0);
    EXPECT_EQ(stars_in_database(path), 0xfffffffeu);
    ASSERT_EQ(truncate(path.c_str(), most + 32), 0);
    EXPECT_EQ(catalog_error_of([&] { stars_in_database(path); }),
              path + ": has 4294967296 records, and at most 4294967295 can be read");
}

TEST(DatabaseFile, RefusesOtherFiles) {
    const ScratchFolder folder;
    const auto error = [](const std::string& path) {
        return catalog_error_of([&] { stars_in_database(path); });
    };
    for (const uword size : {0, 1, 8, 31}) {
        const std::string path = folder.write("short", database("VELMORA2", 0).substr(0, size));
        EXPECT_EQ(error(path), path + ": is too short for a star database: " +
                                   std::to_string(size) + " bytes, the header alone takes 32");
    }
    const std::string other = folder.write("other", database("VELMORA3", 1));
    EXPECT_EQ(error(other), other + ": is not a star database: it begins with neither VELMORA1 nor "
                                    "VELMORA2");
    EXPECT_EQ(error(folder.file("")), folder.file("") + ": is a directory, not a star database");
    EXPECT_EQ(error("/dev/zero"), "/dev/zero: is not a regular file");
    const std::string none = folder.file("none");
    EXPECT_EQ(error(none), none + ": No such file or directory");
}

} // namespace velmora
