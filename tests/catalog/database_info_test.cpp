// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/database_info.h"
#include "catalog/database_record.h"
#include "catalog/database_writer.h"
#include "catalog/photometry.h"
#include "tests/catalog/failures.h"
#include "tests/scratch_folder.h"
#include "tests/special_values.h"

#include <gtest/gtest.h>

using namespace velmora_test::doubles;

namespace velmora {

static const star plain = {10, 20, 1, 255, 255, 255, 0, 5};

static star with_ra(double ra) {
    star record = plain;
    record.ra = ra;
    return record;
}

static star with_dec(double dec) {
    star record = plain;
    record.dec = dec;
    return record;
}

static star with_flux(double flux) {
    star record = plain;
    record.flux = float(flux);
    return record;
}

static star with_distance(double distance) {
    star record = plain;
    record.distance = distance;
    return record;
}

// The bytes of a database with these stars, in this order and unchecked.
static std::string bytes_of(const std::string& magic, const std::vector<star>& stars) {
    std::string bytes = magic + std::string(24, '\0');
    for (const star& record : stars) {
        unsigned char encoded[record_size];
        encode_record(record, encoded);
        bytes.append(reinterpret_cast<char*>(encoded), record_size);
    }
    return bytes;
}

static DatabaseInfo info_of(const std::vector<star>& stars, const std::string& magic = "VELMORA2") {
    const ScratchFolder folder;
    return inspect_star_database(folder.write("sky", bytes_of(magic, stars)));
}

static void expect_oddity(const Oddity& oddity, u64 count, u64 first) {
    EXPECT_EQ(oddity.count, count);
    EXPECT_EQ(oddity.first, first);
}

TEST(DatabaseInfo, CountsWhatTheWriterWrote) {
    const ScratchFolder folder;
    const std::string path = folder.file("sky");
    write_star_database(path, {{10, -20, 0.5f, 1, 2, 3, 0, 0},
                               {350, 45, 2, 1, 2, 3, 0, 7.5},
                               {180, 90, 0.01f, 1, 2, 3, 0, 300}});
    const DatabaseInfo info = inspect_star_database(path);
    EXPECT_EQ(info.version, 2);
    EXPECT_EQ(info.stars, 3u);
    EXPECT_EQ(info.trailing_bytes, 0u);
    EXPECT_EQ(info.ra.lowest, 10);
    EXPECT_EQ(info.ra.highest, 350);
    EXPECT_EQ(info.dec.lowest, -20);
    EXPECT_EQ(info.dec.highest, 90);
    EXPECT_EQ(info.flux.lowest, 0.01f);
    EXPECT_EQ(info.flux.highest, 2);
    EXPECT_EQ(info.distance.lowest, 7.5);
    EXPECT_EQ(info.distance.highest, 300);
    EXPECT_EQ(info.known_distances, 2u);
    EXPECT_TRUE(info.brightest_first());
    expect_oddity(info.distance_unknown, 1, 2); // sorted: 2, 0.5, 0.01
    // 2 is magnitude -0.75, 0.5 is 0.75 and 0.01 is 5.
    EXPECT_EQ(info.magnitudes, (std::map<int, u64>{{-1, 1}, {0, 1}, {5, 1}}));
}

TEST(DatabaseInfo, OfAHeaderAloneHasNoRanges) {
    const DatabaseInfo info = info_of({});
    EXPECT_EQ(info.stars, 0u);
    EXPECT_TRUE(info.ra.empty() && info.dec.empty() && info.flux.empty() && info.distance.empty());
    EXPECT_TRUE(info.magnitudes.empty());
    EXPECT_TRUE(info.brightest_first());
}

TEST(DatabaseInfo, PutsWholeMagnitudesIntoTheirOwnBin) {
    for (int magnitude = -20; magnitude <= 30; magnitude++) {
        const DatabaseInfo info = info_of({with_flux(flux_of_magnitude(magnitude))});
        EXPECT_EQ(info.magnitudes, (std::map<int, u64>{{magnitude, 1}}));
    }
    EXPECT_EQ(info_of({with_flux(flux_of_magnitude(5.999))}).magnitudes,
              (std::map<int, u64>{{5, 1}}));
}

TEST(DatabaseInfo, NeverReadsTheDistanceOfVersion1) {
    const DatabaseInfo info = info_of(
        {with_distance(5), with_distance(not_a_number), with_distance(infinity)}, "VELMORA1");
    EXPECT_EQ(info.version, 1);
    EXPECT_EQ(info.known_distances, 0u);
    EXPECT_TRUE(info.distance.empty());
    expect_oddity(info.nan, 0, 0);
    expect_oddity(info.infinite, 0, 0);
    expect_oddity(info.distance_unknown, 0, 0);
}

TEST(DatabaseInfo, FindsStarsOutOfOrder) {
    const DatabaseInfo info = info_of(
        {with_flux(3), with_flux(2), with_flux(2), with_flux(2.5), with_flux(1), with_flux(4)});
    EXPECT_FALSE(info.brightest_first());
    expect_oddity(info.out_of_order, 2, 4);
}

TEST(DatabaseInfo, ComparesStarsAcrossOneWithoutFlux) {
    expect_oddity(info_of({with_flux(2), with_flux(not_a_number), with_flux(3)}).out_of_order, 1,
                  3);
}

TEST(DatabaseInfo, FindsNaNs) {
    const DatabaseInfo info =
        info_of({plain, with_ra(not_a_number), with_dec(not_a_number), with_flux(not_a_number),
                 with_distance(not_a_number), plain});
    expect_oddity(info.nan, 4, 2);
    expect_oddity(info.infinite, 0, 0);
    EXPECT_EQ(info.known_distances, 5u);
    EXPECT_EQ(info.ra.lowest, 10);
    EXPECT_EQ(info.ra.highest, 10);
}

TEST(DatabaseInfo, FindsInfiniteNumbers) {
    const DatabaseInfo info = info_of(
        {with_flux(infinity), with_ra(infinity), with_dec(-infinity), with_distance(infinity)});
    expect_oddity(info.infinite, 4, 1);
    expect_oddity(info.nan, 0, 0);
    expect_oddity(info.ra_outside, 1, 2);
    expect_oddity(info.dec_outside, 1, 3);
    EXPECT_EQ(info.known_distances, 3u);
    EXPECT_EQ(info.distance.highest, 5);
    EXPECT_EQ(info.flux.highest, 1);
    EXPECT_EQ(info.magnitudes, (std::map<int, u64>{{0, 3}}));
}

TEST(DatabaseInfo, FindsAnglesOutsideTheirRanges) {
    const DatabaseInfo ra = info_of({with_ra(0), with_ra(359.999), with_ra(360), with_ra(-0.1)});
    expect_oddity(ra.ra_outside, 2, 3);
    EXPECT_EQ(ra.ra.lowest, -0.1);
    EXPECT_EQ(ra.ra.highest, 360);
    const DatabaseInfo dec = info_of({with_dec(90), with_dec(-90), with_dec(90.1), with_dec(-91)});
    expect_oddity(dec.dec_outside, 2, 3);
}

TEST(DatabaseInfo, FindsStarsWithoutLight) {
    const DatabaseInfo info = info_of({with_flux(1), with_flux(0), with_flux(-2)});
    expect_oddity(info.dark, 2, 2);
    EXPECT_EQ(info.magnitudes, (std::map<int, u64>{{0, 1}}));
}

TEST(DatabaseInfo, FindsUnknownDistances) {
    const DatabaseInfo info = info_of({with_distance(1), with_distance(0), with_distance(-5)});
    expect_oddity(info.distance_unknown, 2, 2);
    EXPECT_EQ(info.known_distances, 1u);
}

TEST(DatabaseInfo, CountsTheBytesAfterTheLastRecord) {
    const ScratchFolder folder;
    const std::string whole = bytes_of("VELMORA2", {plain});
    for (uword extra = 0; extra < record_size; extra++) {
        const std::string path = folder.write("sky", whole + std::string(extra, 'x'));
        const DatabaseInfo info = inspect_star_database(path);
        EXPECT_EQ(info.stars, 1u);
        EXPECT_EQ(info.trailing_bytes, extra);
    }
}

TEST(DatabaseInfoText, DescribesAnOrdinaryDatabase) {
    // Magnitudes -0.75, 0 and 5.
    const DatabaseInfo info = info_of({{350.5, 45, 2, 0, 0, 0, 0, 7.5},
                                       {10, -20, 1, 0, 0, 0, 0, 0},
                                       {180, 90, 0.01f, 0, 0, 0, 0, 300}});
    EXPECT_EQ(describe(info), "version    2\n"
                              "stars      3\n"
                              "ra         10 to 350.5\n"
                              "dec        -20 to 90\n"
                              "flux       0.01 to 2\n"
                              "distance   7.5 to 300, known for 2\n"
                              "order      brightest first\n"
                              "magnitude        stars\n"
                              "  -1 to 0             1\n"
                              "   0 to 1             1\n"
                              "   5 to 6             1\n"
                              "odd        distance unknown: 1, first in record 2\n");
}

TEST(DatabaseInfoText, DescribesAHeaderAlone) {
    EXPECT_EQ(describe(info_of({}, "VELMORA1")), "version    1\n"
                                                 "stars      0\n"
                                                 "ra         none\n"
                                                 "dec        none\n"
                                                 "flux       none\n"
                                                 "distance   none, known for 0\n"
                                                 "order      brightest first\n");
}

TEST(DatabaseInfoText, NamesEveryOddity) {
    const ScratchFolder folder;
    const std::string path =
        folder.write("sky", bytes_of("VELMORA2", {{-1, 91, -3, 0, 0, 0, 0, 0},
                                                  {0, 0, 1, 0, 0, 0, 0, infinity},
                                                  {0, 0, 1, 0, 0, 0, 0, not_a_number}}) +
                                "xyz");
    EXPECT_EQ(describe(inspect_star_database(path)),
              "version    2\n"
              "stars      3\n"
              "ra         -1 to 0\n"
              "dec        0 to 91\n"
              "flux       -3 to 1\n"
              "distance   none, known for 0\n"
              "order      not brightest first\n"
              "magnitude        stars\n"
              "   0 to 1             2\n"
              "odd        brighter than the star before: 1, first in record 2\n"
              "odd        a number that is NaN: 1, first in record 3\n"
              "odd        a number that is infinite: 1, first in record 2\n"
              "odd        ra outside [0, 360): 1, first in record 1\n"
              "odd        dec outside [-90, 90]: 1, first in record 1\n"
              "odd        flux not above 0: 1, first in record 1\n"
              "odd        distance unknown: 1, first in record 1\n"
              "odd        bytes after the last record: 3\n");
}

} // namespace velmora
