// SPDX-License-Identifier: BSD-3-Clause

// Scripts that the command line writes, and reads again.
#include "catalog/database_writer.h"
#include "host/script/script.h"
#include "tests/tools/program.h"

#include <unistd.h>

using namespace velmora;
using namespace velmora::host;

// A field of stars around right ascension 90, declination 0, some of them near.
class ScriptNew : public Program {
protected:
    void SetUp() override {
        std::vector<star> field;
        for (int i = 0; i < 60; i++) {
            star one = {80 + 20 * (i * 0.618034 - int(i * 0.618034)),
                        -10 + i / 3.0,
                        2.0f / float(i + 1),
                        255,
                        200,
                        160,
                        0,
                        i % 3 == 0 ? 0.0 : 5.0 + i};
            field.push_back(one);
        }
        write_star_database(folder.file("sky.velmora"), field);
    }

    // Renders frames with the options, and with a script made of them, and compares the floats.
    void expect_same_frames(const std::string& options, const std::string& frames = "1") const {
        const std::string sky = "--star-file sky.velmora " + options;
        const Ran written = run("script new " + sky + " -o shot.nk");
        ASSERT_EQ(written.status, 0) << options << written.err;
        EXPECT_EQ(written.out + written.err, "") << options;
        const Ran direct = run("render " + sky + " -F " + frames + " --raw direct.%d.raw");
        const Ran saved = run("render shot.nk -F " + frames + " --raw saved.%d.raw");
        ASSERT_EQ(direct.status, 0) << options << direct.err;
        ASSERT_EQ(saved.status, 0) << options << saved.err;
        EXPECT_EQ(direct.err, saved.err) << options;
        int compared = 0;
        for (const std::string& name : folder.names()) {
            if (name.compare(0, 7, "direct.") != 0)
                continue;
            const std::vector<float> floats = floats_of(name);
            EXPECT_NE(floats, std::vector<float>(floats.size())) << options << ": black";
            EXPECT_EQ(folder.read(name), folder.read("saved" + name.substr(6)))
                << options << ": " << name;
            compared++;
        }
        EXPECT_GT(compared, 0) << options;
    }
};

// ---- what is written ---------------------------------------------------------------------------

// Nothing but what was said is in it: no folder, no name of a machine or a user, no time.
TEST_F(ScriptNew, WritesWhatTheOptionsSayAndNoMore) {
    ASSERT_EQ(run("script new --star-file sky.velmora --format 640x360 --vaperture 13.824 "
                  "--look-at 84,-1 --knob blur_segs=3 --knob 'projection=Azimuthal Equidistant' "
                  "--knob tint_color=1,0.5,0 --knob threed=false -F 5-9x2 -o shot.nk")
                  .status,
              0);
    // Right ascension 90 is straight ahead, and 84 six degrees to the right of it.
    EXPECT_EQ(folder.read("shot.nk"), "Root {\n"
                                      " inputs 0\n"
                                      " frame 5\n"
                                      " first_frame 5\n"
                                      " last_frame 9\n"
                                      " format \"640 360 0 0 640 360 1\"\n"
                                      "}\n"
                                      "Camera2 {\n"
                                      " inputs 0\n"
                                      " name Camera1\n"
                                      " vaperture 13.824\n"
                                      " rotate {-1 -6 0}\n"
                                      "}\n"
                                      "set N0 [stack 0]\n"
                                      "push $N0\n"
                                      "push 0\n"
                                      "VelmoraNK {\n"
                                      " inputs 2\n"
                                      " name VelmoraNK1\n"
                                      " format \"640 360 0 0 640 360 1\"\n"
                                      " tint_color {1 0.5 0}\n"
                                      " blur_segs 3\n"
                                      " projection \"Azimuthal Equidistant\"\n"
                                      " threed false\n"
                                      " starfile sky.velmora\n"
                                      "}\n");
}

