// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/script_loader.h"

#include "tests/host/comp.h"

#include <DDImage/CameraOp.h>

using namespace velmora;
using namespace velmora::host;

typedef std::vector<std::string> Names;

class ScriptLoaderTest : public CompTest {
protected:
    LoadedScript load(const std::string& text, const char* class_name) {
        const Script script = Script::parse(text, "shot.nk");
        return load_script(script, class_name, graph);
    }

    std::string load_error(const std::string& text, const char* class_name = "Raise") {
        Graph own(test_plugins());
        const Script script = Script::parse(text, "shot.nk");
        try {
            load_script(script, class_name, own);
        } catch (const ScriptError& error) {
            return error.what();
        }
        return "no error";
    }
};

static Names names_of(const std::vector<Node*>& nodes) {
    Names names;
    for (const Node* const node : nodes)
        names.push_back(node->name());
    return names;
}

static std::string name_of(const Node* node) {
    return node ? node->name() : "nothing";
}

static const std::string ramp = "Ramp {\n inputs 0\n name R\n level 2\n}\n";

TEST_F(ScriptLoaderTest, LoadsTheNodesOfAClassAndWhatFeedsThem) {
    const LoadedScript loaded = load(ramp + "Raise {\n name A\n}\nRaise {\n name B\n mix 0.5\n}\n"
                                            "Ramp {\n inputs 0\n name alone\n}\n",
                                     "Raise");
    EXPECT_EQ(names_of(loaded.nodes), (Names{"A", "B"}));
    EXPECT_EQ(name_of(loaded.nodes[1]->input(0)), "A");
    EXPECT_EQ(name_of(loaded.nodes[0]->input(0)), "R");
    EXPECT_EQ(name_of(loaded.nodes[0]->input(1)), "nothing");
    EXPECT_EQ(graph.nodes().size(), 3u);
    EXPECT_EQ(graph.find("alone"), nullptr);
    EXPECT_EQ(loaded.skipped_classes, Names{"Ramp"});
    EXPECT_EQ(loaded.disabled, Names());

    OpTree tree(*loaded.nodes[1]);
    EXPECT_EQ(row_of(tree, 1, 0, 1, 3, DD::Image::Chan_Red), (std::vector<float>{151, 152}));
    EXPECT_EQ(row_of(tree, 1, 0, 1, 2, DD::Image::Chan_Alpha), std::vector<float>{152});
}

TEST_F(ScriptLoaderTest, TakesOnTheProjectsFormatAndRange) {
    load("Root {\n inputs 0\n first_frame 11\n last_frame 20\n fps 25\n"
         " format \"640 480 0 0 640 480 1 small\"\n}\n" +
             ramp,
         "Ramp");
    EXPECT_EQ(graph.format(), DD::Image::Format(640, 480));
    EXPECT_EQ(graph.first_frame, 11);
    EXPECT_EQ(graph.last_frame, 20);
    EXPECT_EQ(graph.fps, 25);
    DD::Image::Op& op = OpTree(*graph.find("R")).at(1);
    (void)op;
    EXPECT_EQ(graph.find("R")->script_format(), DD::Image::Format(640, 480));
}

TEST_F(ScriptLoaderTest, KeepsTheHostsRangeWhereAScriptHasNone) {
    load("Root {\n inputs 0\n name /shots/a.nk\n}\n", "Ramp");
    EXPECT_EQ(graph.format(), DD::Image::Format(2048, 1556));
    EXPECT_EQ(graph.first_frame, 1);
    EXPECT_EQ(graph.last_frame, 100);
    EXPECT_EQ(graph.fps, 24);
}

