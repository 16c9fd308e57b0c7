// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/import.h"
#include "tests/catalog/failures.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>

namespace velmora {

static const std::string header = "hip,ra,dec,vmag,bv,plx,e_plx,name\n";

TEST(ImportCatalog, AddsTheStarsOfEachCatalogueInItsOrder) {
    const ScratchFolder folder;
    ImportedStars stars;
    import_catalog(folder.write("north", header + "1,10,60,5,,,,\n2,20,50,0,,,,\n"), stars);
    import_catalog(folder.write("south", header + "3,30,-60,2.5,,,,\n"), stars);
    ASSERT_EQ(stars.records.size(), 3u);
    EXPECT_EQ(stars.records[0].ra, 10);
    EXPECT_EQ(stars.records[0].flux, 0.01f); // 5 magnitudes are a factor of 100
    EXPECT_EQ(stars.records[1].ra, 20);
    EXPECT_EQ(stars.records[1].flux, 1.0f);
    EXPECT_EQ(stars.records[2].dec, -60);
    EXPECT_EQ(stars.records[2].flux, 0.1f);
}

TEST(ImportCatalog, CountsWhatIsKnownOfTheStars) {
    const ScratchFolder folder;
    ImportedStars stars;
    import_catalog(folder.write("stars", header + "1,10,60,5,0.5,100,1,\n" // both
                                             + "2,20,50,0,0.5,,,\n"        // colour alone
                                             + "3,30,40,0,,10,3,\n"        // too uncertain
                                             + "4,40,30,0,,-1,0.1,\n"      // below 0
                                             + "5,50,20,0,1.5,50,,\n"),    // both
                   stars);
    EXPECT_EQ(stars.records.size(), 5u);
    EXPECT_EQ(stars.known_distances, 2u);
    EXPECT_EQ(stars.known_colors, 3u);
}

TEST(ImportCatalog, KeepsTheStarsBeforeAnError) {
    const ScratchFolder folder;
    const std::string path = folder.write("stars", header + "1,10,60,5,,,,\n2,x,50,0,,,,\n");
    ImportedStars stars;
    EXPECT_EQ(catalog_error_of([&] { import_catalog(path, stars); }),
              path + ", line 3: ra 'x' is not a number");
    EXPECT_EQ(stars.records.size(), 1u);
}

} // namespace velmora