TEST_F(ScriptNew, WritesAMovingCameraAsCurves) {
    folder.write("shot.chan", "1 0 0 0 0 0 0 30\n4.5 1 2 3 0 -10.25 0 90\n");
    ASSERT_EQ(run("script new --star-file sky.velmora --camera shot.chan --vaperture 20 -o shot.nk")
                  .status,
              0);
    const Script script = Script::parse(folder.read("shot.nk"), folder.file("shot.nk"));
    const auto text = [&](const char* name) {
        return find_knob(script.nodes.at(0).knobs, name)->value.text;
    };
    EXPECT_EQ(text("translate"),
              "{curve L x1 0 x4.5 1} {curve L x1 0 x4.5 2} {curve L x1 0 x4.5 3}");
    EXPECT_EQ(text("rotate"),
              "{curve L x1 0 x4.5 0} {curve L x1 0 x4.5 -10.25} {curve L x1 0 x4.5 0}");
    // 20 / (2 tan(15)) and 20 / (2 tan(45)) millimetres, to a double's last digits.
    const std::vector<ScriptValue> words =
        list_items(list_items(find_knob(script.nodes.at(0).knobs, "focal")->value, "")[0], "");
    ASSERT_EQ(words.size(), 6u);
    EXPECT_EQ(words[0].text + words[1].text + words[2].text + words[4].text, "curveLx1x4.5");
    EXPECT_NEAR(number_of(words[3], ""), 37.320508075688774, 1e-13);
    EXPECT_NEAR(number_of(words[5], ""), 10, 1e-14);
}

TEST_F(ScriptNew, NamesTheBundledDatabaseWhenNoneIsGiven) {
    ASSERT_EQ(run("script new --no-camera -o shot.nk").status, 0);
    const std::filesystem::path program = VELMORA_PROGRAM;
    const std::string bundled =
        (program.parent_path().parent_path() / "share/velmora/stars.velmora").string();
    const Script script = Script::parse(folder.read("shot.nk"), folder.file("shot.nk"));
    ASSERT_EQ(script.nodes.size(), 1u);
    EXPECT_EQ(find_knob(script.nodes[0].knobs, "starfile")->value.text, bundled);
}

TEST_F(ScriptNew, WritesTheSameBytesEveryTime) {
    folder.write("shot.chan", "1 0 0 0 0 0 0\n2 0.1 0 0 0 7.3 0\n");
    const std::string command = "script new --star-file sky.velmora --camera shot.chan -o ";
    ASSERT_EQ(run(command + "a.nk").status, 0);
    ASSERT_EQ(run(command + "b.nk", "TZ=Asia/Tokyo LANG=C.UTF-8 HOME=/").status, 0);
    EXPECT_NE(folder.read("a.nk"), "");
    EXPECT_EQ(folder.read("a.nk"), folder.read("b.nk"));
}

// ---- what is rendered of it --------------------------------------------------------------------

TEST_F(ScriptNew, RendersAsItsOptionsDo) {
    const std::string small = "--format 64x36 --vaperture 13.824 ";
    for (const char* options : {
             "",
             "--focal 35",
             "--haperture 30 --vaperture 16.875 --fov 70",
             "--look-at 85,3,20",
             "--rotate 1.5,-3,12 --translate 0.25,-0.5,1 --knob parallax=0",
             "--knob blur_segs=0 --knob star_size=40 --knob star_aspect=3 --knob brightness=7.5",
             "--knob bias=0.7 --knob saturation=1.3 --knob lum_max=1.5 --knob lum_threshold=0.05",
             "--knob tint_strength=0.6 --knob tint_color=0.1,0.2,0.9 --knob threed=false",
             "--knob shutter=1.5 --knob shutter_offset=-0.75 --knob blur_segs=4",
             "--knob 'transform=1 0 0 0.1  0 1 0 0.2  0.05 0 1 0.3  0 0 0 1' --knob parallax=0",
         })
        expect_same_frames(std::string(options).find("--vaperture") == std::string::npos
                               ? small + options
                               : "--format 64x36 " + std::string(options));
}

TEST_F(ScriptNew, RendersWithoutACameraAsItsOptionsDo) {
    const std::string dome = "--format 48x48 --no-camera --look-at 90,0,30 --knob star_size=60 ";
    expect_same_frames(dome);
    expect_same_frames(dome + "--knob projection=Hemispherical");
    expect_same_frames(dome + "--knob 'projection=Azimuthal Equidistant'");
    expect_same_frames("--format 48x48 --no-camera --rotate 1,2,3 --translate 1,0,0 "
                       "--knob parallax=0.5");
}

