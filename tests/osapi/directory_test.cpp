// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using OSAPI::Glob;
using OSAPI::ScopedChdir;

namespace {

typedef std::vector<std::string> Names;

const std::string in_chdir = in("void OSAPI::chdir(const char*)");
const std::string in_getcwd = in("String OSAPI::getcwd()");

std::string here() {
    return std::filesystem::current_path().string();
}

// The working directory is the whole process's: tests that leave it run in a child.
bool holds_in_a_child(const std::function<bool()>& action) {
    return status_of_child(action) == 0;
}

// ---- chdir, getcwd ---------------------------------------------------------------------------

TEST(Chdir, MovesTheProcess) {
    const ScratchFolder folder;
    folder.folder("below");
    EXPECT_TRUE(holds_in_a_child([&] {
        OSAPI::chdir(folder.path().c_str());
        const bool moved = here() == folder.path();
        OSAPI::chdir("below");
        OSAPI::chdir(".");
        OSAPI::chdir("./");
        return moved && here() == folder.file("below");
    }));
}

TEST(Chdir, ThrowsTheSystemsReason) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", ""), missing = folder.file("missing");
    const std::string before = here();
    EXPECT_EQ(message_without_line_of([&] { OSAPI::chdir(missing.c_str()); }),
              "chdir(" + missing + "): No such file or directory" + in_chdir);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::chdir(file.c_str()); }),
              "chdir(" + file + "): Not a directory" + in_chdir);
    EXPECT_EQ(message_without_line_of([] { OSAPI::chdir(""); }),
              "chdir(): No such file or directory" + in_chdir);
    EXPECT_EQ(here(), before);
}

// Where the folder is gone, even this one could not be entered; but no call is made.
TEST(Chdir, ToADotCannotFail) {
    const ScratchFolder folder;
    const std::string gone = folder.folder("gone");
    EXPECT_TRUE(holds_in_a_child([&] {
        OSAPI::chdir(gone.c_str());
        if (rmdir(gone.c_str()) != 0)
            return false;
        OSAPI::chdir(".");
        return true;
    }));
}

TEST(Getcwd, IsTheWorkingDirectory) {
    const ScratchFolder folder;
    const std::string far = folder.folder(std::string(200, 'f')), further = far + "/further";
    ASSERT_EQ(mkdir(further.c_str(), 0777), 0);
    EXPECT_EQ(OSAPI::getcwd().str, here());
    EXPECT_TRUE(holds_in_a_child([&] {
        OSAPI::chdir(further.c_str());
        return OSAPI::getcwd().str == further;
    }));
}

TEST(Getcwd, ThrowsWhereNothingIsAnyMore) {
    const ScratchFolder folder;
    const std::string gone = folder.folder("gone");
    EXPECT_TRUE(holds_in_a_child([&] {
        OSAPI::chdir(gone.c_str());
        return rmdir(gone.c_str()) == 0 && message_without_line_of([] { OSAPI::getcwd(); }) ==
                                               "getcwd: No such file or directory" + in_getcwd;
    }));
}

// ---- ScopedChdir -----------------------------------------------------------------------------

TEST(ScopedChdir, HoldsTheWayBackThenWhetherItIsNeeded) {
    const ScopedChdir nowhere("");
    const char* base = reinterpret_cast<const char*>(&nowhere);
    EXPECT_EQ(reinterpret_cast<const char*>(&nowhere.previous) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&nowhere.changed) - base, 8);
    EXPECT_FALSE(std::is_copy_constructible<ScopedChdir>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<ScopedChdir>::value);
}

TEST(ScopedChdir, ComesBackWhenItGoes) {
    const ScratchFolder folder;
    const std::string before = here();
    EXPECT_TRUE(holds_in_a_child([&] {
        {
            const ScopedChdir there(folder.path().c_str());
            if (here() != folder.path() || there.previous.str != before || !there.changed)
                return false;
        }
        return here() == before;
    }));
}

TEST(ScopedChdir, OfNothingStaysAndDoesNotComeBack) {
    const ScratchFolder folder;
    EXPECT_TRUE(holds_in_a_child([&] {
        {
            const ScopedChdir nowhere("");
            if (nowhere.changed || nowhere.previous.str != here())
                return false;
            OSAPI::chdir(folder.path().c_str());
        }
        return here() == folder.path();
    }));
}

TEST(ScopedChdir, OfADotComesBack) {
    const ScratchFolder folder;
    const std::string before = here();
    EXPECT_TRUE(holds_in_a_child([&] {
        {
            const ScopedChdir dot(".");
            OSAPI::chdir(folder.path().c_str());
        }
        return here() == before;
    }));
}

TEST(ScopedChdir, ThatCannotEnterStays) {
    const ScratchFolder folder;
    const std::string missing = folder.file("missing"), before = here();
    EXPECT_EQ(message_without_line_of([&] { ScopedChdir there(missing.c_str()); }),
              "chdir(" + missing + "): No such file or directory" + in_chdir);
    EXPECT_EQ(here(), before);
}

TEST(ScopedChdir, ThrowsWhenTheWayBackIsGone) {
    const ScratchFolder folder;
    const std::string gone = folder.folder("gone");
    for (const bool on_the_way : {false, true})
        EXPECT_TRUE(holds_in_a_child([&] {
            OSAPI::chdir(gone.c_str());
            std::string said;
            try {
                said = message_without_line_of([&] {
                    const ScopedChdir there(folder.path().c_str());
                    rename(gone.c_str(), (gone + "2").c_str());
                    if (on_the_way)
                        throw std::runtime_error("the first");
                });
            } catch (const std::runtime_error& error) {
                said = error.what();
            }
            rename((gone + "2").c_str(), gone.c_str());
            return said == (on_the_way
                                ? "the first"
                                : "chdir(" + gone + "): No such file or directory" + in_chdir);
        })) << on_the_way;
}

