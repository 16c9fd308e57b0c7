// SPDX-License-Identifier: BSD-3-Clause

// What NUKE_ROOT must be, and the messages when it is not.
#include "tests/packaging/nuke_installation.h"

#include <gtest/gtest.h>
#include <regex>

class NukeRoot : public testing::Test {
protected:
    ScratchFolder folder;
    const std::string alone = "-DVELMORA_TOOLS=OFF -DVELMORA_TESTS=OFF -DVELMORA_BENCH=OFF";

    // CMake's message about the folder as one line, with ROOT for the folder; empty when accepted.
    std::string said_of(const std::string& root, const std::string& options) const {
        const std::string command = CMAKE " -G Ninja -S " VELMORA_SOURCE
                                          "/tests/packaging/nuke_root -B '" +
                                    folder.file("build") + "' -DNUKE_ROOT='" + root + "' " +
                                    options + " >/dev/null 2>'" + folder.file("said") + "'";
        const int status = std::system(command.c_str());
        std::filesystem::remove_all(folder.file("build"));
        const std::string text = std::regex_replace(folder.read("said"), std::regex("[ \n]+"), " ");
        EXPECT_NE(status, 0) << text;
        std::smatch found;
        if (!std::regex_search(text, found, std::regex("\\(message\\): (.*?) Call Stack")))
            return text;
        std::string message = found[1];
        const std::size_t at = message.find(root);
        return at == std::string::npos ? message : message.replace(at, root.size(), "ROOT");
    }
};

TEST_F(NukeRoot, IsRefusedWhenItIsNoInstallation) {
    EXPECT_EQ(said_of(folder.file("none"), alone), "NUKE_ROOT=ROOT: there is no such folder");
    EXPECT_EQ(said_of(folder.write("file", ""), alone), "NUKE_ROOT=ROOT: there is no such folder");
    EXPECT_EQ(said_of(folder.folder("empty"), alone),
              "NUKE_ROOT=ROOT: there is no include/DDImage/ddImageVersionNumbers.h in it");
}

TEST_F(NukeRoot, IsRefusedWithoutItsLibrary) {
    const std::string root = make_nuke_installation(folder, "nuke", 15, 0);
    std::filesystem::remove(root + "/libDDImage.so");
    EXPECT_EQ(said_of(root, alone), "NUKE_ROOT=ROOT: there is no libDDImage.so in it");
}

TEST_F(NukeRoot, IsRefusedWithoutAVersion) {
    const std::string root = make_nuke_installation(folder, "nuke", 15, 0);
    folder.write("nuke/include/DDImage/ddImageVersionNumbers.h",
                 "#define kDDImageVersionMajorNum 15\n");
    EXPECT_EQ(
        said_of(root, alone),
        "NUKE_ROOT=ROOT: include/DDImage/ddImageVersionNumbers.h has no kDDImageVersionMinorNum");
}

TEST_F(NukeRoot, IsRefusedWhenItIsTooOld) {
    EXPECT_EQ(said_of(make_nuke_installation(folder, "nuke", 10, 5), alone),
              "NUKE_ROOT=ROOT: the interface of Nuke 10.5 is C++98, and the node is C++17: 11.0 is "
              "the oldest that can be built for");
}

TEST_F(NukeRoot, TakesThePluginAlone) {
    const std::string root = make_nuke_installation(folder, "nuke", 15, 0);
    for (const char* part : {"TOOLS", "TESTS", "BENCH"})
        EXPECT_EQ(said_of(root, "-DVELMORA_" + std::string(part) + "=ON"),
                  "NUKE_ROOT=ROOT: a build for Nuke makes the plug-in alone: add "
                  "-DVELMORA_TOOLS=OFF -DVELMORA_TESTS=OFF -DVELMORA_BENCH=OFF");
}