TEST_F(ScriptLoaderTest, RefusesProjectsThatAreNone) {
    const struct {
        const char *root, *error;
    } cases[] = {
        {" first_frame 1.5\n", "shot.nk:2:14: knob 'first_frame' takes a whole number"},
        {" last_frame 2e9\n", "shot.nk:2:13: knob 'last_frame' takes a whole number"},
        {" last_frame end\n", "shot.nk:2:13: 'end' is not a number"},
        {" fps 0\n", "shot.nk:2:6: knob 'fps' takes a number from 0.001 to 100000"},
        {" format \"0 480\"\n",
         "shot.nk:2:9: '0 480' is not a format: width height [x y r t] [aspect] [name]"},
        {" format nowhere\n", "shot.nk:2:9: there is no format named 'nowhere'"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(load_error(std::string("Root {\n") + c.root + "}\n"), c.error);
}

TEST_F(ScriptLoaderTest, ReadsCamerasWithParentsAndCurves) {
    const LoadedScript loaded =
        load("Axis2 {\n inputs 0\n name rig\n translate {10 0 0}\n}\n"
             "Camera2 {\n name cam\n focal {{curve K x1 35 x10 50}}\n rot_order XYZ\n"
             " translate {{curve K x1 1 x10 2} 0 0}\n haperture 36\n xpos 10\n ypos -20\n"
             " selected true\n label \"[value focal]\"\n}\n",
             "Camera2");
    ASSERT_EQ(loaded.nodes.size(), 1u);
    OpTree tree(*loaded.nodes[0]);
    const auto camera_at = [&](double frame) -> const DD::Image::CameraOp& {
        DD::Image::Op& op = tree.at(frame);
        validate(op);
        return dynamic_cast<const DD::Image::CameraOp&>(op);
    };
    EXPECT_EQ(camera_at(1).focal_length(), 35);
    EXPECT_EQ(camera_at(1).film_width(), 36);
    EXPECT_EQ(camera_at(1).matrix().a03, 11);
    EXPECT_EQ(camera_at(10).focal_length(), 50);
    EXPECT_EQ(camera_at(10).matrix().a03, 12);
    EXPECT_STREQ(loaded.nodes[0]->knob("rot_order")->get_text(), "XYZ");
}

TEST_F(ScriptLoaderTest, LooksThroughGroupsAndDots) {
    const LoadedScript loaded = load(
        ramp + "Dot {\n name Dot1\n}\nGroup {\n name G\n}\n Input {\n  inputs 0\n  name I\n }\n"
               " Raise {\n  name A\n }\n Output {\n  name O\n }\nend_group\n"
               "Raise {\n name B\n}\n",
        "Raise");
    EXPECT_EQ(names_of(loaded.nodes), (Names{"G.A", "B"}));
    EXPECT_EQ(name_of(loaded.nodes[0]->input(0)), "R");
    EXPECT_EQ(name_of(loaded.nodes[1]->input(0)), "G.A");
    EXPECT_EQ(loaded.skipped_classes, Names());
}

TEST_F(ScriptLoaderTest, GivesClonesTheKnobsOfTheirOriginal) {
    const LoadedScript loaded =
        load(ramp + "set N1 [stack 0]\nRaise {\n name A\n mix 0.25\n}\nset C1 [stack 0]\n"
                    "push $N1\nclone $C1 {\n name B\n xpos 7\n}\n",
             "Raise");
    EXPECT_EQ(names_of(loaded.nodes), (Names{"A", "B"}));
    for (const Node* const node : loaded.nodes) {
        EXPECT_EQ(node->knob("mix")->get_value(), 0.25);
        EXPECT_EQ(name_of(node->input(0)), "R");
    }
}

TEST_F(ScriptLoaderTest, PassesOverKnobsThatChangeNoPicture) {
    EXPECT_EQ(load_error(ramp +
                         "Raise {\n name A\n xpos 1\n ypos 2\n selected true\n note_font_size 12\n"
                         " tile_color 0xff\n label words\n postage_stamp true\n help text\n"
                         " addUserKnob {20 User}\n addUserKnob {7 amount l Amount R 0 1}\n"
                         " amount {{frame/2}}\n disable false\n read_from_file false\n}\n"),
              "no error");
}

TEST_F(ScriptLoaderTest, RefusesWhatWouldMakeAnotherPicture) {
    const std::string cam = "Camera2 {\n inputs 0\n name C\n";
    const struct {
        std::string text;
        const char *class_name, *error;
    } cases[] = {
        {ramp + "Raise {\n name A\n swirl 7\n}\n", "Raise",
         "shot.nk:8:2: A, of class 'Raise', has no knob 'swirl' here"},
        {ramp + "Raise {\n swirl 7\n}\n", "Raise",
         "shot.nk:7:2: a Raise, of class 'Raise', has no knob 'swirl' here"},
        {ramp + "Raise {\n name A\n mix {{frame/10}}\n}\n", "Raise",
         "shot.nk:8:7: the expression 'frame/10' is not supported"},
        {"Blur {\n inputs 0\n name B\n}\nRaise {\n name A\n}\n", "Raise",
         "shot.nk:1:1: there is no plug-in for B, of class 'Blur', whose output is needed"},
        {"Blur {\n inputs 0\n}\nRaise {\n name A\n}\n", "Raise",
         "shot.nk:1:1: there is no plug-in for a Blur, of class 'Blur', whose output is needed"},
        {"Classless {\n inputs 0\n}\nRaise {\n}\n", "Raise",
         "shot.nk:1:1: Classless: its plug-in was loaded but has no class of that name"},
        {cam + "}\nRaise {\n name A\n}\n", "Raise", "shot.nk:5:1: A does not take C as input 0"},
        {ramp + "push 0\npush 0\nRaise {\n inputs 3\n name A\n}\n", "Raise",
         "shot.nk:8:1: A does not take R as input 2"},
        {cam + " disable true\n}\nCamera2 {\n name D\n}\n", "Camera2",
         "shot.nk:1:1: C is disabled, which is not supported"},
        {cam + " disable {{frame>5}}\n}\n", "Camera2",
         "shot.nk:4:10: knob 'disable': the expression '{{frame>5}}' is not supported"},
        {cam + " read_from_file true\n file a.abc\n}\n", "Camera2",
         "shot.nk:4:17: C reads its values from a file, which is not supported"},
        {cam + " useLifetime true\n lifetimeStart 10\n}\n", "Camera2",
         "shot.nk:4:14: C is there for some of the frames only, which is not supported"},
        {cam + " skew {0 0 1}\n}\n", "Camera2",
         "shot.nk:4:7: knob 'skew': a skew is not supported"},
        {cam + " rot_order ABC\n}\n", "Camera2",
         "shot.nk:4:12: knob 'rot_order' has no item 'ABC'"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(load_error(c.text, c.class_name), c.error) << c.text;
}

TEST_F(ScriptLoaderTest, DoesNotMindWhatFeedsNothingThatIsWanted) {
    const LoadedScript loaded =
        load("Blur {\n inputs 0\n size {{frame}}\n}\nCamera2 {\n inputs 0\n disable true\n"
             " read_from_file true\n swirl 7\n}\nWrite {\n inputs 0\n}\nBlur {\n inputs 0\n}\n" +
                 ramp,
             "Ramp");
    EXPECT_EQ(names_of(loaded.nodes), Names{"R"});
    EXPECT_EQ(loaded.skipped_classes, (Names{"Blur", "Camera2", "Write"}));
}

TEST_F(ScriptLoaderTest, LeavesOutWantedNodesThatAreOff) {
    const LoadedScript loaded =
        load("Ramp {\n inputs 0\n name A\n disable true\n swirl 7\n}\n"
             "Ramp {\n inputs 0\n name B\n disable 0\n}\nRamp {\n inputs 0\n disable 1\n}\n",
             "Ramp");
    EXPECT_EQ(names_of(loaded.nodes), Names{"B"});
    EXPECT_EQ(loaded.disabled, (Names{"A", "a Ramp"}));
    EXPECT_EQ(loaded.skipped_classes, Names());
}

TEST_F(ScriptLoaderTest, PutsTheScriptsFolderIntoFileNames) {
    const Script script =
        Script::parse("Recorder {\n inputs 0\n name A\n"
                      " file \"\\[file dirname \\[value root.name]]/sky.dat\"\n}\n",
                      "/shots/shot.nk");
    load_script(script, "Recorder", graph);
    EXPECT_STREQ(graph.find("A")->knob("file")->get_text(), "/shots/sky.dat");
}

TEST_F(ScriptLoaderTest, LoadsLongChainsButNoEndlessOnes) {
    const auto chain = [](int length) {
        std::string text = "Axis2 {\n inputs 0\n name A0\n translate {1 0 0}\n}\n";
        for (int i = 1; i < length; i++)
            text += "Axis2 {\n name A" + std::to_string(i) + "\n translate {1 0 0}\n}\n";
        return text + "Camera2 {\n name C\n}\n";
    };
    load(chain(999), "Camera2");
    OpTree tree(*graph.find("C"));
    DD::Image::Op& op = tree.at(1);
    validate(op);
    EXPECT_EQ(dynamic_cast<DD::Image::CameraOp&>(op).matrix().a03, 999);
    EXPECT_EQ(load_error(chain(1000), "Camera2"),
              "shot.nk:1:1: more than 1000 nodes feed each other in a row");
}
