// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/script.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::host;

typedef std::vector<std::string> Texts;

static Script parse(const std::string& text) {
    return Script::parse(text, "shot.nk");
}

static std::string error_of(const std::string& text) {
    try {
        parse(text);
    } catch (const ScriptError& error) {
        return error.what();
    }
    return "no error";
}

// The nodes by name with their inputs, input 0 first: "Merge1: Blur1 -".
static Texts wires(const Script& script) {
    Texts texts;
    for (const ScriptNode& node : script.nodes) {
        std::string text = node.name + ":";
        for (const int input : node.inputs)
            text += input < 0 ? " -" : " " + script.nodes.at(static_cast<std::size_t>(input)).name;
        texts.push_back(text);
    }
    return texts;
}

static Texts wires(const std::string& text) {
    return wires(parse(text));
}

static Texts told(const std::vector<ScriptKnob>& knobs) {
    Texts texts;
    for (const ScriptKnob& knob : knobs)
        texts.push_back(knob.name + "=" + knob.value.text);
    return texts;
}

// A generator, a node with one input and a node with two.
static std::string source(const std::string& name) {
    return "Camera2 {\n inputs 0\n name " + name + "\n}\n";
}

static std::string blur(const std::string& name) {
    return "Blur {\n name " + name + "\n}\n";
}

static std::string merge(const std::string& name) {
    return "Merge2 {\n inputs 2\n name " + name + "\n}\n";
}

TEST(Script, ReadsASavedScript) {
    const Script script = parse("#! /usr/local/bin/host -nx\n"
                                "version 13.2 v5\n"
                                "define_window_layout_xml {<?xml version=\"1.0\"?>\n"
                                "<layout version=\"1.0\"/>}\n"
                                "Root {\n inputs 0\n name /shots/sky.nk\n frame 1001\n"
                                " format \"1920 1080 0 0 1920 1080 1 HD_1080\"\n}\n"
                                "add_layer {P P.x P.y}\n"
                                "Camera2 {\n inputs 0\n"
                                " translate {{curve x1 0 x10 5} 0 0}\n focal 35\n"
                                " name Camera1\n selected true\n xpos 12\n}\n"
                                "VelmoraNK {\n star_file \"/stars/my sky.velmora\"\n"
                                " name VelmoraNK1\n}\n");
    EXPECT_EQ(script.name, "shot.nk");
    EXPECT_EQ(script.version, "13.2 v5");
    EXPECT_EQ(told(script.root), (Texts{"name=/shots/sky.nk", "frame=1001",
                                        "format=1920 1080 0 0 1920 1080 1 HD_1080"}));
    EXPECT_EQ(wires(script), (Texts{"Camera1:", "VelmoraNK1: Camera1"}));

    const ScriptNode& camera = script.nodes[0];
    EXPECT_EQ(camera.class_name, "Camera2");
    EXPECT_EQ(told(camera.knobs),
              (Texts{"translate={curve x1 0 x10 5} 0 0", "focal=35", "selected=true", "xpos=12"}));
    EXPECT_EQ(camera.place.line, 12);
    EXPECT_EQ(camera.place.column, 1);
    EXPECT_EQ(camera.knobs[1].place.line, 15);
    EXPECT_EQ(camera.knobs[1].value.place.column, 8);
    EXPECT_EQ(camera.clone_of, -1);
}

TEST(Script, MayBeEmpty) {
    for (const char* text : {"", "# nothing\n", "Root {\n}\n"})
        EXPECT_EQ(parse(text), parse(""));
    EXPECT_TRUE(parse("").nodes.empty());
}

TEST(Script, ReadsNodesOfOneLineAndOfWindowsLines) {
    EXPECT_EQ(wires("Camera2 { inputs 0 name A }; Blur { name B }\r\nBlur {\r\n name C\r\n}\r\n"),
              (Texts{"A:", "B: A", "C: B"}));
}

