// SPDX-License-Identifier: BSD-3-Clause

// OSAPI's names of paths in a source that includes <libgen.h> before them, where a macro `basename`
// names the system's function.
// clang-format off
#include <libgen.h>
#include "osapi/osapi.h"
// clang-format on

#include <gtest/gtest.h>

#ifndef basename
#error <libgen.h> defines no macro here, so this tests nothing
#endif

TEST(Libgen, IncludedBeforeLeavesBothFunctionsTheirNames) {
    char path[] = "a/b/"; // the system's looks in front of the last slash and writes into its text
    EXPECT_STREQ(basename(path), "b");
    EXPECT_EQ(OSAPI::basename("a/b/").str, nullptr);
    EXPECT_STREQ(OSAPI::basename("a/b").str, "b");
    EXPECT_STREQ(OSAPI::dirname("a/b").str, "a");
}