// Also between the file's frames, where the shutter samples, and outside them.
TEST_F(ScriptNew, MovesAsTheCameraFileDoes) {
    folder.write("move.chan", "1 0 0 0 0 0 0\n2 0.3 0.1 0 1 -4 2.7\n3.5 0.9 0 0.7 -3 2 10\n"
                              "7 1.1 0.3 -0.2 3.3 1 -5\n");
    folder.write("zoom.chan", "1 0 0 0 0 0 0 15\n2 0 0 0 1 -4 0 20\n4 0 0 0 -3 2 10 31.7\n");
    const std::string move =
        "--format 64x36 --vaperture 13.824 --knob parallax=0 --camera move.chan";
    expect_same_frames(move + " --knob blur_segs=0", "0-8");
    expect_same_frames(move + " --knob blur_segs=3 --knob shutter=0.8", "0-8");
    // Between the file's frames a script has the focal lengths in a straight line, the file the
    // fields of view.
    expect_same_frames("--format 64x36 --vaperture 13.824 --camera zoom.chan --knob blur_segs=0",
                       "0-2,4-8");
    // A lens on the command line holds against the file's.
    expect_same_frames("--format 64x36 --vaperture 13.824 --camera zoom.chan --focal 40", "1-4");
    expect_same_frames("--format 64x36 --vaperture 13.824 --camera zoom.chan --fov 40", "1-4");
}

TEST_F(ScriptNew, StandsStillWithACameraFileOfOneFrame) {
    folder.write("still.chan", "7 0.5 0 0 1 -2 3 20\n");
    expect_same_frames("--format 64x36 --vaperture 13.824 --camera still.chan", "1,7,9");
}

TEST_F(ScriptNew, SetsTheProjectsRange) {
    folder.write("shot.chan", "0.5 0 0 0 0 0 0\n2.75 0 0 0 0 7 0\n");
    const struct {
        const char* options;
        std::vector<std::string> frames;
    } cases[] = {
        {"", {"1"}},
        {"-F 4,2", {"2", "3", "4"}},        // all that lies between
        {"--camera shot.chan", {"1", "2"}}, // the whole frames of the file
        {"--camera shot.chan -F -1-0", {"-1", "0"}},
    };
    for (const auto& c : cases) {
        const ScratchFolder frames;
        ASSERT_EQ(run("script new --star-file sky.velmora --format 8x8 " + std::string(c.options) +
                      " -o shot.nk")
                      .status,
                  0)
            << c.options;
        ASSERT_EQ(run("render shot.nk --raw '" + frames.path() + "/%d'").status, 0) << c.options;
        EXPECT_EQ(frames.names(), c.frames) << c.options;
    }
}

TEST_F(ScriptNew, KeepsOddPaths) {
    for (const char* name : {"a b", "a\"b", "a$b", "a{b", "a}b", "a\\b", "a;b#c", "\xc3\xa9"}) {
        const std::string path = std::string(name) + ".velmora";
        std::filesystem::copy(folder.file("sky.velmora"), folder.file(path));
        // The shell's single quotes keep every other character.
        ASSERT_EQ(run("script new --star-file '" + path + "' --format 8x8 -o shot.nk").status, 0);
        const Ran ran = run("render shot.nk -o sky.png");
        EXPECT_EQ(ran.status, 0) << path << ran.err;
        const Script script = Script::parse(folder.read("shot.nk"), folder.file("shot.nk"));
        EXPECT_EQ(find_knob(script.nodes.at(1).knobs, "starfile")->value.text, path);
    }
}

// ---- what is refused ---------------------------------------------------------------------------

