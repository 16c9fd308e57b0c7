// SPDX-License-Identifier: BSD-3-Clause

// Saved comp scripts through the whole program.
#include "catalog/database_writer.h"
#include "tests/tools/program.h"

#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>
#include <OpenEXR/ImfIntAttribute.h>
#include <OpenEXR/ImfRationalAttribute.h>
#include <OpenEXR/ImfStringAttribute.h>

using namespace velmora;

typedef std::pair<int, int> Place; // column and row; (-1, -1) on a black picture

static const int width = 64, height = 36;
static const Place middle = {32, 18};

// One white star, ten units ahead of a camera without rotation. The scripts' cameras have
// 24.576 by 13.824 mm of film, 64 by 36 pixels, at 50 mm: seven degrees beside the middle are
// 50 * tan(7) / 24.576 * 64 = 15.99 pixels.
class ScriptRender : public Program {
protected:
    void SetUp() override {
        const star ahead = {90, 0, 2, 255, 255, 255, 0, 10};
        write_star_database(folder.file("sky.velmora"), {ahead});
    }

    static std::string root(const std::string& more = "") {
        return "Root {\n inputs 0\n format \"64 36 0 0 64 36 1 small\"\n" + more + "}\n";
    }

    static std::string camera(const std::string& knobs, const std::string& class_name = "Camera2") {
        return class_name + " {\n vaperture 13.824\n" + knobs + "}\n";
    }

    // The node, whose camera is on top of the stack.
    static std::string stars(const std::string& knobs = " name Stars\n") {
        return "push 0\nVelmoraNK {\n inputs 2\n blur_segs 0\n starfile sky.velmora\n" + knobs +
               "}\n";
    }

    Ran render(const std::string& script, const std::string& arguments) const {
        folder.write("shot.nk", script);
        return run("render shot.nk " + arguments);
    }

    Place brightest_of(const std::string& raw) const {
        const std::vector<float> floats = floats_of(raw);
        EXPECT_EQ(floats.size(), std::size_t(4 * width * height)) << raw;
        int best = -1;
        for (int i = 0; i < int(floats.size() / 4); i++)
            if (floats[std::size_t(4 * i + 1)] > (best < 0 ? 0 : floats[std::size_t(4 * best + 1)]))
                best = i;
        return best < 0 ? Place(-1, -1) : Place(best % width, best / width);
    }

    // Where the star is in the first frame of a render that says `notes`.
    Place place_in(const std::string& script, const std::string& more = "",
                   const std::string& notes = "") const {
        const Ran ran = render(script, "-F 1 --raw place.raw " + more);
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_EQ(ran.err, notes);
        return brightest_of("place.raw");
    }
};

// ---- the project -------------------------------------------------------------------------------

TEST_F(ScriptRender, RendersTheProjectsRangeInItsFormat) {
    const Ran ran =
        render(root(" first_frame 3\n last_frame 5\n") + camera(" inputs 0\n") + stars(),
               "--raw sky.##.raw");
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"shot.nk", "sky.03.raw", "sky.04.raw",
                                                        "sky.05.raw", "sky.velmora"}));
    EXPECT_EQ(brightest_of("sky.04.raw"), middle);
}

TEST_F(ScriptRender, RendersTheFramesThatAreNamedInstead) {
    const std::string script =
        root(" first_frame 3\n last_frame 5\n") + camera(" inputs 0\n") + stars();
    EXPECT_EQ(render(script, "-F 9,-7 -o %d.png").status, 0);
    EXPECT_EQ(folder.names(),
              (std::vector<std::string>{"-7.png", "9.png", "shot.nk", "sky.velmora"}));
}

// Width and height of a PNG are its bytes 16 to 23, the highest byte first.
static Place size_of_png(const std::string& bytes) {
    const auto number = [&](std::size_t at) {
        int value = 0;
        for (std::size_t i = 0; i < 4; i++)
            value = 256 * value + static_cast<unsigned char>(bytes.at(at + i));
        return value;
    };
    return {number(16), number(20)};
}

