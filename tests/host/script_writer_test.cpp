// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/script_writer.h"

#include "host/script/curve.h"

#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>

using namespace velmora;
using namespace velmora::host;

static ScriptKnob knob(const std::string& name, const ScriptValue& value) {
    return {name, {}, value};
}

static ScriptValue raw_list(const std::string& text) {
    return {ScriptValue::Kind::braced, text, {}};
}

static ScriptNode node(const std::string& class_name, const std::string& name,
                       const std::vector<int>& inputs, const std::vector<ScriptKnob>& knobs = {},
                       int clone_of = -1) {
    return {class_name, name, {}, knobs, inputs, clone_of};
}

static Script script_of(const std::vector<ScriptNode>& nodes) {
    Script script;
    script.name = "shot.nk";
    script.nodes = nodes;
    return script;
}

static std::string error_of(const Script& script) {
    try {
        write_script(script);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "no error";
}

static void expect_to_read_back(const Script& script) {
    const std::string text = write_script(script);
    EXPECT_EQ(Script::parse(text, script.name), script) << text;
}

TEST(ScriptWriter, WritesAScriptAsTheHostDoes) {
    Script script = script_of({
        node("Camera2", "Camera1", {},
             {knob("translate",
                   list_value({raw_list("curve x1 0 x10 5"), number_value(0.1), number_value(-2)})),
              knob("focal", number_value(35))}),
        node("VelmoraNK", "Stars1", {0}, {knob("star_file", text_value("/stars/my sky.velmora"))}),
        node("Blur", "Blur1", {1}),
        node("Merge2", "Merge1", {2, 1, -1}),
        node("Write", "Write1", {-1}, {knob("file", text_value("sky.%04d.exr"))}),
    });
    script.version = "13.2 v5";
    script.root = {knob("frame", number_value(1001)), knob("name", text_value("sky.nk"))};
    EXPECT_EQ(write_script(script), "version 13.2 v5\n"
                                    "Root {\n inputs 0\n frame 1001\n name sky.nk\n}\n"
                                    "Camera2 {\n inputs 0\n name Camera1\n"
                                    " translate {{curve x1 0 x10 5} 0.1 -2}\n focal 35\n}\n"
                                    "VelmoraNK {\n name Stars1\n"
                                    " star_file \"/stars/my sky.velmora\"\n}\n"
                                    "set N1 [stack 0]\n"
                                    "Blur {\n name Blur1\n}\n"
                                    "set N2 [stack 0]\n"
                                    "push 0\npush $N1\npush $N2\n"
                                    "Merge2 {\n inputs 3\n name Merge1\n}\n"
                                    "push 0\n"
                                    "Write {\n name Write1\n file sky.%04d.exr\n}\n");
    expect_to_read_back(script);
}

TEST(ScriptWriter, WritesNothingForAnEmptyScript) {
    EXPECT_EQ(write_script(script_of({})), "");
}

TEST(ScriptWriter, WritesClonesByWhatIsTheirOwn) {
    const ScriptKnob focal = knob("focal", number_value(35)), xpos = knob("xpos", number_value(1));
    const ScriptKnob moved = knob("xpos", number_value(7)), ypos = knob("ypos", number_value(2));
    const Script script = script_of({
        node("Camera2", "A", {}, {focal, xpos}),
        node("Camera2", "B", {}, {focal, moved, ypos}, 0),
        node("Camera2", "C", {1}, {focal, xpos}, 0),
        node("Merge2", "M", {0, 2}),
    });
    EXPECT_EQ(write_script(script), "Camera2 {\n inputs 0\n name A\n focal 35\n xpos 1\n}\n"
                                    "set N0 [stack 0]\nset C0 [stack 0]\n"
                                    "clone $C0 {\n inputs 0\n name B\n xpos 7\n ypos 2\n}\n"
                                    "clone $C0 {\n name C\n}\n"
                                    "set N2 [stack 0]\n"
                                    "push $N2\npush $N0\n"
                                    "Merge2 {\n inputs 2\n name M\n}\n");
    expect_to_read_back(script);
}

TEST(ScriptWriter, GivesEveryTextBack) {
    std::string all;
    for (int byte = 1; byte < 256; byte++)
        all += static_cast<char>(byte);
    const std::string texts[] = {"",
                                 "plain",
                                 "two words",
                                 "a\nb\r\nc",
                                 "{",
                                 "}}{",
                                 "\\",
                                 "a\\",
                                 "\"",
                                 "[stack 0]",
                                 "$N1",
                                 "#1",
                                 "\t",
                                 ";",
                                 "a;b",
                                 "\001"
                                 "12",
                                 "0x1f",
                                 all,
                                 "\\x41",
                                 "\\n",
                                 "'",
                                 "-1.5",
                                 "\xe9"};
    for (const std::string& text : texts) {
        Script script = script_of({node("Blur", "A", {}, {knob("label", text_value(text))})});
        script.root = {knob("label", text_value(text))};
        expect_to_read_back(script);
        script = script_of({node(
            "Blur", "A", {}, {knob("labels", list_value({text_value(text), text_value(text)}))})});
        expect_to_read_back(script);
        const std::vector<ScriptValue> items =
            list_items(Script::parse(write_script(script), "").nodes[0].knobs[0].value, "");
        EXPECT_EQ(items, (std::vector<ScriptValue>{text_value(text), text_value(text)}));
    }
}

TEST(ScriptWriter, GivesNamesAndVersionsBack) {
    for (const char* text : {"13.2 v5", "a  b", " a", "{", "\"", "#", "x;y", "a\nb"}) {
        Script script = script_of({node("Blur", "A", {0 - 1}, {knob(text, number_value(1))})});
        script.version = text;
        expect_to_read_back(script);
    }
    expect_to_read_back(script_of({node("a_Class-2.gizmo", "", {}), node("B", "\xc3\xa9{", {0})}));
}

TEST(ScriptWriter, GivesEveryNumberBack) {
    typedef std::numeric_limits<double> limits;
    for (const double number : {0.1, -1.0 / 3, 1e22, 5e-324, limits::max(), limits::lowest()}) {
        const Script script = script_of({node("A", "A", {}, {knob("size", number_value(number))})});
        const Script again = Script::parse(write_script(script), "shot.nk");
        EXPECT_EQ(number_of(again.nodes[0].knobs[0].value, "shot.nk"), number);
    }
    EXPECT_EQ(number_value(0.1).text, "0.1");
    EXPECT_EQ(number_value(-3).text, "-3");
}

TEST(ScriptWriter, GivesCurvesBack) {
    const AnimationCurve curve =
        AnimationCurve::parse(raw_list("curve i L l x1 0.1 x3 0.2 l 5 s1 u2"), "shot.nk");
    const ScriptValue value = list_value({curve.value(), AnimationCurve::constant(2).value()});
    EXPECT_EQ(value.text, "{curve i L l x1 0.1 x3 0.2 l 5 s1 u2} 2");
    expect_to_read_back(script_of({node("A", "A", {}, {knob("focal", value)})}));
}

// Texts that the host writes differently.
TEST(ScriptWriter, WritesWhatWasReadAsAnEqualScript) {
    const char* const texts[] = {
        "version 12.0 v1\nRoot {\n name a\n inputs 0\n frame 2\n}\n",
        "Camera2 {\n inputs 0\n name A\n}\nDot {\n}\nset N1 [stack 0]\nBlur {\n name B\n size "
        "{2}\n}\n"
        "push $N1\nMerge2 {\n inputs 1+1\n name \"M\"\n}\n",
        ("Blur {\n xpos 1\n xpos 2\n}\nset C1 [stack 0]\nclone $C1 {\n xpos 1\n xpos 3\n ypos 1\n"
         " ypos 2\n}\nset C2 [stack 0]\nclone $C2 {\n xpos 1\n}\nclone $C2 {\n}\n"),
        "Blur {\n label \"a\\x41\\351\"\n label {a\n b {\\}} \" [ $}\n label a\\ b\n}\n",
        "Blur {\n inputs 3\n}\nBlur {\n inputs 0\n}\nBlur {\n}\n",
    };
    for (const char* text : texts) {
        const Script script = Script::parse(text, "shot.nk");
        expect_to_read_back(script);
        // Writing it again changes nothing.
        const std::string written = write_script(script);
        EXPECT_EQ(write_script(Script::parse(written, "shot.nk")), written);
    }
}

TEST(ScriptWriter, RefusesWhatNoTextGivesBack) {
    const ScriptKnob focal = knob("focal", number_value(35));
    const std::string otherwise = "the script cannot be written: it would read otherwise";
    const struct {
        std::vector<ScriptNode> nodes;
        std::string error;
    } cases[] = {
        {{node("Blur", "G.A", {})}, "the node 'G.A' is in a group"},
        {{node("Dot", "A", {})}, "the node 'A' is of class Dot, which scripts are read without"},
        {{node("Group", "A", {})},
         "the node 'A' is of class Group, which scripts are read without"},
        {{node("Blur", "A", {0})}, "an input of the node 'A' does not come before it"},
        {{node("Blur", "A", {-2})}, "an input of the node 'A' does not come before it"},
        {{node("Blur", "A", {}, {}, 0)}, "the original of the node 'A' does not come before it"},
        {{node("A b", "A", {})}, "the script cannot be written: the command 'A' is not known"},
        {{node("push", "A", {})}, "the script cannot be written: 'push' takes a variable or 0"},
        {{node("Root", "A", {})}, otherwise},
        {{node("Blur", "A", {}), node("Blur", "A", {})},
         "the script cannot be written: the name 'A' is taken since line 3"},
        {{node("Blur", "A b", {})},
         "the script cannot be written: 'A b' cannot be the name of a node"},
        {{node("Blur", "A", {}, {knob("", number_value(1))})},
         "the script cannot be written: '' cannot be the name of a knob"},
        {{node("Blur", "A", {}, {knob("inputs", number_value(1))})}, otherwise},
        {{node("Blur", "A", {}, {knob("name", number_value(1))})}, otherwise},
        {{node("Blur", "A", {}, {knob("a", raw_list("}"))})},
         "the script cannot be written: the brace was never opened"},
        {{node("Blur", "A", {}, {knob("a", raw_list("{"))})},
         "the script cannot be written: the brace is never closed"},
        {{node("Blur", "A", {}, {knob("a", raw_list("} b {"))})}, otherwise},
        {{node("Blur", "A", {}, {knob("a", raw_list("b\r\nc"))})}, otherwise},
        {{node("Blur", "A", {}, {knob("a", text_value(std::string("b\0c", 3)))})},
         "the script cannot be written: a NUL byte cannot be part of a text"},
        {{node("Blur", "A", {}, {focal}), node("Blur", "B", {}, {}, 0)}, otherwise},
        {{node("Blur", "A", {}), node("Blur", "B", {}, {focal}, 0)},
         "the script cannot be written: a clone cannot have a 'focal' of its own"},
        {{node("Blur", "A", {}), node("Dilate", "B", {}, {}, 0)}, otherwise},
        {{node("Blur", "A", {}), node("Blur", "B", {}, {}, 0), node("Blur", "C", {}, {}, 1)},
         otherwise},
        {{node("Blur", "A", std::vector<int>(1001, -1))},
         "the script cannot be written: '1001' is not a number of inputs"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(error_of(script_of(c.nodes)), c.error);
}
