// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/plugins.h"

#include "tests/host/comp.h"
#include "tests/scratch_folder.h"

#include <DDImage/CameraOp.h>

using namespace velmora;
using namespace velmora::host;
using DD::Image::Op;

static const std::string built = VELMORA_TEST_PLUGINS;

static std::string find_error(const PluginPath& path, const std::string& name) {
    try {
        path.find(name);
    } catch (const PluginError& error) {
        EXPECT_EQ(error.what(), error.where + ": " + error.why);
        return error.what();
    }
    return "no error";
}

TEST(PluginPath, LoadsTheFileThatCarriesTheName) {
    const Op::Description& sum = PluginPath({built}).find("Sum");
    EXPECT_STREQ(sum.name, "Sum");
    EXPECT_EQ(sum.plugin, std::filesystem::absolute(built + "/Sum.so").string());
    EXPECT_EQ(&sum, Op::Description::find("Sum"));
}

TEST(PluginPath, FindsWhatIsThereWithoutAnyFile) {
    const PluginPath nowhere;
    for (const char* const name : {"Axis", "Axis2", "Axis3", "Camera", "Camera2", "Camera3"}) {
        EXPECT_STREQ(nowhere.find(name).name, name);
        EXPECT_EQ(nowhere.find(name).plugin, nullptr);
    }
    PluginPath({built}).find("Sum");
    EXPECT_STREQ(nowhere.find("Sum").name, "Sum"); // loaded once, for all paths
}

TEST(PluginPath, KnowsWithWhatAPluginWasBuilt) {
    EXPECT_STREQ(PluginPath({built}).find("Sum").compiled, "Jun 10 2013 for 7.0v6");
    EXPECT_EQ(PluginPath({built}).find("Sum").license, nullptr);
}

TEST(PluginPath, SaysWhereItSearched) {
    EXPECT_EQ(find_error(PluginPath(), "Nothing"),
              "Nothing: there is no such plug-in in an empty plug-in path");
    EXPECT_EQ(find_error(PluginPath({"/one", "/two"}), "Nothing"),
              "Nothing: there is no such plug-in in /one, /two");
    EXPECT_EQ(PluginPath({"/one"}).look_for("Nothing"), nullptr);
}

TEST(PluginPath, TakesANameForOneFileAndNoWayThroughFolders) {
    const std::string parent = std::filesystem::path(built).parent_path().string();
    EXPECT_EQ(PluginPath({parent}).look_for("plugins/Misuse"), nullptr);
    EXPECT_EQ(PluginPath({built}).look_for(""), nullptr);
}

TEST(PluginPath, FollowsRedirectionsOverAllFolders) {
    const ScratchFolder folder;
    folder.write("Raise.tcl", "load Ramp\n");
    const PluginPath path({folder.path(), built});
    EXPECT_STREQ(path.find("Raise").name, "Raise");
    EXPECT_EQ(path.find("Raise").plugin, std::filesystem::absolute(built + "/Ramp.so").string());
    EXPECT_STREQ(path.find("BareRaise").name, "BareRaise"); // loaded with it
}

TEST(PluginPath, TakesTheFirstFileOfAllFolders) {
    const ScratchFolder first, second;
    const PluginPath path({first.path(), second.path(), built});
    second.write("Absent.tcl", "load Sum\n");
    const std::string of_second = "Absent: its plug-in was loaded but has no class of that name";
    EXPECT_EQ(find_error(path, "Absent"), of_second);
    first.write("Absent.tcl", "load Nothing\n");
    EXPECT_EQ(find_error(path, "Absent"),
              first.file("Absent.tcl") + ": loads 'Nothing', which is not on the plug-in path");
    second.write("Absent.so", "no plug-in"); // still in the second folder
    EXPECT_EQ(find_error(path, "Absent"),
              first.file("Absent.tcl") + ": loads 'Nothing', which is not on the plug-in path");
    first.write("Absent.so", "no plug-in"); // a plug-in comes before a redirection
    EXPECT_EQ(find_error(path, "Absent"), first.file("Absent.so") + ": cannot be loaded: " +
                                              first.file("Absent.so") + ": file too short");
    EXPECT_EQ(find_error(PluginPath({built, first.path()}), "Absent"),
              first.file("Absent.so") + ": cannot be loaded: " + first.file("Absent.so") +
                  ": file too short");
}

