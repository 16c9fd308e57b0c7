#include "osapi/osapi.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

std::string text(const String& s) {
    return s.str ? s.str : "";
}

struct Row {
    const char *path, *result;
};

TEST(Basename, IsWhatStandsBehindTheLastSlash) {
    const Row rows[] = {
        {"", ""},           {"abc", "abc"},
        {"a/", ""},         {"/", ""},
        {"/a", "a"},        {"a/b", "b"},
        {"a//b", "b"},      {"/a/b/c", "c"},
        {"a/b/", ""},       {"..", ".."},
        {"./.", "."},       {"//", ""},
        {"a b/c d", "c d"}, {"dir.d/file.x", "file.x"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(text(OSAPI::basename(row.path)), row.result) << row.path;
}

TEST(Dirname, IsWhatStandsBeforeTheLastSlash) {
    const Row rows[] = {
        {"", ""},        {"a", "."},   {"/a", "/"},    {"/", "/"},         {"a/b", "a"},
        {"a/b/", "a/b"}, {"//a", "/"}, {"a/", "a"},    {"a//b", "a/"},     {"/a/b", "/a"},
        {"//", "/"},     {".", "."},   {"../x", ".."}, {"a b/c d", "a b"}, {"abc", "."},
    };
    for (const Row& row : rows)
        EXPECT_EQ(text(OSAPI::dirname(row.path)), row.result) << row.path;
}

TEST(Extension, IsWhatStandsBehindTheLastDot) {
    const Row rows[] = {
        {"x.tar.gz", "gz"}, {"dir.d/file", "d/file"},
        {"name", ""},       {"", ""},
        {"name.", ""},      {".hidden", "hidden"},
        {".", ""},          {"a.b/", "b/"},
        {"a.B", "B"},       {"x..y", "y"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(text(OSAPI::extension(row.path)), row.result) << row.path;
}

TEST(Extension, LooksThroughTheSuffixOfTemporaryFiles) {
    const Row rows[] = {
        {"abc.txt.INPROGRESS", "txt"},
        {"sky.velmora.InProgress", "velmora"},
        {"abcd.inprogress", ""},
        {"dir.d/file.inprogress", "d/file"},
        {"abc..inprogress", ""},
        {"a.inprogress.inprogress", "inprogress"}, // looked through once
        {"abc.txt.inprogres", "inprogres"},
        {"abc.txt.inprogress.", ""},
        {"abc.txt.inprogress/x", "inprogress/x"},
        {"abc.txt.xinprogress", "xinprogress"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(text(OSAPI::extension(row.path)), row.result) << row.path;
}

// Up to 14 characters the suffix itself is the extension.
TEST(Extension, LooksThroughItInLongPathsOnly) {
    const Row rows[] = {
        {".inprogress", "inprogress"},    {"a.inprogress", "inprogress"},
        {"a.b.inprogress", "inprogress"}, {"abc.inprogress", "inprogress"},
        {"ab.c.inprogress", "c"},         {"abcd.inprogress", ""},
        {".a.INPROGRESS", "INPROGRESS"},  {"....inprogress", "inprogress"},
        {".....inprogress", ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(text(OSAPI::extension(row.path)), row.result) << row.path;
}

TEST(PathNames, AreStrings) {
    EXPECT_TRUE((std::is_same<decltype(OSAPI::basename("")), String>::value));
    EXPECT_TRUE((std::is_same<decltype(OSAPI::dirname("")), String>::value));
    EXPECT_TRUE((std::is_same<decltype(OSAPI::extension("")), String>::value));
}

} // namespace