TEST_F(ScriptRender, TakesTheHostsOwnProjectWhereTheScriptTellsNone) {
    const std::string bare = "VelmoraNK {\n inputs 0\n}\n";
    EXPECT_EQ(render(bare, "-o sky.png").err,
              "velmora: output 'sky.png': has no frame number (#### or %04d), and 100 frames would "
              "overwrite each other\n");
    ASSERT_EQ(render(bare, "-F 1 -o sky.png").status, 0);
    EXPECT_EQ(size_of_png(folder.read("sky.png")), Place(2048, 1556));
}

TEST_F(ScriptRender, PrefersTheNodesOwnFormat) {
    const std::string script =
        root() + camera(" inputs 0\n") + stars(" format \"30 20 0 0 30 20 1\"\n");
    ASSERT_EQ(render(script, "-F 1 -o sky.png").status, 0);
    EXPECT_EQ(size_of_png(folder.read("sky.png")), Place(30, 20));
}

TEST_F(ScriptRender, TellsTheProjectsFrameRate) {
    const std::string script = root(" fps 30\n") + camera(" inputs 0\n") + stars();
    ASSERT_EQ(render(script, "-F 1 -o script.exr").status, 0);
    ASSERT_EQ(render(script, "-F 1 --fps 25 -o option.exr").status, 0);
    for (const auto& [name, rate] : {std::pair("script.exr", 30), std::pair("option.exr", 25)}) {
        const Imf::InputFile file(folder.file(name).c_str());
        EXPECT_EQ(file.header().typedAttribute<Imf::RationalAttribute>("framesPerSecond").value().n,
                  rate);
    }
}

TEST_F(ScriptRender, ReadsLinesAsWindowsEndsThem) {
    const std::string script =
        root(" first_frame 2\n last_frame 2\n") + camera(" inputs 0\n rotate {0 -7 0}\n") + stars();
    std::string windows;
    for (const char ch : script)
        windows += ch == '\n' ? "\r\n" : std::string(1, ch);
    EXPECT_EQ(place_in(windows), Place(16, 18));
}

// ---- cameras and axes --------------------------------------------------------------------------

TEST_F(ScriptRender, TurnsTheCameraAsItsKnobsSay) {
    EXPECT_EQ(place_in(root() + camera(" inputs 0\n") + stars()), middle);
    // To the right about y: the star is to the left.
    EXPECT_EQ(place_in(root() + camera(" inputs 0\n rotate {0 -7 0}\n") + stars()), Place(16, 18));
    // Half the focal length, half the way.
    EXPECT_EQ(place_in(root() + camera(" inputs 0\n rotate {0 -7 0}\n focal 25\n") + stars()),
              Place(24, 18));
}

TEST_F(ScriptRender, TakesCamerasAndAxesOfEveryVersion) {
    for (const char* version : {"", "2", "3"}) {
        const std::string axis =
            "Axis" + std::string(version) + " {\n inputs 0\n rotate {0 -7 0}\n}\n";
        const std::string with_parent = camera("", "Camera" + std::string(version));
        EXPECT_EQ(place_in(root() + axis + with_parent + stars()), Place(16, 18)) << version;
    }
}

// The world of `parallax` 0 is the database's own: the star is at (0, 0, -10).
TEST_F(ScriptRender, MovesTheCameraWithItsParents) {
    const std::string near = stars(" parallax 0\n");
    // One to the right of the star's line: 50 mm * 1 / 10 left of the middle, 13.02 pixels.
    EXPECT_EQ(place_in(root() + camera(" inputs 0\n translate {1 0 0}\n") + near), Place(19, 18));
    // The axis turns the camera's place from x to y and rolls the camera, which rolls back: the
    // star is 13.02 pixels below.
    const std::string turn = " rotate {0 0 90}\n}\n";
    const std::string child = camera(" translate {1 0 0}\n rotate {0 0 -90}\n");
    EXPECT_EQ(place_in(root() + "Axis2 {\n inputs 0\n" + turn + child + near), Place(32, 31));
    // An axis above that takes all 15 back: 50 mm * 1 / 25, 5.21 pixels.
    EXPECT_EQ(place_in(root() + "Axis2 {\n inputs 0\n translate {0 0 15}\n}\nAxis2 {\n" + turn +
                       child + near),
              Place(32, 23));
    // Scale takes the camera farther: 50 mm * 2 * 0.5 / 10.
    EXPECT_EQ(place_in(root() + "Axis2 {\n inputs 0\n uniform_scale 2\n}\n" +
                       camera(" translate {0.5 0 0}\n") + near),
              Place(19, 18));
}