TEST(Script, FindsTheLastKnobOfAName) {
    const Script script = parse("Blur {\n size 1\n addUserKnob {20 a}\n size 2\n"
                                " addUserKnob {7 b l \"B b\"}\n}\n");
    EXPECT_EQ(told(script.nodes[0].knobs),
              (Texts{"size=1", "addUserKnob=20 a", "size=2", "addUserKnob=7 b l \"B b\""}));
    EXPECT_EQ(find_knob(script.nodes[0].knobs, "size")->value.text, "2");
    EXPECT_EQ(find_knob(script.nodes[0].knobs, "focal"), nullptr);
}

TEST(Script, WiresInputZeroToTheTopOfTheStack) {
    EXPECT_EQ(wires(source("A") + source("B") + merge("M") + blur("C")),
              (Texts{"A:", "B:", "M: B A", "C: M"}));
}

TEST(Script, LeavesInputsOpenForWhichTheStackHasNothing) {
    EXPECT_EQ(wires(blur("A") + merge("M")), (Texts{"A: -", "M: A -"}));
    EXPECT_EQ(wires("push 0\n" + source("A") + "push 0\nMerge2 {\n inputs 3\n name M\n}\n"),
              (Texts{"A:", "M: - A -"}));
}

TEST(Script, CountsMaskInputsWithTheOthers) {
    EXPECT_EQ(wires(source("A") + source("B") + source("C") +
                    "Merge2 {\n inputs 2+1\n name M\n}\n" + blur("D")),
              (Texts{"A:", "B:", "C:", "M: C B A", "D: M"}));
    EXPECT_EQ(wires("Blur {\n inputs \"1+1\"\n name A\n}\n"), (Texts{"A: - -"}));
}

TEST(Script, PushesWhatWasSet) {
    EXPECT_EQ(wires(source("A") + "set N1 [stack 0]\n" + blur("B") + "set N2 [stack 0]\n" +
                    blur("C") + "push $N1\npush $N2\n" + merge("M") + "push $N1\n" + blur("D")),
              (Texts{"A:", "B: A", "C: B", "M: B A", "D: A"}));
}

TEST(Script, SetsWhatIsFurtherDownTheStack) {
    EXPECT_EQ(wires(source("A") + source("B") + "set N1 [stack 1]\npush $N1\n" + blur("C") +
                    "set N1 [stack 7]\npush $N1\n" + blur("D")),
              (Texts{"A:", "B:", "C: A", "D: -"}));
}

TEST(Script, ReadsTheClipboardsText) {
    EXPECT_EQ(wires("set cut_paste_input [stack 0]\nversion 12.1 v2\npush $cut_paste_input\n" +
                    blur("A") + "push $cut_paste_input\n" + blur("B")),
              (Texts{"A: -", "B: -"}));
}

TEST(Script, LooksThroughDots) {
    EXPECT_EQ(wires(source("A") + "Dot {\n name Dot1\n}\nset N1 [stack 0]\nDot {\n}\n" + blur("B") +
                    "push $N1\n" + blur("C") + "push 0\nDot {\n}\n" + blur("D")),
              (Texts{"A:", "B: A", "C: A", "D: -"}));
}

static const std::string input = " Input {\n  inputs 0\n  name Input1\n }\n";
static const std::string output = " Output {\n  name Output1\n }\n";

static std::string group(const std::string& knobs, const std::string& inside) {
    return "Group {\n name G\n" + knobs + "}\n" + inside + "end_group\n";
}

TEST(Script, LooksIntoGroups) {
    EXPECT_EQ(wires(source("A") + group("", input + blur("B") + output) + blur("C")),
              (Texts{"A:", "G.B: A", "C: G.B"}));
    // Straight through, by a dot.
    EXPECT_EQ(wires(source("A") + group("", input + "Dot {\n}\n" + output) + blur("C")),
              (Texts{"A:", "C: A"}));
    // A generator inside; names repeat in and outside.
    EXPECT_EQ(wires(source("A") + group(" inputs 0\n", source("A") + output) + merge("M")),
              (Texts{"A:", "G.A:", "M: G.A A"}));
}

