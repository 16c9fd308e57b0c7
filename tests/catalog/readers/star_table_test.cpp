// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/readers/star_table.h"
#include "tests/catalog/failures.h"
#include "tests/catalog/gzip.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <memory>

namespace velmora {

static const std::string header = "hip,ra,dec,vmag,bv,plx,e_plx,name\n";

static const std::string bright_stars =
    header + "32349,101.28716,-16.71612,-1.44,0.009,379.21,1.58,Sirius\n"
             "69673,213.91529,19.18242,-0.05,1.239,88.83,0.54,\"Arcturus, \"\"bear guard\"\"\"\n"
             "1,0.00091,1.08901,9.1,,,,\n";

static std::vector<CatalogStar> rows_of(const std::string& path) {
    StarTable table(std::make_unique<SourceFile>(path));
    std::vector<CatalogStar> rows;
    CatalogStar row;
    while (table.next(row))
        rows.push_back(row);
    return rows;
}

static void expect_bright_stars(const std::vector<CatalogStar>& rows) {
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].hip, 32349);
    EXPECT_EQ(rows[0].ra, 101.28716);
    EXPECT_EQ(rows[0].dec, -16.71612);
    EXPECT_EQ(rows[0].vmag, -1.44);
    EXPECT_EQ(rows[0].bv, 0.009);
    EXPECT_EQ(rows[0].plx, 379.21);
    EXPECT_EQ(rows[0].e_plx, 1.58);
    EXPECT_EQ(rows[0].name, "Sirius");
    EXPECT_EQ(rows[1].name, "Arcturus, \"bear guard\"");
    EXPECT_FALSE(rows[2].bv || rows[2].plx || rows[2].e_plx);
    EXPECT_EQ(rows[2].name, "");
}

// What a table of one line says, with the path and the line's number cut off.
static std::string error_in_line(const std::string& line) {
    const ScratchFolder folder;
    const std::string path = folder.write("t.csv", header + line + "\n");
    const std::string error = catalog_error_of([&] { rows_of(path); });
    const std::string where = path + ", line 2: ";
    return error.substr(0, where.size()) == where ? error.substr(where.size()) : error;
}

TEST(StarTable, ReadsPlainAndPackedTables) {
    const ScratchFolder folder;
    expect_bright_stars(rows_of(folder.write("plain", bright_stars)));
    expect_bright_stars(rows_of(folder.write("packed", gzip(bright_stars))));
}

TEST(StarTable, ReadsLinesThatEndInCarriageReturnAndLineFeed) {
    const ScratchFolder folder;
    std::string text;
    for (const char ch : bright_stars)
        text += ch == '\n' ? std::string("\r\n") : std::string(1, ch);
    expect_bright_stars(rows_of(folder.write("t.csv", text)));
}

TEST(StarTable, HasNoStarAfterItsHeaderAlone) {
    const ScratchFolder folder;
    EXPECT_TRUE(rows_of(folder.write("t.csv", header)).empty());
}

TEST(StarTable, RecognisesItsOwnKindByTheHeader) {
    EXPECT_TRUE(StarTable::recognises(bright_stars));
    EXPECT_TRUE(StarTable::recognises("hip,ra,dec,mag\n"));
    EXPECT_FALSE(StarTable::recognises("id,hip,hd,hr\n"));
    EXPECT_FALSE(StarTable::recognises("hip"));
    EXPECT_FALSE(StarTable::recognises(""));
}

TEST(StarTable, RefusesAnEmptyFile) {
    const ScratchFolder folder;
    const std::string path = folder.write("t.csv", "");
    EXPECT_EQ(catalog_error_of([&] { rows_of(path); }), path + ": the file is empty");
}

TEST(StarTable, RefusesOtherHeaders) {
    const ScratchFolder folder;
    const std::string expected = "' instead of 'hip,ra,dec,vmag,bv,plx,e_plx,name'";
    for (const std::string wrong : {"hip,ra,dec,vmag,bv,plx,name", "HIP,ra,dec,vmag,bv,plx,e_plx,n",
                                    "hip,ra,dec,vmag,bv,plx,e_plx,name,", "", " "}) {
        const std::string path = folder.write("t.csv", wrong + "\n1,2,3,4,5,6,7,8\n");
        EXPECT_EQ(catalog_error_of([&] { rows_of(path); }),
                  path + ", line 1: the header is '" + wrong + expected);
    }
}

// A message is one short line of plain characters, whatever the file holds.
TEST(StarTable, ShowsStrangeTextEscapedAndCut) {
    EXPECT_EQ(error_in_line("1,\x1b[31m\xff\r2,3,4,,,,"),
              "ra '\\x1b[31m\\xff\\x0d2' is not a number");
    EXPECT_EQ(error_in_line("1," + std::string(41, '7') + "x,3,4,,,,"),
              "ra '" + std::string(40, '7') + "...' is not a number");
}