TEST_F(ScriptRender, TurnsAboutThePivot) {
    const std::string near = stars(" parallax 0\n");
    // Turned about z by 180 around (0.5, 0, 0): the origin goes to (1, 0, 0), the picture turns.
    EXPECT_EQ(place_in(root() + camera(" inputs 0\n rotate {0 0 180}\n pivot {0.5 0 0}\n") + near),
              Place(45, 18));
    // Moved before it is turned, (0, 1, 0) goes to (-1, 0, 0), whose star is on the right; the
    // camera's right is the world's up, and its up the world's left.
    EXPECT_EQ(
        place_in(root() +
                 camera(" inputs 0\n xform_order TRS\n translate {0 1 0}\n rotate {0 0 90}\n") +
                 near),
        Place(32, 31));
}

// One number is all three angles. With c and s the cosine and sine of 7 degrees, the star is in
// the camera's frame along
//     ZXY:  (s c - c s s, -s s - c c s, -c c) = (0.10622, -0.13491, -0.98515)
//     XYZ:  (s, -c s, -c c)                   = (0.12187, -0.12096, -0.98515)
// and 25 mm times 64 / 24.576 pixels are 65.10 pixels: (7.02, -8.92) and (8.05, -7.99) of them.
TEST_F(ScriptRender, TurnsInTheOrderThatIsNamed) {
    const std::string turned = " inputs 0\n focal 25\n rotate 7\n";
    EXPECT_EQ(place_in(root() + camera(turned) + stars()), Place(39, 27));
    EXPECT_EQ(place_in(root() + camera(turned + " rot_order ZXY\n") + stars()), Place(39, 27));
    EXPECT_EQ(place_in(root() + camera(turned + " rot_order XYZ\n") + stars()), Place(40, 26));
}

TEST_F(ScriptRender, FollowsAnimationCurves) {
    const std::string script = root() + camera(" inputs 0\n rotate {0 {curve L x1 0 x5 -14} 0}\n") +
                               stars(" brightness {{curve K x1 5 x3 10}}\n");
    ASSERT_EQ(render(script, "-F 1-3 --raw %d.raw").status, 0);
    EXPECT_EQ(brightest_of("1.raw"), middle);
    EXPECT_EQ(brightest_of("3.raw"), Place(16, 18)); // half way
    // 3.5 degrees are 50 * tan(3.5) / 24.576 * 64 = 7.96 pixels.
    EXPECT_EQ(brightest_of("2.raw"), Place(24, 18));

    // The brightness is a factor on every float, and 10 is twice 5.
    ASSERT_EQ(render(script, "-F 3 --raw bright.raw").status, 0);
    ASSERT_EQ(render(script, "-F 3 --knob brightness=5 --raw dim.raw").status, 0);
    const std::vector<float> bright = floats_of("bright.raw"), dim = floats_of("dim.raw");
    ASSERT_EQ(bright.size(), dim.size());
    for (std::size_t i = 0; i < bright.size(); i++)
        EXPECT_EQ(bright[i], 2 * dim[i]);
}

TEST_F(ScriptRender, SamplesAParentWithinTheShutter) {
    // In half a frame the axis turns by 3.5 degrees: the streak runs from the middle 8 pixels left.
    const std::string script = root() +
                               "Axis2 {\n inputs 0\n rotate {0 {curve L x1 0 x2 -7} 0}\n}\n" +
                               camera("") + stars(" blur_segs 1\n");
    ASSERT_EQ(render(script, "-F 1 --raw sky.raw").status, 0);
    const std::vector<float> floats = floats_of("sky.raw");
    const auto red = [&](int x) { return floats[std::size_t(4 * (18 * width + x) + 1)]; };
    EXPECT_GT(red(31), 0);
    EXPECT_GT(red(25), 0.9f * red(28));
    EXPECT_LT(red(20), 1e-3f * red(28));
    EXPECT_LT(red(36), 1e-3f * red(28));
}

