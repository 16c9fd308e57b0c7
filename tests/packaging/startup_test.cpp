// SPDX-License-Identifier: BSD-3-Clause

// The scripts that the host runs at start-up, in a mock host that reports what they did.
#include "tests/scratch_folder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/wait.h>

// An installed folder with plug-ins for 7.0, 12.2 and 13.1.
class Startup : public testing::Test {
protected:
    ScratchFolder home;

    void SetUp() override {
        for (const char* name : {"init.py", "menu.py"})
            std::filesystem::copy(VELMORA_SOURCE "/packaging/" + std::string(name),
                                  home.file(name));
        home.folder("plugin");
        home.write("plugin/VelmoraNK.so", ""); // the stand-in host's
        for (const char* version : {"7.0", "12.2", "13.1"})
            home.write(home.folder("plugin/nuke" + std::string(version)) + "/VelmoraNK.so", "");
        home.folder("share");
        home.write(home.folder("share/velmora") + "/stars.velmora", "");
        home.folder("icons");
    }

    // Runs `scripts` of the folder, separated by blanks, in the host that `host` describes. In the
    // output the folder is replaced by HOME.
    std::string start(const std::string& host, const std::string& scripts) const {
        const ScratchFolder streams;
        const std::string command =
            "cd '" + home.path() + "' && PYTHONPATH='" VELMORA_SOURCE "/tests/packaging/nuke' " +
            host + " " PYTHON " -B -W error " VELMORA_SOURCE "/tests/packaging/nuke/start.py " +
            scripts + " </dev/null >" + streams.file("said") + " 2>&1";
        const int status = std::system(command.c_str());
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
        std::string said = streams.read("said");
        for (std::size_t at; (at = said.find(home.path())) != std::string::npos;)
            said.replace(at, home.path().size(), "HOME");
        return said;
    }
};

TEST_F(Startup, AddsThePluginOfTheRunningVersion) {
    EXPECT_EQ(start("NUKE_VERSION=12.2", "init.py"), "plug-in path: HOME/plugin/nuke12.2\n");
    EXPECT_EQ(start("NUKE_VERSION=13.1", "init.py"), "plug-in path: HOME/plugin/nuke13.1\n");
}

TEST_F(Startup, NamesTheVersionsThatAreThereWhenTheRunningOneIsNot) {
    EXPECT_EQ(start("NUKE_VERSION=12.1", "init.py"),
              "velmora: HOME/plugin: no plug-in for Nuke 12.1, only for 7.0, 12.2, 13.1\n");
    // A folder without a plug-in does not count, nor does one with another name.
    std::filesystem::remove(home.file("plugin/nuke12.2/VelmoraNK.so"));
    std::filesystem::rename(home.file("plugin/nuke7.0"), home.file("plugin/nuke7"));
    EXPECT_EQ(start("NUKE_VERSION=12.2", "init.py"),
              "velmora: HOME/plugin: no plug-in for Nuke 12.2, only for 13.1\n");
}

TEST_F(Startup, NeverTakesTheStandInsPlugin) {
    for (const char* version : {"7.0", "12.2", "13.1"})
        std::filesystem::remove_all(home.file("plugin/nuke" + std::string(version)));
    const std::string none = "velmora: HOME/plugin: no plug-in for Nuke 12.2, nor for any other\n";
    EXPECT_EQ(start("NUKE_VERSION=12.2", "init.py"), none);
    EXPECT_EQ(start("NUKE_VERSION=12.2 NUKE_GUI=1", "init.py menu.py"), none);
    std::filesystem::remove_all(home.file("plugin"));
    EXPECT_EQ(start("NUKE_VERSION=12.2", "init.py"), none);
}

TEST_F(Startup, PutsTheNodeIntoTheMenuWithItsIconAndStars) {
    EXPECT_EQ(start("NUKE_VERSION=13.1 NUKE_GUI=1", "init.py menu.py"),
              "plug-in path: HOME/icons\n"
              "plug-in path: HOME/plugin/nuke13.1\n"
              "menu: Draw/VelmoraNK with VelmoraNK.png\n"
              "created: VelmoraNK\n"
              "starfile: HOME/share/velmora/stars.velmora\n");
}

TEST_F(Startup, LeavesTheStarsThatASiteHasSet) {
    EXPECT_EQ(
        start("NUKE_VERSION=13.1 NUKE_GUI=1 NUKE_STARFILE=/site/sky.velmora", "init.py menu.py"),
        "plug-in path: HOME/icons\n"
        "plug-in path: HOME/plugin/nuke13.1\n"
        "menu: Draw/VelmoraNK with VelmoraNK.png\n"
        "created: VelmoraNK\n"
        "starfile: /site/sky.velmora\n");
}

TEST_F(Startup, LeavesTheStarsEmptyWithoutTheBundledOnes) {
    std::filesystem::remove_all(home.file("share"));
    EXPECT_EQ(start("NUKE_VERSION=13.1 NUKE_GUI=1", "init.py menu.py"),
              "plug-in path: HOME/icons\n"
              "plug-in path: HOME/plugin/nuke13.1\n"
              "menu: Draw/VelmoraNK with VelmoraNK.png\n"
              "created: VelmoraNK\n"
              "starfile: \n");
}

TEST_F(Startup, HasNoMenuWithoutAGui) {
    EXPECT_EQ(start("NUKE_VERSION=13.1", "init.py menu.py"),
              "plug-in path: HOME/plugin/nuke13.1\n");
}

TEST_F(Startup, HasNoMenuWithoutThePlugin) {
    EXPECT_EQ(start("NUKE_VERSION=12.1 NUKE_GUI=1", "init.py menu.py"),
              "velmora: HOME/plugin: no plug-in for Nuke 12.1, only for 7.0, 12.2, 13.1\n");
}

TEST_F(Startup, DoesNothingTheSecondTime) {
    const std::string once = start("NUKE_VERSION=13.1 NUKE_GUI=1", "init.py menu.py");
    EXPECT_EQ(start("NUKE_VERSION=13.1 NUKE_GUI=1", "init.py menu.py init.py menu.py"), once);
}

TEST_F(Startup, KnowsItsFolderByAWholePathToo) {
    EXPECT_EQ(start("NUKE_VERSION=13.1", "'" + home.file("init.py") + "'"),
              "plug-in path: HOME/plugin/nuke13.1\n");
}
