// SPDX-License-Identifier: BSD-3-Clause
#include "tests/scratch_folder.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

static const char* const program = VELMORA_BUILD "/bin/velmora";
static const char* const plugin = VELMORA_BUILD "/plugin/VelmoraNK.so";
static const char* const host = VELMORA_BUILD "/lib/libDDImage.so";

namespace {

class Binaries : public testing::Test {
protected:
    ScratchFolder folder;

    std::string readelf(const std::string& options, const std::string& file) const {
        const std::string command =
            "LC_ALL=C " READELF " -W " + options + " '" + file + "' >'" + folder.file("said") + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return folder.read("said");
    }

    // What the first group of `pattern` matches, each once, in order.
    std::vector<std::string> found(const std::string& text, const std::string& pattern) const {
        std::vector<std::string> matches;
        const std::regex expression(pattern);
        for (std::sregex_iterator at(text.begin(), text.end(), expression), end; at != end; ++at)
            if (std::find(matches.begin(), matches.end(), (*at)[1].str()) == matches.end())
                matches.push_back((*at)[1].str());
        return matches;
    }

    std::vector<std::string> library_path(const std::string& file) const {
        return found(readelf("-d", file), R"(\(R(?:UN)?PATH\)[^\[]*\[([^\]]*)\])");
    }
};

} // namespace

using Paths = std::vector<std::string>;

// An empty entry, or a relative one, would load libraries from the working folder.
TEST_F(Binaries, LookForLibrariesBesideThemselvesAlone) {
    EXPECT_EQ(library_path(program), Paths{"$ORIGIN/../lib"});
    EXPECT_EQ(library_path(plugin), Paths{"$ORIGIN/../lib"});
    EXPECT_EQ(library_path(host), Paths{});
}

#ifdef VELMORA_RELEASED

// So that the same sources make the same bytes in whichever folder they are built.
TEST_F(Binaries, NameNoFolderOfTheirBuild) {
    for (const char* const file : {program, plugin, host})
        EXPECT_EQ(folder.read(file).find(VELMORA_SOURCE), std::string::npos) << file;
}

// "2.34" as {2, 34}, so that versions compare as numbers.
static std::vector<int> numbers_of(const std::string& version) {
    std::vector<int> numbers;
    std::istringstream parts(version);
    for (std::string part; std::getline(parts, part, '.');)
        numbers.push_back(std::stoi(part));
    return numbers;
}

// The oldest system that they are promised to run on has these: see docs/install.md.
TEST_F(Binaries, AskForNoLaterSystemThanPromised) {
    const std::pair<const char*, const char*> newest[] = {
        {"GLIBC", "2.34"}, {"GLIBCXX", "3.4.29"}, {"CXXABI", "1.3.13"}};
    for (const char* const file : {program, plugin, host}) {
        const std::string needs = readelf("-V", file);
        for (const auto& [library, version] : newest)
            for (const std::string& asked :
                 found(needs, "Name: " + std::string(library) + R"(_([0-9.]+))"))
                EXPECT_LE(numbers_of(asked), numbers_of(version)) << file << " " << library;
    }
    // The plug-in, which is loaded by other programs, requires less.
    for (const std::string& asked : found(readelf("-V", plugin), R"(Name: GLIBC_([0-9.]+))"))
        EXPECT_LE(numbers_of(asked), numbers_of("2.33"));
}

TEST_F(Binaries, AreHardened) {
    for (const char* const file : {program, plugin, host}) {
        EXPECT_EQ(found(readelf("-h", file), R"(Type: +(\w+))"), Paths{"DYN"}) << file;
        const std::string segments = readelf("-l", file);
        EXPECT_EQ(found(segments, R"((GNU_RELRO) )"), Paths{"GNU_RELRO"}) << file;
        EXPECT_EQ(found(segments, R"(GNU_STACK.* (RWE?) )"), Paths{"RW"}) << file;
        EXPECT_EQ(found(readelf("-d", file), R"(Flags:.*\b(NOW)\b)"), Paths{"NOW"}) << file;
        EXPECT_EQ(found(readelf("--dyn-syms", file), R"( (__stack_chk_fail)\b)"),
                  Paths{"__stack_chk_fail"})
            << file;
    }
}

#endif