TEST_F(ScriptNew, SaysInOneLineWhatIsWrong) {
    folder.write("shot.chan", "1 0 0 0 0 0 0\n");
    folder.write("broken.chan", "1 0 0 0 0 0 0\n2 0 0 zero 0 0 0\n");
    folder.write("old.nk", "old");
    folder.folder("folder");
    std::filesystem::create_symlink("old.nk", folder.file("link.nk.inprogress"));
    const std::string sky = folder.read("sky.velmora");
    const std::vector<std::string> before = folder.names();

    const std::string overwritten = ": is read by the same command, and would be overwritten";
    const struct {
        std::string arguments;
        int status;
        std::string err;
    } cases[] = {
        {"script", 2, "script: name a command: new"},
        {"script old", 2, "arguments: The following argument was not expected: old"},
        {"script new", 2, "arguments: --out is required"},
        {"script new -o ''", 2, "arguments: --out: is empty"},
        {"script new other.nk -o new.nk", 2,
         "arguments: The following argument was not expected: other.nk"},
        {"script new --node A -o new.nk", 2,
         "arguments: The following arguments were not expected: A --node"},
        {"script new -o none/new.nk", 1, "none/new.nk: there is no folder none"},
        {"script new -o folder", 1, "folder: Is a directory"},
        {"script new -o link.nk", 1,
         "link.nk.inprogress: is in the way, and is not a regular file"},
        {"script new -F 1:5 -o new.nk", 2,
         "frame range '1:5': '1:5' has two readings: every Nth frame, to be written as 1-100x2, or "
         "staggered, every Nth frame first and then the gaps in finer steps"},
        {"script new --knob brightnes=3 -o new.nk", 2,
         "--knob brightnes=3: the node has no such knob (velmora info lists them)"},
        {"script new --format 8 -o new.nk", 2, "format '8': takes <width>x<height> in pixels"},
        {"script new --format 16384x16384 -o new.nk", 2,
         "format '16384x16384': an image takes 16 bytes per pixel and must stay below 4 GiB"},
        {"script new --focal 0 -o new.nk", 2, "--focal: must be above 0"},
        {"script new --camera none.chan -o new.nk", 1, "none.chan: No such file or directory"},
        {"script new --camera broken.chan -o new.nk", 1, "broken.chan:2: 'zero' is not a number"},
        {"script new --camera shot.chan --look-at 1,2 -o new.nk", 2,
         "--look-at: is what the --camera file says"},
        // What it reads, whichever way it is named.
        {"script new --camera shot.chan -o shot.chan", 2, "shot.chan" + overwritten},
        {"script new --camera shot.chan -o ./shot.chan", 2, "./shot.chan" + overwritten},
        {"script new --star-file sky.velmora -o sky.velmora", 2, "sky.velmora" + overwritten},
        {"script new --knob starfile=sky.velmora -o ./sky.velmora", 2,
         "./sky.velmora" + overwritten},
        // The host would take it for an expression.
        {"script new --star-file 'a[1].velmora' -o new.nk", 2,
         "a[1].velmora: cannot be written to a script, where [ begins an expression"},
    };
    for (const auto& c : cases) {
        const Ran ran = run(c.arguments);
        EXPECT_EQ(ran.status, c.status) << c.arguments;
        EXPECT_EQ(ran.out, "") << c.arguments;
        EXPECT_EQ(ran.err, "velmora: " + c.err + "\n") << c.arguments;
        EXPECT_EQ(folder.names(), before) << c.arguments;
    }
    EXPECT_EQ(folder.read("sky.velmora"), sky);
    EXPECT_EQ(folder.read("shot.chan"), "1 0 0 0 0 0 0\n");
}

// Root writes everywhere, so its privileges are taken away for the run.
TEST_F(ScriptNew, SaysThatAFolderMayNotBeWritten) {
    folder.folder("locked");
    std::filesystem::permissions(folder.file("locked"), std::filesystem::perms::owner_read |
                                                            std::filesystem::perms::owner_exec);
    const Ran ran = run("script new --star-file sky.velmora -o locked/shot.nk",
                        geteuid() == 0 ? "setpriv --bounding-set=-all --inh-caps=-all" : "");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: locked/shot.nk: Permission denied\n");
    std::filesystem::permissions(folder.file("locked"), std::filesystem::perms::owner_all);
}

// A shell's block is 512 or 1024 bytes; the curves take more.
TEST_F(ScriptNew, LeavesTheOldScriptWhenTheNewOneCannotBeWritten) {
    folder.write("shot.nk", "old");
    std::string chan;
    for (int frame = 1; frame <= 100; frame++)
        chan += std::to_string(frame) + " 0 0 0 0 " + std::to_string(frame / 7.0) + " 0\n";
    folder.write("shot.chan", chan);
    const Ran ran = run("script new --camera shot.chan -o shot.nk", "ulimit -f 1;");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: shot.nk: File too large\n");
    EXPECT_EQ(folder.read("shot.nk"), "old");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"shot.chan", "shot.nk", "sky.velmora"}));
}

TEST_F(ScriptNew, WritesOverAnOldScript) {
    folder.write("shot.nk", "old");
    ASSERT_EQ(run("script new --star-file sky.velmora -o shot.nk").status, 0);
    EXPECT_EQ(folder.read("shot.nk").compare(0, 6, "Root {"), 0);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"shot.nk", "sky.velmora"}));
}

TEST_F(ScriptNew, ShowsExamplesFirstInItsHelp) {
    for (const char* command : {"script --help", "script new --help"}) {
        const Ran ran = run(command);
        EXPECT_EQ(ran.status, 0);
        EXPECT_LT(ran.out.find("Examples:"), ran.out.find("Usage:")) << command;
        EXPECT_NE(ran.out.find("Usage:"), std::string::npos) << command;
    }
}