TEST(Script, TakesGroupInputsByTheirNumber) {
    const std::string second = " Input {\n  inputs 0\n  name Other\n  number 1\n }\n";
    const std::string inside = second + input + merge("M") + output;
    EXPECT_EQ(wires(source("A") + source("B") + group(" inputs 2\n", inside) + blur("C")),
              (Texts{"A:", "B:", "G.M: B A", "C: G.M"}));
    // An Input that the group does not have is unconnected, as are all outside groups.
    EXPECT_EQ(wires(source("A") + group("", inside)), (Texts{"A:", "G.M: A -"}));
    EXPECT_EQ(wires(source("A") + input + blur("B") + output + blur("C")),
              (Texts{"A:", "B: -", "C: B"}));
}

TEST(Script, GivesGroupsStacksOfTheirOwn) {
    EXPECT_EQ(wires(source("A") + source("B") +
                    group("", blur("C") + source("D") + output + source("E")) + merge("M")),
              (Texts{"A:", "B:", "G.C: -", "G.D:", "G.E:", "M: G.D A"}));
}

TEST(Script, LooksThroughGroupsInGroups) {
    const std::string inner =
        " Group {\n  name H\n }\n" + input + blur("B") + output + " end_group\n";
    EXPECT_EQ(wires(source("A") +
                    group("", input + inner + blur("C") + " Output {\n  name Output1\n }\n") +
                    "set N1 [stack 0]\n" + blur("D") + "push $N1\n" + blur("E")),
              (Texts{"A:", "G.H.B: A", "G.C: G.H.B", "D: G.C", "E: G.C"}));
}

TEST(Script, SeesTheFirstInputOfAGroupThatIsOff) {
    for (const char* off : {" disable true\n", " disable 1\n"})
        EXPECT_EQ(wires(source("A") + group(off, input + blur("B") + output) + blur("C")),
                  (Texts{"A:", "G.B: A", "C: A"}));
    EXPECT_EQ(wires(group(" inputs 0\n disable true\n", source("B") + output) + blur("C")),
              (Texts{"G.B:", "C: -"}));
    EXPECT_EQ(
        wires(source("A") + group(" disable false\n", input + blur("B") + output) + blur("C")),
        (Texts{"A:", "G.B: A", "C: G.B"}));
}

TEST(Script, KeepsGroupsThatItCannotLookThrough) {
    const std::string other_output = " Output {\n  name Output2\n }\n";
    const std::string cases[] = {
        group(" disable {{frame>10}}\n", input + blur("B") + output),
        group("", input + blur("B") + output + other_output),
        group("", input + blur("B")),
    };
    for (const std::string& text : cases) {
        const Script script = parse(source("A") + text + blur("C"));
        EXPECT_EQ(wires(script), (Texts{"A:", "G.B: A", "G: A", "C: G"}));
        EXPECT_EQ(script.nodes[2].class_name, "Group");
        EXPECT_EQ(script.nodes[2].place.line, 5);
    }
}

TEST(Script, ReadsDeepGroups) {
    std::string text = source("A");
    for (int depth = 0; depth < 100; depth++)
        text += "Group {\n name G\n}\n" + input;
    const std::string inside = text + blur("B");
    std::string ends;
    for (int depth = 0; depth < 100; depth++)
        ends += output + "end_group\n";
    const Script script = parse(inside + ends + blur("C"));
    ASSERT_EQ(script.nodes.size(), 3u);
    EXPECT_EQ(script.nodes[1].inputs, (std::vector<int>{0}));
    EXPECT_EQ(script.nodes[2].inputs, (std::vector<int>{1}));
    EXPECT_EQ(script.nodes[1].name.size(), 201u);

    EXPECT_EQ(error_of(text + "Group {\n name G\n}\n"),
              "shot.nk:705:1: groups are nested more than 100 deep");
}

