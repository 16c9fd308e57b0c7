// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/readers/formats.h"
#include "tests/catalog/failures.h"
#include "tests/catalog/gzip.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>

namespace velmora {

static const std::string table = "hip,ra,dec,vmag,bv,plx,e_plx,name\n"
                                 "32349,101.28716,-16.71612,-1.44,0.009,379.21,1.58,Sirius\n";

TEST(OpenCatalog, FindsTheReaderByTheFirstBytes) {
    const ScratchFolder folder;
    for (const std::string& bytes : {table, gzip(table)}) {
        const auto reader = open_catalog(folder.write("stars.fits", bytes));
        CatalogStar row;
        ASSERT_TRUE(reader->next(row));
        EXPECT_EQ(row.hip, 32349);
        EXPECT_EQ(row.name, "Sirius");
        EXPECT_FALSE(reader->next(row));
    }
}

TEST(OpenCatalog, RefusesAnEmptyFile) {
    const ScratchFolder folder;
    const std::string path = folder.write("stars.csv", "");
    EXPECT_EQ(catalog_error_of([&] { open_catalog(path); }), path + ": the file is empty");
}

TEST(OpenCatalog, NamesWhatItReadsWhenTheFormatIsUnknown) {
    const ScratchFolder folder;
    const std::string path = folder.write("stars.csv", "id,hip,hd,hr\n1,2,3,4\n");
    EXPECT_EQ(catalog_error_of([&] { open_catalog(path); }),
              path + ": the kind of file is unknown; supported are star tables, which begin "
                     "with the line \"hip,ra,dec,vmag,bv,plx,e_plx,name\"");
}

} // namespace velmora
