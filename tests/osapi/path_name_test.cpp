// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/scratch_folder.h"

#include <gtest/gtest.h>

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <string>
#include <type_traits>

namespace {

std::string text(const String& s) {
    return s.str ? s.str : "";
}

struct Row {
    const char *path, *result;
};

TEST(Basename, IsTheTextAfterTheLastSlash) {
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

TEST(Dirname, IsTheTextBeforeTheLastSlash) {
    const Row rows[] = {
        {"", ""},        {"a", "."},   {"/a", "/"},    {"/", "/"},         {"a/b", "a"},
        {"a/b/", "a/b"}, {"//a", "/"}, {"a/", "a"},    {"a//b", "a/"},     {"/a/b", "/a"},
        {"//", "/"},     {".", "."},   {"../x", ".."}, {"a b/c d", "a b"}, {"abc", "."},
    };
    for (const Row& row : rows)
        EXPECT_EQ(text(OSAPI::dirname(row.path)), row.result) << row.path;
}

TEST(Extension, IsTheTextAfterTheLastDot) {
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

// A locale like Turkish, in which the small form of I is not i, made for this test.
class LocaleWithoutSmallI {
public:
    LocaleWithoutSmallI() : before(std::setlocale(LC_CTYPE, nullptr)) {
        folder.write("charmap", "<code_set_name> ANSI_X3.4-1968\n<escape_char> /\n"
                                "CHARMAP\n<U0000>..<U007F> /x00\nEND CHARMAP\n");
        folder.write("source", "escape_char /\nLC_CTYPE\n"
                               "upper <U0041>..<U005A>\nlower <U0061>..<U007A>\n"
                               "tolower (<U0041>,<U0061>)\nEND LC_CTYPE\n");
        const std::string in = folder.path() + "/";
        // Its status is that of its warnings about the categories that are missing.
        if (std::system(("localedef -c -f " + in + "charmap -i " + in + "source " + in +
                         "odd >/dev/null 2>&1")
                            .c_str()) == -1)
            return;
        setenv("LOCPATH", folder.path().c_str(), 1);
        set = std::setlocale(LC_CTYPE, "odd");
        unsetenv("LOCPATH");
    }
    ~LocaleWithoutSmallI() { std::setlocale(LC_CTYPE, before.c_str()); }

    bool set = false;

private:
    const ScratchFolder folder;
    const std::string before;
};

TEST(Extension, IgnoresCaseWithoutTheLocale) {
    const LocaleWithoutSmallI locale;
    ASSERT_TRUE(locale.set);
    ASSERT_NE(std::tolower('I'), 'i');
    const Row rows[] = {
        {"abc.txt.INPROGRESS", "txt"},
        {"abc.txt.inprogress", "txt"},
        {"abc.txt.Inprogress", "txt"},
        {"abc.txt.iNPROGRESS", "txt"},
        // Neither is a letter, but each is one bit away from one of the suffix.
        {"abc.txt.inprogres\x13", "inprogres\x13"},
        {"abc.txt\x0einprogress", "txt\x0einprogress"},
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