// Without a camera 64 by 36 pixels see ±16/9 by ±1 at focal 3.2: seven degrees are
// 3.2 * tan(7) * 18 = 7.07 pixels.
TEST_F(ScriptRender, SeesThroughTheNodesOwnTransformWithoutACamera) {
    const std::string node = "VelmoraNK {\n inputs 0\n blur_segs 0\n starfile sky.velmora\n";
    EXPECT_EQ(place_in(root() + node + " rotate {0 -7 0}\n}\n"), Place(25, 18));
    // The same turn as a matrix, row by row.
    EXPECT_EQ(place_in(root() + node +
                       " useMatrix true\n matrix {{0.992546 0 -0.121869 0} {0 1 0 0} "
                       "{0.121869 0 0.992546 0} {0 0 0 1}}\n}\n"),
              Place(25, 18));
}

// ---- wires -------------------------------------------------------------------------------------

static const std::string turned_left = " inputs 0\n rotate {0 7 0}\n";   // the star is to the right
static const std::string turned_right = " inputs 0\n rotate {0 -7 0}\n"; // and left

TEST_F(ScriptRender, TakesWhatIsPushed) {
    const std::string cameras =
        root() + camera(turned_left) + "set A [stack 0]\n" + camera(turned_right);
    const std::string left_out =
        "velmora: note: shot.nk: skipped nodes of other classes: Camera2\n";
    EXPECT_EQ(place_in(cameras + stars(), "", left_out), Place(16, 18));
    EXPECT_EQ(place_in(cameras + "push $A\n" + stars(), "", left_out), Place(48, 18));
    EXPECT_EQ(place_in(cameras + "set B [stack 1]\npush $A\npush $B\n" + stars(), "", left_out),
              Place(48, 18));
    EXPECT_EQ(place_in(cameras + "push 0\n" + stars(), "", left_out), middle);
}

TEST_F(ScriptRender, LooksThroughDots) {
    EXPECT_EQ(place_in(root() + camera(turned_left) + "Dot {\n}\nDot {\n name D\n}\n" + stars()),
              Place(48, 18));
}

TEST_F(ScriptRender, RendersClonesWithTheOriginalsKnobs) {
    const std::string script = root() + camera(turned_left) + "push 0\n" +
                               "clone Ca11ab1e VelmoraNK {\n inputs 2\n blur_segs 0\n"
                               " starfile sky.velmora\n name First\n}\n"
                               "set C1 [stack 0]\n" +
                               camera(turned_right) +
                               "push 0\nclone $C1 {\n inputs 2\n name Second\n xpos 40\n}\n";
    const Ran ran = render(script, "-F 1 --raw {node}.raw");
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(brightest_of("First.raw"), Place(48, 18));
    EXPECT_EQ(brightest_of("Second.raw"), Place(16, 18));
}

TEST_F(ScriptRender, TakesClonesOfCameras) {
    const std::string axis = "Axis2 {\n inputs 0\n rotate {0 -7 0}\n}\n";
    const std::string script = root() +
                               "clone C0 Camera2 {\n inputs 0\n vaperture 13.824\n"
                               " rotate {0 7 0}\n name One\n}\nset C [stack 0]\n" +
                               axis + "clone $C {\n name Two\n}\n" + stars();
    // The clone has a parent that turns it back.
    EXPECT_EQ(
        place_in(script, "", "velmora: note: shot.nk: skipped nodes of other classes: Camera2\n"),
        middle);
}

static std::string in_group(const std::string& name, const std::string& nodes,
                            const std::string& knobs = " inputs 0\n") {
    return "Group {\n name " + name + "\n" + knobs + "}\n" + nodes + "end_group\n";
}

TEST_F(ScriptRender, RendersNodesInGroups) {
    const std::string script =
        root() + camera(turned_left) +
        in_group("G1", "Input {\n inputs 0\n name Input1\n}\n" + stars() + "Output {\n}\n", "") +
        in_group("G2", camera(turned_right) + stars());
    const Ran ran = render(script, "-F 1 --raw {node}.raw");
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(brightest_of("G1.Stars.raw"), Place(48, 18));
    EXPECT_EQ(brightest_of("G2.Stars.raw"), Place(16, 18));
}

TEST_F(ScriptRender, TakesTheCameraThatAGroupGivesOut) {
    EXPECT_EQ(place_in(root() + in_group("G", camera(turned_left) + "Output {\n}\n") + stars()),
              Place(48, 18));
}

// ---- which nodes -------------------------------------------------------------------------------