TEST(PluginPath, SaysWhatIsWrongWithAFileThatIsNoPlugin) {
    const ScratchFolder folder;
    folder.write("Broken.so", std::string(4096, 'x'));
    EXPECT_EQ(find_error(PluginPath({folder.path()}), "Broken"),
              folder.file("Broken.so") + ": cannot be loaded: " + folder.file("Broken.so") +
                  ": invalid ELF header");
    EXPECT_EQ(plugin_being_loaded(), nullptr);
}

TEST(PluginPath, SaysWhichRedirectionIsNone) {
    const ScratchFolder folder;
    const PluginPath path({folder.path()});
    for (const char* const text : {"", "load", "source Ramp\n", "# load Ramp\n"}) {
        folder.write("Odd.tcl", text);
        EXPECT_EQ(find_error(path, "Odd"),
                  folder.file("Odd.tcl") + ": holds something else than 'load NAME'")
            << text;
    }
    folder.folder("Unreadable.tcl");
    EXPECT_EQ(find_error(path, "Unreadable"), folder.file("Unreadable.tcl") + ": cannot be read");
    folder.write("Hostile.tcl", "load \x1b]0;\a\xc2\x9b\xff\n");
    EXPECT_EQ(find_error(path, "Hostile"),
              folder.file("Hostile.tcl") +
                  ": loads '\\x1b]0;\\x07\\xc2\\x9b\\xff', which is not on the plug-in path");
    folder.write("Round.tcl", "load Other\n");
    folder.write("Other.tcl", "load Round\n");
    EXPECT_EQ(find_error(path, "Round"), folder.file("Round.tcl") + ": leads round in a circle");
}

TEST(PluginPath, MissesTheClassThatAFileShouldHave) {
    for (int time = 0; time < 2; time++)
        EXPECT_EQ(find_error(PluginPath({built}), "Classless"),
                  "Classless: its plug-in was loaded but has no class of that name");
    EXPECT_STREQ(PluginPath().find("Hidden").name, "Hidden");
}

// The system's loader cannot be left by an exception.
TEST(PluginPathDeathTest, EndsTheProcessWhenAPluginThrowsAsItIsLoaded) {
    EXPECT_DEATH(PluginPath({built}).find("ThrowsAtLoad"), "no licence for the moon");
}

// ---- classes -----------------------------------------------------------------------------------

namespace {

struct Plain : Op {
    explicit Plain(Node* node) : Op(node) {}
    const char* Class() const override { return "Plain"; }
    const char* node_help() const override { return ""; }
};

} // namespace

static Op* make_plain(Node* node) {
    return new Plain(node);
}

static Op* make_none(Node*) {
    return nullptr;
}

TEST(Description, IsKnownWhileItIsThere) {
    EXPECT_EQ(Op::Description::find("Plain"), nullptr);
    {
        const Op::Description first("Plain", make_plain);
        EXPECT_EQ(Op::Description::find("Plain"), &first);
        EXPECT_EQ(first.plugin, nullptr);
        const Op::Description second("Plain", "Menu/Plain", make_none);
        EXPECT_EQ(Op::Description::find("Plain"), &first); // the first counts
        const std::unique_ptr<Op> op(first.constructor(nullptr));
        EXPECT_STREQ(op->Class(), "Plain");
        EXPECT_STREQ(op->node_name(), "Plain"); // without a node, the class
    }
    EXPECT_EQ(Op::Description::find("Plain"), nullptr);
}
