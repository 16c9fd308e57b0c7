// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/database_record.h"
#include "catalog/database_writer.h"
#include "tests/catalog/failures.h"
#include "tests/scratch_folder.h"
#include "tests/special_values.h"

#include <gtest/gtest.h>
#include <memory>

using namespace velmora_test::doubles;

namespace velmora {

typedef std::vector<std::string> Names;

static star star_of_flux(float flux, double ra = 0) {
    return {ra, 0, flux, 255, 255, 255, 0, 0};
}

static star record_at(const std::string& bytes, uword number) {
    return decode_record(
        reinterpret_cast<const unsigned char*>(bytes.data() + number * record_size));
}

TEST(DatabaseWriter, WritesTheFileWorkedByHand) {
    const ScratchFolder folder;
    write_star_database(folder.file("sky"), {{1.5, -2, 0.25f, 1, 2, 3, 0xff, 10}});
    const char expected[] = "VELMORA2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                            "\0\0\0\0\0\0\xf8\x3f\0\0\0\0\0\0\0\xc0"
                            "\0\0\x80\x3e\x01\x02\x03\0\0\0\0\0\0\0\x24\x40";
    EXPECT_EQ(folder.read("sky"), std::string(expected, 64));
    EXPECT_EQ(folder.names(), Names{"sky"});
}

TEST(DatabaseWriter, WritesAHeaderAloneForNoStars) {
    const ScratchFolder folder;
    write_star_database(folder.file("sky"), {});
    EXPECT_EQ(folder.read("sky"), std::string("VELMORA2") + std::string(24, '\0'));
}

TEST(DatabaseWriter, PutsTheBrightestFirstAndKeepsTheOrderOfEquals) {
    const ScratchFolder folder;
    write_star_database(folder.file("sky"),
                        {star_of_flux(1, 10), star_of_flux(5, 20), star_of_flux(1, 30),
                         star_of_flux(-1, 40), star_of_flux(5, 50), star_of_flux(2, 60)});
    const std::string bytes = folder.read("sky");
    ASSERT_EQ(bytes.size(), 7 * record_size);
    const double order[] = {20, 50, 60, 10, 30, 40};
    for (uword i = 0; i < 6; i++)
        EXPECT_EQ(record_at(bytes, i + 1).ra, order[i]);
}

TEST(DatabaseWriter, ReplacesAnOlderFile) {
    const ScratchFolder folder;
    folder.write("sky", std::string(1000, 'x'));
    write_star_database(folder.file("sky"), {star_of_flux(1)});
    EXPECT_EQ(folder.read("sky").size(), 64u);
    EXPECT_EQ(folder.names(), Names{"sky"});
}

// Several blocks of any size, the last one full, short by one and over by one.
TEST(DatabaseWriter, WritesEveryStarWhateverTheirNumber) {
    const ScratchFolder folder;
    for (const uword count : {4094, 4095, 4096, 8191, 10000}) {
        std::vector<star> stars;
        for (uword i = 0; i < count; i++)
            stars.push_back(star_of_flux(float(count - i), double(i) / 100));
        write_star_database(folder.file("sky"), stars);
        const std::string bytes = folder.read("sky");
        ASSERT_EQ(bytes.size(), (count + 1) * record_size);
        for (uword i = 0; i < count; i++)
            ASSERT_EQ(record_at(bytes, i + 1).ra, double(i) / 100);
    }
}

TEST(DatabaseWriter, WritesTheSameBytesForTheSameStars) {
    const ScratchFolder folder;
    const std::vector<star> stars = {star_of_flux(1, 10), star_of_flux(5, 20), star_of_flux(1, 30)};
    write_star_database(folder.file("a"), stars);
    write_star_database(folder.file("b"), stars);
    EXPECT_EQ(folder.read("a"), folder.read("b"));
}

TEST(DatabaseWriter, WritesWhatTheReaderReads) {
    const ScratchFolder folder;
    write_star_database(folder.file("sky"), {star_of_flux(1, 10), star_of_flux(5, 20)});
    const std::unique_ptr<StarInput> input(op_stars_file_input(folder.file("sky").c_str()));
    EXPECT_EQ(input->count, 3u);
    EXPECT_TRUE(input->is_valid());
    EXPECT_EQ(input->version2, 1);
    EXPECT_EQ(input->next()->ra, 20);
    EXPECT_EQ(input->next()->ra, 10);
}

TEST(DatabaseWriter, RefusesNumbersThatAreNotFinite) {
    const ScratchFolder folder;
    const std::string path = folder.file("sky");
    const auto error = [&](const star& bad) {
        return catalog_error_of([&] { write_star_database(path, {star_of_flux(1), bad}); });
    };
    EXPECT_EQ(error({not_a_number, 0, 1, 0, 0, 0, 0, 0}), path + ": ra of star 2 is not finite");
    EXPECT_EQ(error({0, -infinity, 1, 0, 0, 0, 0, 0}), path + ": dec of star 2 is not finite");
    EXPECT_EQ(error({0, 0, float(infinity), 0, 0, 0, 0, 0}),
              path + ": flux of star 2 is not finite");
    EXPECT_EQ(error({0, 0, 1, 0, 0, 0, 0, not_a_number}),
              path + ": distance of star 2 is not finite");
    EXPECT_EQ(folder.names(), Names());
}

TEST(DatabaseWriter, RefusesMoreStarsThanAReaderCanCount) {
    const auto error = [](u64 count) {
        return catalog_error_of([&] { check_star_count("sky", count); });
    };
    EXPECT_EQ(error(0), "no error");
    EXPECT_EQ(error(4294967294), "no error");
    EXPECT_EQ(error(4294967295), "sky: 4294967295 stars are too many: a database holds 4294967294");
    EXPECT_EQ(error(u64(-1)),
              "sky: 18446744073709551615 stars are too many: a database holds 4294967294");
}

TEST(DatabaseWriter, LeavesNothingWhereItCannotWrite) {
    const ScratchFolder folder;
    const std::string path = folder.file("none/sky");
    EXPECT_EQ(message_without_place_of([&] { write_star_database(path, {star_of_flux(1)}); }),
              "opening file \"" + path + ".inprogress\": No such file or directory");
    EXPECT_EQ(folder.names(), Names());

    std::filesystem::create_directory(folder.file("sky"));
    const std::string taken = folder.file("sky");
    EXPECT_EQ(message_without_place_of([&] { write_star_database(taken, {star_of_flux(1)}); }),
              "rename(" + taken + ".inprogress," + taken + "): Is a directory");
    EXPECT_EQ(folder.names(), Names{"sky"});
}

} // namespace velmora