TEST_F(ScriptRender, RendersTheNodeThatIsNamed) {
    const std::string two = root() + camera(turned_left) + stars(" name A\n") +
                            camera(turned_right) + stars(" name B\n") +
                            in_group("G", camera(" inputs 0\n") + stars(" name C\n"));
    EXPECT_EQ(place_in(two, "--node A"), Place(48, 18));
    EXPECT_EQ(place_in(two, "--node B"), Place(16, 18));
    EXPECT_EQ(place_in(two, "--node G.C"), middle);
    EXPECT_EQ(place_in(two, "--node C"), middle);
}

TEST_F(ScriptRender, PutsTheNodesNameWhereItBelongs) {
    const std::string two = root() + camera(turned_left) + stars(" name A\n") +
                            camera(turned_right) + stars(" name B\n");
    folder.folder("A");
    folder.folder("B");
    ASSERT_EQ(render(two, "-F 1-2 -o {node}/sky.{node}.##.png").status, 0);
    for (const char* name :
         {"A/sky.A.01.png", "A/sky.A.02.png", "B/sky.B.01.png", "B/sky.B.02.png"})
        EXPECT_EQ(size_of_png(folder.read(name)), Place(64, 36)) << name;
    // A single node needs no place for its name, and may have one.
    ASSERT_EQ(render(two, "-F 1 --node B -o {node}.png").status, 0);
    EXPECT_NE(folder.read("B.png"), "");
}

TEST_F(ScriptRender, NotesWhatIsOffAndWhatIsNotItsOwn) {
    const std::string script =
        root() + camera(" inputs 0\n") + "set C [stack 0]\nWrite {\n file a.exr\n}\n" +
        "Read {\n inputs 0\n}\nWrite {\n}\npush $C\n" + stars(" name Off\n disable true\n") +
        "push $C\n" + stars(" name On\n disable false\n") + "push $C\n" +
        stars(" name Out\n disable 1\n");
    const Ran ran = render(script, "-F 1 --raw {node}.raw");
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "velmora: note: shot.nk: skipped nodes of other classes: Read, Write\n"
                       "velmora: note: shot.nk: not rendered, being disabled: Off, Out\n");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"On.raw", "shot.nk", "sky.velmora"}));
    EXPECT_EQ(brightest_of("On.raw"), middle);
}

// ---- the command line over the script ----------------------------------------------------------

TEST_F(ScriptRender, LetsTheCommandLineOverrideEveryNode) {
    const star right = {83, 0, 2, 255, 255, 255, 0, 10};
    write_star_database(folder.file("other.velmora"), {right});
    const std::string two = root() + camera(" inputs 0\n") + "set C [stack 0]\n" +
                            stars(" name A\n format \"30 20\"\n") + "push $C\n" +
                            stars(" name B\n starfile none.velmora\n");
    const Ran ran = render(two, "-F 1 --format 64x36 --star-file other.velmora "
                                "--knob saturation=1 --raw {node}.raw -o {node}.exr");
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "");
    for (const std::string node : {"A", "B"}) {
        EXPECT_EQ(brightest_of(node + ".raw"), Place(48, 18)) << node;
        const Imf::InputFile file(folder.file(node + ".exr").c_str());
        const auto text = [&](const char* name) {
            return file.header().typedAttribute<Imf::StringAttribute>(name).value();
        };
        EXPECT_EQ(text("velmora/format"), "64x36");
        EXPECT_EQ(text("velmora/starfile"), "other.velmora");
        EXPECT_EQ(file.header().typedAttribute<Imf::IntAttribute>("velmora/blur_segs").value(), 0);
    }
}

// The script alone says which database, as in the host: the bundled one does not step in.
TEST_F(ScriptRender, IsBlackWhereTheScriptNamesNoDatabase) {
    EXPECT_EQ(place_in(root() + camera(" inputs 0\n") + stars(" starfile \"\"\n")), Place(-1, -1));
}