static const std::string first_camera =
    "Camera2 {\n inputs 0\n focal 35\n name A\n label lens\n xpos 1\n}\nset C1 [stack 0]\n";

TEST(Script, GivesClonesTheKnobsOfTheirOriginal) {
    const Script script =
        parse(first_camera + "clone $C1 {\n inputs 0\n name B\n xpos 7\n ypos 9\n}\n");
    ASSERT_EQ(script.nodes.size(), 2u);
    EXPECT_EQ(script.nodes[1].clone_of, 0);
    EXPECT_EQ(script.nodes[1].class_name, "Camera2");
    EXPECT_EQ(script.nodes[1].name, "B");
    EXPECT_EQ(told(script.nodes[0].knobs), (Texts{"focal=35", "label=lens", "xpos=1"}));
    EXPECT_EQ(told(script.nodes[1].knobs), (Texts{"focal=35", "label=lens", "xpos=7", "ypos=9"}));
}

TEST(Script, WiresClonesByThemselves) {
    EXPECT_EQ(wires(source("A") + "Blur {\n name B\n}\nset C1 [stack 0]\nclone $C1 {\n name C\n}\n"
                                  "push 0\nclone $C1 {\n name D\n inputs 1\n}\n"),
              (Texts{"A:", "B: A", "C: B", "D: -"}));
}

TEST(Script, FollowsChainsOfClones) {
    const Script script = parse(first_camera + "clone $C1 {\n inputs 0\n name B\n xpos 7\n}\n"
                                               "set C2 [stack 0]\n"
                                               "clone $C2 {\n inputs 0\n name C\n}\n"
                                               "set C3 [stack 0]\n"
                                               "clone $C3 {\n inputs 0\n name D\n ypos 2\n}\n");
    ASSERT_EQ(script.nodes.size(), 4u);
    for (std::size_t k = 1; k < 4; k++)
        EXPECT_EQ(script.nodes[k].clone_of, 0);
    EXPECT_EQ(told(script.nodes[3].knobs), (Texts{"focal=35", "label=lens", "xpos=1", "ypos=2"}));
}

TEST(Script, ReadsOriginalsThatAreMarkedAsSuch) {
    const Script script =
        parse("clone node7f60|Camera2|21 Camera2 {\n inputs 0\n focal 35\n name A\n"
              "}\nset C1 [stack 0]\nclone $C1 {\n inputs 0\n name B\n}\n");
    ASSERT_EQ(script.nodes.size(), 2u);
    EXPECT_EQ(script.nodes[0].class_name, "Camera2");
    EXPECT_EQ(script.nodes[0].clone_of, -1);
    EXPECT_EQ(script.nodes[1].clone_of, 0);
    EXPECT_EQ(told(script.nodes[1].knobs), (Texts{"focal=35"}));
}

TEST(Script, ReadsClonesInOtherGroups) {
    const Script script =
        parse(first_camera + "push 0\n" +
              group("", "clone $C1 {\n inputs 0\n name A\n}\n" + output) + blur("B"));
    EXPECT_EQ(wires(script), (Texts{"A:", "G.A:", "B: G.A"}));
    EXPECT_EQ(script.nodes[1].clone_of, 0);
    EXPECT_EQ(told(script.nodes[1].knobs), (Texts{"focal=35", "label=lens", "xpos=1"}));
}

TEST(Script, LooksThroughClonesOfWhatIsLookedThrough) {
    EXPECT_EQ(wires(source("A") + "Dot {\n name X\n}\nset C1 [stack 0]\n" + source("B") +
                    "clone $C1 {\n name Y\n xpos 3\n}\n" + blur("C")),
              (Texts{"A:", "B:", "C: B"}));
    const std::string second = " Input {\n  inputs 0\n  name X\n  number 1\n }\nset C1 [stack 0]\n"
                               "clone $C1 {\n inputs 0\n name Y\n}\n";
    EXPECT_EQ(wires(source("A") + source("B") + group(" inputs 2\n", second + blur("C"))),
              (Texts{"A:", "B:", "G.C: A", "G: B A"}));
}