// ---- lsdir -----------------------------------------------------------------------------------

Names sorted(const Array<String>& listed) {
    Names names;
    for (uword i = 0; i < listed.len(); i++)
        names.push_back(listed[i].str);
    std::sort(names.begin(), names.end());
    return names;
}

TEST(Lsdir, ListsEverything) {
    const ScratchFolder folder;
    Array<String> listed;
    OSAPI::lsdir(folder.path().c_str(), listed);
    EXPECT_EQ(sorted(listed), Names({".", ".."}));

    folder.write("file", "");
    folder.write(".hidden", "");
    folder.write("a name with spaces and 100%", "");
    folder.folder("folder");
    ASSERT_EQ(symlink("nowhere", folder.file("link").c_str()), 0);
    listed.clear();
    OSAPI::lsdir(folder.path().c_str(), listed);
    EXPECT_EQ(sorted(listed), Names({".", "..", ".hidden", "a name with spaces and 100%", "file",
                                     "folder", "link"}));
}

TEST(Lsdir, AddsToWhatIsThereInTheSystemsOrder) {
    const ScratchFolder folder;
    for (const char* name : {"one", "two", "three", "four", "five"})
        folder.write(name, "");
    Array<String> listed;
    listed.append("first");
    OSAPI::lsdir(folder.path().c_str(), listed);
    Names rest;
    for (uword i = 1; i < listed.len(); i++)
        if (listed[i] != "." && listed[i] != "..")
            rest.push_back(listed[i].str);
    Names expected; // as the system lists them
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        expected.push_back(entry.path().filename().string());
    EXPECT_STREQ(listed[0].str, "first");
    EXPECT_EQ(rest, expected);
}

// Larger than what the system hands out at once, which is some 32 KiB.
TEST(Lsdir, ListsLargeFolders) {
    const ScratchFolder folder;
    Names expected = {".", ".."};
    for (int i = 0; i < 300; i++) {
        expected.push_back(std::string(200, 'n') + std::to_string(i));
        folder.write(expected.back(), "");
    }
    std::sort(expected.begin(), expected.end());
    Array<String> listed;
    const int before = open_descriptors();
    OSAPI::lsdir(folder.path().c_str(), listed);
    EXPECT_EQ(sorted(listed), expected);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Lsdir, ThrowsTheSystemsReason) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", ""), missing = folder.file("missing");
    const std::string place = in("void OSAPI::lsdir(const char*, Array<String>&)");
    Array<String> listed;
    EXPECT_EQ(message_without_line_of([&] { OSAPI::lsdir(missing.c_str(), listed); }),
              "opendir(\"" + missing + "\"): No such file or directory" + place);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::lsdir(file.c_str(), listed); }),
              "opendir(\"" + file + "\"): Not a directory" + place);
    EXPECT_EQ(listed.len(), 0u);
}

TEST(Lsdir, NeedsThePermission) {
    const ScratchFolder folder;
    const std::string below = folder.folder("below");
    ASSERT_EQ(chmod(below.c_str(), 0), 0);
    EXPECT_TRUE(holds_unprivileged([&] {
        Array<String> listed;
        return message_without_place_of([&] { OSAPI::lsdir(below.c_str(), listed); }) ==
               "opendir(\"" + below + "\"): Permission denied";
    }));
    ASSERT_EQ(chmod(below.c_str(), 0755), 0);
}

// ---- Glob ------------------------------------------------------------------------------------

TEST(Glob, IsAPointerToItsState) {
    EXPECT_EQ(sizeof(Glob), sizeof(void*));
    EXPECT_FALSE(std::is_copy_constructible<Glob>::value);
    EXPECT_FALSE(std::is_copy_assignable<Glob>::value);
}

TEST(Glob, GivesWhatMatchesSorted) {
    const ScratchFolder folder;
    for (const char* name : {"b.txt", "c.dat", "a.txt", ".x.txt"})
        folder.write(name, "");
    Glob glob(folder.file("*.txt").c_str());
    EXPECT_EQ(glob.next(), folder.file("a.txt"));
    EXPECT_EQ(glob.next(), folder.file("b.txt"));
    EXPECT_EQ(glob.next(), nullptr);
}

TEST(Glob, OfNothingGivesNullAgainAndAgain) {
    const ScratchFolder folder;
    Glob glob(folder.file("*").c_str()), plain(folder.file("missing").c_str());
    for (int time = 0; time < 3; time++) {
        EXPECT_EQ(glob.next(), nullptr);
        EXPECT_EQ(plain.next(), nullptr);
    }
}

TEST(Glob, KnowsTheShellsPatterns) {
    const ScratchFolder folder;
    folder.write("a1", "");
    folder.write("b2", "");
    folder.write("[c]", "");
    const struct {
        const char *pattern, *match;
    } cases[] = {{"a?", "a1"}, {"[b-z]*", "b2"}, {"\\[c]", "[c]"}, {"b2", "b2"}};
    for (const auto& c : cases) {
        Glob glob(folder.file(c.pattern).c_str());
        EXPECT_EQ(glob.next(), folder.file(c.match));
        EXPECT_EQ(glob.next(), nullptr) << c.pattern;
    }
}

// A folder that cannot be read is no failure: it matches nothing.
TEST(Glob, PassesOverWhatCannotBeRead) {
    const ScratchFolder folder;
    const std::string below = folder.folder("below");
    ASSERT_EQ(chmod(below.c_str(), 0), 0);
    EXPECT_TRUE(holds_unprivileged([&] { return Glob((below + "/*").c_str()).next() == nullptr; }));
    ASSERT_EQ(chmod(below.c_str(), 0755), 0);
}

} // namespace