TEST_F(ScriptRender, GivesTheSameFramesWithSeveralJobs) {
    const std::string two =
        root(" first_frame 1\n last_frame 4\n") +
        camera(" inputs 0\n rotate {{curve x1 0 x4 7} {curve x1 0 x4 -9} 0}\n") +
        "set C [stack 0]\n" + stars(" name A\n blur_segs 3\n") + "push $C\n" +
        stars(" name B\n blur_segs 2\n saturation 1\n");
    ASSERT_EQ(render(two, "--raw one.{node}.%d.raw").status, 0);
    ASSERT_EQ(render(two, "--raw two.{node}.%d.raw --jobs 3").status, 0);
    for (const std::string node : {"A", "B"}) {
        for (int frame = 1; frame <= 4; frame++) {
            const std::string name = "." + node + "." + std::to_string(frame) + ".raw";
            EXPECT_NE(folder.read("one" + name), "");
            EXPECT_EQ(folder.read("one" + name), folder.read("two" + name)) << name;
        }
    }
    EXPECT_NE(folder.read("one.A.1.raw"), folder.read("one.A.4.raw"));
    EXPECT_NE(folder.read("one.A.1.raw"), folder.read("one.B.1.raw"));
}

TEST_F(ScriptRender, GoesOnAfterAFrameThatFails) {
    const std::string script = root(" first_frame 1\n last_frame 3\n") +
                               camera(" inputs 0\n translate {{curve K x1 0 x2 1e99 x3 0} 0 0}\n") +
                               stars();
    for (const char* jobs : {"", " --jobs 2"}) {
        const Ran ran = render(script, "-o %d.png" + std::string(jobs));
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.err, "velmora: camera at frame 2: is placed too far away to be computed\n"
                           "velmora: render: 1 of 3 frames failed\n");
        EXPECT_EQ(folder.names(),
                  (std::vector<std::string>{"1.png", "3.png", "shot.nk", "sky.velmora"}));
    }
}

// ---- what is refused ---------------------------------------------------------------------------

TEST_F(ScriptRender, RefusesWhatItCannotHonourAndSaysWhere) {
    const std::string cam = camera(" inputs 0\n name Cam\n");
    const struct {
        std::string script;
        std::string err;
    } cases[] = {
        // Expressions, in the braces of one component and in those of a whole knob.
        {"Camera2 {\n inputs 0\n rotate {0 {frame*2} 0}\n}\n" + stars(),
         "shot.nk:3:12: the expression 'frame*2' is not supported"},
        {"Camera2 {\n inputs 0\n focal {{\"parent.Axis1.focal\"}}\n}\n" + stars(),
         "shot.nk:3:9: the expression '\"parent.Axis1.focal\"' is not supported"},
        {cam + stars(" brightness {{5*frame}}\n"),
         "shot.nk:11:14: the expression '5*frame' is not supported"},
        {cam + stars(" starfile \"\\[getenv SKY].velmora\"\n"),
         "shot.nk:11:11: knob 'starfile': the expression in '[getenv SKY].velmora' is not "
         "supported"},
        {cam + stars(" projection {{frame}}\n"),
         "shot.nk:11:13: knob 'projection': '{{frame}}' is an animation or an expression, which a "
         "menu cannot have here"},
        {cam + stars(" disable {{frame>5}}\n name Stars\n"),
         "shot.nk:11:10: knob 'disable': the expression '{{frame>5}}' is not supported"},
        // What is between the node and its camera.
        {cam + "TransformGeo {\n name Geo\n}\n" + stars(),
         "shot.nk:6:1: there is no plug-in for Geo, of class 'TransformGeo', whose output is "
         "needed"},
        {"JoinAxes {\n inputs 0\n name Join\n}\n" + camera(" name Cam\n") + stars(),
         "shot.nk:1:1: there is no plug-in for Join, of class 'JoinAxes', whose output is needed"},
        {"Axis2 {\n inputs 0\n name Axis\n}\n" + stars(),
         "shot.nk:6:1: Stars does not take Axis as input 1"},
        {"Camera2 {\n inputs 0\n name Cam\n disable true\n}\n" + stars(),
         "shot.nk:1:1: Cam is disabled, which is not supported"},
        {"Axis2 {\n inputs 0\n name Axis\n disable true\n}\n" + camera("") + stars(),
         "shot.nk:1:1: Axis is disabled, which is not supported"},
        {"Camera2 {\n inputs 0\n name Cam\n read_from_file true\n file a.fbx\n}\n" + stars(),
         "shot.nk:4:17: Cam reads its values from a file, which is not supported"},
        {"Camera2 {\n inputs 0\n name Cam\n skew {0 1 0}\n}\n" + stars(),
         "shot.nk:4:7: knob 'skew': a skew is not supported"},
        // Knobs.
        {"Camera2 {\n inputs 0\n name Cam\n zoom 3\n}\n" + stars(),
         "shot.nk:4:2: Cam, of class 'Camera2', has no knob 'zoom' here"},
        {cam + stars(" brightnes 3\n name Stars\n"),
         "shot.nk:11:2: Stars, of class 'VelmoraNK', has no knob 'brightnes' here"},
        {cam + stars(" projection Fisheye\n"),
         "shot.nk:11:13: knob 'projection' has no item 'Fisheye'"},
        {"Camera2 {\n inputs 0\n rotate {1 2}\n}\n" + stars(),
         "shot.nk:3:9: knob 'rotate' takes 3 numbers, not 2"},
        {cam + stars(" brightness much\n"),
         "shot.nk:11:13: the expression 'much' is not supported"},
        // The project.
        {"Root {\n format 64\n}\n" + cam + stars(),
         "shot.nk:2:9: '64' is not a format: width height [x y r t] [aspect] [name]"},
        {"Root {\n first_frame 1.5\n}\n" + cam + stars(),
         "shot.nk:2:14: knob 'first_frame' takes a whole number"},
        // The text itself.
        {cam + "VelmoraNK {\n inputs 0\n", "shot.nk:6:11: the brace is never closed"},
        {"push $N1\n" + stars(), "shot.nk:1:6: the variable 'N1' is not set"},
        {"Group {\n name G\n}\n" + stars(), "shot.nk:1:1: the group is never ended"},
        {"", "shot.nk: has no node of class VelmoraNK to render"},
        {cam + stars(" disable true\n"), "shot.nk: has no node of class VelmoraNK to render"},
        {cam + stars(" starfile none.velmora\n"), "none.velmora: No such file or directory"},
    };
    for (const auto& c : cases) {
        const Ran ran = render(c.script, "-F 1 -o a.png");
        EXPECT_EQ(ran.status, 1) << c.script;
        EXPECT_EQ(ran.out, "") << c.script;
        EXPECT_EQ(ran.err, "velmora: " + c.err + "\n") << c.script;
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"shot.nk", "sky.velmora"})) << c.script;
    }
}