struct WrongLine {
    const char* line;
    const char* error;
};

TEST(StarTable, NamesWhatIsWrongInALine) {
    const WrongLine table[] = {
        {"1,2,3,4,5,6,7", "the number of columns is 7 instead of 8"},
        {"1,2,3,4,5,6,7,8,9", "the number of columns is 9 instead of 8"},
        {"", "the number of columns is 1 instead of 8"},
        {",2,3,4,,,,", "hip '' is not a whole number above 0"},
        {"0,2,3,4,,,,", "hip '0' is not a whole number above 0"},
        {"-7,2,3,4,,,,", "hip '-7' is not a whole number above 0"},
        {"1.5,2,3,4,,,,", "hip '1.5' is not a whole number above 0"},
        {"9999999999,2,3,4,,,,", "hip '9999999999' is not a whole number above 0"},
        {"1,,3,4,,,,", "ra is missing"},
        {"1,x,3,4,,,,", "ra 'x' is not a number"},
        {"1,2 ,3,4,,,,", "ra '2 ' is not a number"},
        {"1,0x2,3,4,,,,", "ra '0x2' is not a number"},
        {"1,1e999,3,4,,,,", "ra '1e999' is not a number"},
        {"1,nan,3,4,,,,", "ra 'nan' is not finite"},
        {"1,inf,3,4,,,,", "ra 'inf' is not finite"},
        {"1,360,3,4,,,,", "ra '360' lies outside [0, 360)"},
        {"1,-0.001,3,4,,,,", "ra '-0.001' lies outside [0, 360)"},
        {"1,2,,4,,,,", "dec is missing"},
        {"1,2,90.001,4,,,,", "dec '90.001' lies outside [-90, 90]"},
        {"1,2,-91,4,,,,", "dec '-91' lies outside [-90, 90]"},
        {"1,2,3,,,,,", "vmag is missing"},
        {"1,2,3,90.5,,,,", "vmag '90.5' lies outside [-90, 90]"},
        {"1,2,3,-91,,,,", "vmag '-91' lies outside [-90, 90]"},
        {"1,2,3,4,blue,,,", "bv 'blue' is not a number"},
        {"1,2,3,4,nan,,,", "bv 'nan' is not finite"},
        {"1,2,3,4,,null,,", "plx 'null' is not a number"},
        {"1,2,3,4,,5,-inf,", "e_plx '-inf' is not finite"},
        {"1,2,3,4,,5,-0.1,", "e_plx '-0.1' is negative"},
        {"1,2,3,4,,,,\"Vega", "a quoted field does not end"},
        {"1,2,3,4,,,,\"Vega\"\"", "a quoted field does not end"},
        {"1,2,3,4,,,,\"Vega\" star", "text follows a quoted field"},
    };
    for (const WrongLine& row : table)
        EXPECT_EQ(error_in_line(row.line), row.error);
}

TEST(StarTable, TakesTheEndsOfItsRanges) {
    for (const char* line : {"1,0,-90,90,,,,", "1,359.9999,90,-90,,0,0,", "1,+2,3,4,,,,x\"y",
                             "1,2,3,4,,-5,1,", "\"1\",\"2\",3,4,,,,\"\""})
        EXPECT_EQ(error_in_line(line), "no error") << line;
}

TEST(StarTable, CountsLinesFromTheHeader) {
    const ScratchFolder folder;
    const std::string path = folder.write("t.csv", bright_stars + "2,x,3,4,,,,\n");
    EXPECT_EQ(catalog_error_of([&] { rows_of(path); }), path + ", line 5: ra 'x' is not a number");
}

TEST(StarTable, RefusesNulBytesAndLongLines) {
    EXPECT_EQ(error_in_line(std::string("1,2,3,4,,,,\0", 12)), "holds a NUL byte");
    EXPECT_EQ(error_in_line("1,2,3,4,,,," + std::string(5000, 'x')), "longer than 4096 bytes");
}

// No cut of the bytes does anything but give stars or a CatalogError.
TEST(StarTable, SurvivesBeingCutAnywhere) {
    const ScratchFolder folder;
    const std::string packed = gzip(bright_stars);
    for (uword length = 0; length < bright_stars.size(); length++)
        catalog_error_of([&] { rows_of(folder.write("t", bright_stars.substr(0, length))); });
    for (uword length = 0; length < packed.size(); length++)
        EXPECT_NE(catalog_error_of([&] { rows_of(folder.write("t", packed.substr(0, length))); }),
                  "no error");
}

TEST(StarTable, SurvivesAnyByteBeingWrong) {
    const ScratchFolder folder;
    const std::string packed = gzip(bright_stars);
    for (const std::string& good : {bright_stars, packed})
        for (uword i = 0; i < good.size(); i++) {
            std::string bad = good;
            bad[i] ^= char(0x80 >> (i % 8));
            catalog_error_of([&] { rows_of(folder.write("t", bad)); });
        }
}

} // namespace velmora