TEST(Script, NamesThePlaceAtFault) {
    const struct {
        const char *text, *error;
    } cases[] = {
        {"frobnicate 1\n", "shot.nk:1:1: the command 'frobnicate' is not known"},
        {"\n push 0\nBlur\n", "shot.nk:3:1: the command 'Blur' is not known"},
        {"Blur {\n} {\n}\n", "shot.nk:1:1: the command 'Blur' is not known"},
        {"\"Blur\" {\n}\n", "shot.nk:1:1: the command 'Blur' is not known"},
        {"{a} {b}", "shot.nk:1:1: the command '{a}' is not known"},
        {"Root 1", "shot.nk:1:1: the command 'Root' is not known"},
        {"$N1 {\n}\n", "shot.nk:1:1: '$N1' cannot be the class of a node"},
        {"A\\ b {\n}\n", "shot.nk:1:1: 'A b' cannot be the class of a node"},
        {"clone n Root {\n}\n", "shot.nk:1:9: 'Root' cannot be the class of a node"},

        {"push $N1\n", "shot.nk:1:6: the variable 'N1' is not set"},
        {"push\n", "shot.nk:1:1: 'push' takes a variable or 0"},
        {"push 1\n", "shot.nk:1:1: 'push' takes a variable or 0"},
        {"push {0}\n", "shot.nk:1:1: 'push' takes a variable or 0"},
        {"push 0 0\n", "shot.nk:1:1: 'push' takes a variable or 0"},
        {"set N1\n", "shot.nk:1:1: 'set' takes a name and [stack N]"},
        {"set N1 0\n", "shot.nk:1:1: 'set' takes a name and [stack N]"},
        {"set N1 [stack -1]\n", "shot.nk:1:1: 'set' takes a name and [stack N]"},
        {"set N1 [stack 0\\]\n", "shot.nk:1:8: the bracket is never closed"},
        {"set {N1} [stack 0]\n", "shot.nk:1:1: 'set' takes a name and [stack N]"},
        {"set N1 [value x]\n", "shot.nk:1:1: 'set' takes a name and [stack N]"},

        {"end_group\n", "shot.nk:1:1: there is no group to end"},
        {"Group {\n name G\n}\nend_group G\n", "shot.nk:4:11: 'end_group' takes nothing"},
        {"Group {\n name G\n}\n Group {\n name H\n}\nend_group\n",
         "shot.nk:1:1: the group is never ended"},
        {"Group {\n}\nend_group\n", "shot.nk:1:1: the group has no name"},
        {"Dot {\n}\nset N1 [stack 0]\nGroup {\n name G\n}\npush $N1\n",
         "shot.nk:7:6: '$N1' refers to a node of another group"},
        {"Group {\n name G\n}\nDot {\n}\nset N1 [stack 0]\nend_group\npush $N1\n",
         "shot.nk:8:6: '$N1' refers to a node of another group"},
        {"Input {\n number -1\n}\n", "shot.nk:2:9: '-1' is not the number of an input"},

        {"Blur {\n size\n}\n", "shot.nk:2:2: the knob 'size' has no value"},
        {"Blur {\n size\n name A\n}\n", "shot.nk:2:2: the knob 'size' has no value"},
        {"Blur { size }", "shot.nk:1:8: the knob 'size' has no value"},
        {"Blur {\n {size} 2\n}\n", "shot.nk:2:2: '{size}' cannot be the name of a knob"},
        {"Blur {\n \"\" 2\n}\n", "shot.nk:2:2: '' cannot be the name of a knob"},
        {"Blur {\n inputs -1\n}\n", "shot.nk:2:9: '-1' is not a number of inputs"},
        {"Blur {\n inputs 1001\n}\n", "shot.nk:2:9: '1001' is not a number of inputs"},
        {"Blur {\n inputs 1+\n}\n", "shot.nk:2:9: '1+' is not a number of inputs"},
        {"Blur {\n inputs 500+501\n}\n", "shot.nk:2:9: '500+501' is not a number of inputs"},
        {"Blur {\n inputs 99999999999\n}\n",
         "shot.nk:2:9: '99999999999' is not a number of inputs"},
        {"Blur {\n inputs {1}\n}\n", "shot.nk:2:9: '{1}' is not a number of inputs"},
        {"Blur {\n name A.b\n}\n", "shot.nk:2:7: 'A.b' cannot be the name of a node"},
        {"Blur {\n name \"A b\"\n}\n", "shot.nk:2:7: 'A b' cannot be the name of a node"},
        {"Blur {\n name {A}\n}\n", "shot.nk:2:7: '{A}' cannot be the name of a node"},
        {"Blur {\n name A\n}\n\nDot {\n name A\n}\n",
         "shot.nk:6:7: the name 'A' is taken since line 2"},

        {"clone $C1 {\n}\n", "shot.nk:1:7: the variable 'C1' is not set"},
        {"set C1 [stack 0]\nclone $C1 {\n}\n", "shot.nk:2:7: '$C1' refers to no node"},
        {"clone\n", "shot.nk:1:1: 'clone' takes a variable or a new name and a class, and a {...}"},
        {"clone a {\n}\n",
         "shot.nk:1:1: 'clone' takes a variable or a new name and a class, and a {...}"},
        {"clone $C1 Blur\n",
         "shot.nk:1:1: 'clone' takes a variable or a new name and a class, and a {...}"},
        {"clone a Blur {\n}\nclone a Blur {\n}\n",
         "shot.nk:3:7: the clones 'a' have begun already"},
        {"Blur {\n}\nset C1 [stack 0]\nclone $C1 {\n size 3\n}\n",
         "shot.nk:5:2: a clone cannot have a 'size' of its own"},
        {"Group {\n name G\n}\nend_group\nset C1 [stack 0]\nclone $C1 {\n}\n",
         "shot.nk:6:7: the clone of a group is not supported"},

        {"Blur {\n size 2\n", "shot.nk:1:6: the brace is never closed"},
        {"Blur {\n label \"a\n}\n", "shot.nk:2:8: the quote is never closed"},
        {"}\n", "shot.nk:1:1: the brace was never opened"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(error_of(c.text), c.error) << c.text;
}

TEST(Script, RefusesFilesThatAreNoText) {
    EXPECT_EQ(error_of(std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)),
              "shot.nk:3:1: a NUL byte cannot be part of a text");
    EXPECT_EQ(error_of("\x1f\x8b\x08zip"),
              "shot.nk:1:1: the command '\\x1f\\x8b\\x08zip' is not known");
}

TEST(Script, ReadsManyNodes) {
    const int count = 100000;
    std::string text;
    for (int k = 0; k < count; k++)
        text += "Blur {\n name Blur" + std::to_string(k) + "\n}\nset N1 [stack 0]\n";
    const Script script = parse(text);
    ASSERT_EQ(script.nodes.size(), static_cast<std::size_t>(count));
    for (int k = 0; k < count; k++)
        ASSERT_EQ(script.nodes[static_cast<std::size_t>(k)].inputs, (std::vector<int>{k - 1}));
}

TEST(Script, KeepsItsFilesNameForMessages) {
    const Script script = Script::parse(source("A") + blur("B"), "folder/other.nk");
    EXPECT_EQ(script.name, "folder/other.nk");
    EXPECT_EQ(wires(script), (Texts{"A:", "B: A"}));
    try {
        Script::parse("Blur\n", "folder/other.nk");
        FAIL();
    } catch (const ScriptError& error) {
        EXPECT_STREQ(error.what(), "folder/other.nk:1:1: the command 'Blur' is not known");
    }
}