TEST_F(ScriptRender, SaysInOneLineWhichArgumentIsWrong) {
    folder.write("shot.chan", "1 0 0 0 0 0 0\n");
    folder.write("none.nk", "Camera2 {\n inputs 0\n}\n");
    folder.write("one.nk", root() + camera(" inputs 0\n") + stars());
    folder.write("two.nk", root() + camera(" inputs 0\n") + "set C [stack 0]\n" +
                               stars(" name A\n") + "push $C\n" + stars(" name B\n") +
                               in_group("G", camera(" inputs 0\n") + stars(" name C\n")) +
                               in_group("H", camera(" inputs 0\n") + stars(" name C\n")));
    folder.write("off.nk", root() + stars(" name On\n") + stars(" name Off\n disable true\n"));
    folder.write("large.nk", "Root {\n format \"16384 16384\"\n}\n" + stars());
    folder.write("blurred.nk",
                 root() + camera(" inputs 0\n") + stars(" name Stars\n blur_segs 10001\n"));
    const std::vector<std::string> before = folder.names();

    const std::string camera_refused =
        "arguments: the camera is what the script says: options such as --camera, --focal or "
        "--look-at are for renders without";
    const std::string no_place = "has no {node}, and several nodes would overwrite each other: "
                                 "--node renders one of them";
    const struct {
        std::string arguments;
        int status;
        std::string err;
    } cases[] = {
        {"one.nk -F 1 --camera shot.chan -o a.png", 2, camera_refused},
        {"one.nk -F 1 --focal 50 -o a.png", 2, camera_refused},
        {"one.nk -F 1 --haperture 20 -o a.png", 2, camera_refused},
        {"one.nk -F 1 --vaperture 20 -o a.png", 2, camera_refused},
        {"one.nk -F 1 --fov 50 -o a.png", 2, camera_refused},
        {"one.nk -F 1 --no-camera -o a.png", 2, camera_refused},
        {"one.nk -F 1 --translate 1,2,3 -o a.png", 2, camera_refused},
        {"one.nk -F 1 --rotate 1,2,3 -o a.png", 2, camera_refused},
        {"one.nk -F 1 --look-at 1,2 -o a.png", 2, camera_refused},
        {"gone.nk -F 1 -o a.png", 1, "gone.nk: No such file or directory"},
        {". -F 1 -o a.png", 1, ".: Is a directory"},
        {"'' -o a.png", 2, "arguments: script: is empty"},
        {"one.nk none.nk -o a.png", 2,
         "arguments: The following argument was not expected: none.nk"},
        {"none.nk -F 1 -o a.png", 1, "none.nk: has no node of class VelmoraNK to render"},
        {"--node A -o a.png", 2, "--node: is for scripts"},
        {"two.nk --node D -F 1 -o a.png", 2,
         "--node D: two.nk has no such node of class VelmoraNK"},
        {"off.nk --node Off -F 1 -o a.png", 2, "--node Off: is disabled in off.nk"},
        {"two.nk --node C -F 1 -o a.png", 2, // there are two
         "--node C: two.nk has no such node of class VelmoraNK"},
        {"two.nk -F 1 -o a.png", 2, "output 'a.png': " + no_place},
        {"two.nk -F 1 -o {node}.png --raw a.raw", 2, "output 'a.raw': " + no_place},
        {"two.nk -F 1 -o {Node}.png", 2, "output '{Node}.png': " + no_place},
        {"one.nk -F 1-2 -o a.png", 2,
         "output 'a.png': has no frame number (#### or %04d), and 2 frames would overwrite each "
         "other"},
        {"one.nk -F 1 --raw one.nk", 2,
         "one.nk: is read by the same command, and would be overwritten"},
        {"one.nk -F 1 --raw ./sky.velmora", 2,
         "./sky.velmora: is read by the same command, and would be overwritten"},
        {"one.nk -F 1 --knob brightnes=3 -o a.png", 2,
         "--knob brightnes=3: the node has no such knob (velmora info lists them)"},
        {"one.nk -F 1 --knob bias=1 --knob bias=2 -o a.png", 2,
         "--knob bias=2: the knob is given twice"},
        {"one.nk -F 1 --format 8x8 --knob format=8x8 -o a.png", 2,
         "--format: says the same as --knob format"},
        {"one.nk -F 1 --star-file a --knob starfile=b -o a.png", 2,
         "--star-file: says the same as --knob starfile"},
        {"large.nk -F 1 -o a.png", 1,
         "Stars: format '16384x16384': an image takes 16 bytes per pixel and must stay below "
         "4 GiB"},
        {"blurred.nk -F 1 -o a.png", 1, "Stars: blur_segs: takes a whole number up to 10000"},
    };
    for (const auto& c : cases) {
        const Ran ran = run("render " + c.arguments);
        EXPECT_EQ(ran.status, c.status) << c.arguments;
        EXPECT_EQ(ran.out, "") << c.arguments;
        EXPECT_EQ(ran.err, "velmora: " + c.err + "\n") << c.arguments;
        EXPECT_EQ(folder.names(), before) << c.arguments;
    }
}

// Whoever wrote the script does not choose where files go: {node} is no path and no frame number.
TEST_F(ScriptRender, RefusesNamesThatWouldLeadAFileAstray) {
    for (const std::string name : {"/tmp/a", "a/b", "a#", "%d", "a%"}) {
        const Ran ran = render(root() + "VelmoraNK {\n inputs 0\n name " + name + "\n}\n",
                               "-F 1 -o {node}.png");
        EXPECT_EQ(ran.status, 2) << name;
        EXPECT_EQ(ran.err, "velmora: output '{node}.png': the name of the node '" + name +
                               "' cannot be part of a file's\n");
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"shot.nk", "sky.velmora"})) << name;
    }
}

// All names are looked at before the first frame is rendered.
TEST_F(ScriptRender, WritesNothingWhenOneOfTheNodesFails) {
    const std::string two = root() + camera(" inputs 0\n") + "set C [stack 0]\n" +
                            stars(" name A\n") + "push $C\n" +
                            stars(" name B\n starfile none.velmora\n");
    const Ran ran = render(two, "-F 1-3 -o {node}.%d.png");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: none.velmora: No such file or directory\n");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"shot.nk", "sky.velmora"}));
}
