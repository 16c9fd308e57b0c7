// SPDX-License-Identifier: BSD-3-Clause

// What a terminal gets to see when files, their names and the arguments hold what it would obey.
#include "catalog/database_writer.h"
#include "tests/tools/program.h"

using namespace velmora;

namespace {

// CSI as U+009B, a line separator, no UTF-8, a reversal, delete: a node may have such a name.
const std::string name = "\xc2\x9bm\xe2\x80\xa8\xff\xe2\x80\xaez\x7f";
const std::string shown_name = "\\xc2\\x9bm\\xe2\\x80\\xa8\\xff\\xe2\\x80\\xaez\\x7f";

// A reset of the terminal and a bell as well, still one word of any file.
const std::string word = "\x1b"
                         "c\a" +
                         name;
const std::string shown_word = "\\x1bc\\x07" + shown_name;

// For what holds whole texts: a line that could be one of ours.
const std::string line = word + "\nvelmora: all is well";
const std::string shown_line = shown_word + "\\x0avelmora: all is well";

// For paths and arguments, with the returns that scripts drop at the ends of lines.
const std::string text = line + "\r";
const std::string shown_text = shown_line + "\\x0d";

const std::string header = "hip,ra,dec,vmag,bv,plx,e_plx,name\n";

std::string in_shell(const std::string& argument) {
    return "'" + argument + "'";
}

// One place where such text comes in.
struct Case {
    std::string file, content; // written before, if it has a name
    std::string arguments;
    int status;
    std::string message; // the whole of standard error, without "velmora: " and the last LF
};

class HostileText : public Program {
protected:
    void expect_said(const std::vector<Case>& cases) {
        for (const Case& row : cases) {
            if (!row.file.empty())
                folder.write(row.file, row.content);
            const Ran ran = run(row.arguments);
            EXPECT_EQ(ran.err, "velmora: " + row.message + "\n") << row.content;
            EXPECT_EQ(ran.status, row.status) << row.message;
            EXPECT_EQ(ran.out, "") << row.message;
        }
    }

    static Case camera(const std::string& content, const std::string& message) {
        return {"shot.chan", content, "render --camera shot.chan -o x.png", 1,
                "shot.chan:" + message};
    }

    static Case script(const std::string& content, const std::string& message) {
        return {"shot.nk", content, "render shot.nk -o x.png", 1, "shot.nk:" + message};
    }

    static Case table(const std::string& content, const std::string& message) {
        return {"stars.csv", content, "catalog import stars.csv -o x.velmora", 1, message};
    }

    static Case wrong(const std::string& arguments, const std::string& message) {
        return {"", "", arguments, 2, message};
    }

    static Case failing(const std::string& arguments, const std::string& message) {
        return {"", "", arguments, 1, message};
    }
};

} // namespace

TEST_F(HostileText, InACameraIsShownEscaped) {
    expect_said({
        camera(word + " 1 2 3 4 5 6\n", "1: '" + shown_word + "' is not a number"),
        camera("1 1 2 3 4 5 " + word + "\n", "1: '" + shown_word + "' is not a number"),
        camera("1 1 2 3 4 5 6\n2 1 2 3 4 5 9" + word + "\n",
               "2: '9" + shown_word + "' is not a number"),
    });
}

TEST_F(HostileText, InAScriptIsShownEscaped) {
    const std::string node = "VelmoraNK {\n inputs 0\n";
    expect_said({
        script(word + " 1\n", "1:1: the command '" + shown_word + "' is not known"),
        script(word + " {\n}\n", "1:1: '" + shown_word + "' cannot be the class of a node"),
        script("push $" + word + "\n", "1:6: the variable '" + shown_word + "' is not set"),
        script("Dot {\n inputs " + word + "\n}\n",
               "2:9: '" + shown_word + "' is not a number of inputs"),
        script("Dot {\n name a." + word + "\n}\n",
               "2:7: 'a." + shown_word + "' cannot be the name of a node"),
        script("Dot {\n name " + name + "\n}\nDot {\n name " + name + "\n}\n",
               "5:7: the name '" + shown_name + "' is taken since line 2"),
        script("Dot {\n " + word + "\n}\n", "2:2: the knob '" + shown_word + "' has no value"),
        script("Root {\n format " + word + "\n}\n",
               "2:9: there is no format named '" + shown_word + "'"),
        script("Root {\n fps " + word + "\n}\n", "2:6: '" + shown_word + "' is not a number"),
        script(node + " name Stars\n " + word + " 1\n}\n",
               "4:2: Stars, of class 'VelmoraNK', has no knob '" + shown_word + "' here"),
        script(node + " name " + name + "\n other 1\n}\n",
               "4:2: " + shown_name + ", of class 'VelmoraNK', has no knob 'other' here"),
        script(node + " blur_segs " + word + "\n}\n",
               "3:12: the expression '" + shown_word + "' is not supported"),
        script(node + " blur_segs {" + word + "}\n}\n",
               "3:13: the expression '" + shown_word + "' is not supported"),
        script(node + " projection " + word + "\n}\n",
               "3:13: knob 'projection' has no item '" + shown_word + "'"),
        script(node + " starfile \\[" + word + "\n}\n",
               "3:11: knob 'starfile': the expression in '[" + shown_word + "' is not supported"),
        script(node + " disable " + word + "\n}\n",
               "3:10: knob 'disable': the expression '" + shown_word + "' is not supported"),
    });
}

TEST_F(HostileText, InANodesKnobOrNameIsShownEscaped) {
    const std::string node = "VelmoraNK {\n inputs 0\n";
    expect_said({
        {"shot.nk", node + " starfile \"" + line + "\"\n}\n", "render shot.nk -F 1 -o x.png", 1,
         shown_line + ": No such file or directory"},
        {"shot.nk", node + " disable true\n name " + name + "\n}\n", "render shot.nk -o x.png", 1,
         "shot.nk: has no node of class VelmoraNK to render"},
        {"shot.nk", node + " name " + name + "%\n}\n", "render shot.nk -F 1 -o {node}.png", 2,
         "output '{node}.png': the name of the node '" + shown_name +
             "%' cannot be part of a file's"},
    });
}

TEST_F(HostileText, InACatalogueIsShownEscaped) {
    const std::string at = "stars.csv, line ";
    expect_said({
        table("hip,ra,dec," + word + "\n", at + "1: the header is 'hip,ra,dec," + shown_word +
                                               "' instead of "
                                               "'hip,ra,dec,vmag,bv,plx,e_plx,name'"),
        table(header + word + ",2,3,4,,,,\n",
              at + "2: hip '" + shown_word + "' is not a whole number above 0"),
        table(header + "1," + word + ",3,4,,,,\n",
              at + "2: ra '" + shown_word + "' is not a number"),
        table(header + "1,2,3,4,,,\"" + word + "\",\n",
              at + "2: e_plx '" + shown_word + "' is not a number"),
    });
}

TEST_F(HostileText, InTheNameOfAFileIsShownEscaped) {
    const std::string given = in_shell(text), missing = shown_text + ": No such file or directory";
    const auto named = [&](const std::string& extension) { return in_shell(text + extension); };
    expect_said({
        failing("render " + given + " -o x.png", missing),
        failing("render --camera " + given + " -o x.png", missing),
        failing("render --star-file " + given + " -o x.png", missing),
        failing("catalog import " + given + " -o x.velmora", missing),
        failing("catalog info " + given, missing),
        failing("render -o " + named("/x.png"),
                shown_text + "/x.png: there is no folder " + shown_text),
        wrong("render -o " + given, "output '" + shown_text + "': must end in .exr or .png"),
        wrong("render -F 1,2 -o " + named(".png"),
              "output '" + shown_text +
                  ".png': has no frame number (#### or %04d), and 2 frames would overwrite each "
                  "other"),
        wrong("render -o " + in_shell("%" + text + ".png"),
              "output name '%" + shown_text + ".png': '%" + shown_text +
                  ".png' does not begin with %d, %04d or the like; a percent sign itself is %%"),
        {text, "1 2 3\n", "render --camera " + given + " -o x.png", 1,
         shown_text + ":1: 3 columns, but a frame takes 7 or 8"},
        {text, "what\n", "render " + given + " -o x.png", 1,
         shown_text + ":1:1: the command 'what' is not known"},
        {text, header + "x\n", "catalog import " + given + " -o x.velmora", 1,
         shown_text + ", line 2: the number of columns is 1 instead of 8"},
        {text, header, "render --star-file " + given + " -o x.png", 1,
         shown_text + ": is not a star database: it begins with neither VELMORA1 nor VELMORA2"},
        {text, header, "catalog import " + given + " -o " + named(".velmora"), 0,
         shown_text + ".velmora: stars written: 0, with known distance: 0, with known colour: 0"},
    });
}

TEST_F(HostileText, InAnArgumentIsShownEscaped) {
    const std::string given = in_shell(text);
    expect_said({
        wrong(given, "'" + shown_text +
                         "': unknown command; use render, explain, catalog, script or "
                         "info"),
        wrong("render --format " + given + " -o x.png",
              "format '" + shown_text + "': takes <width>x<height> in pixels"),
        wrong("render -F " + in_shell(word) + " -o x.png",
              "frame range '" + shown_word + "': '" + shown_word +
                  "' is neither a frame nor a range such as 1-100 or 1-100x2"),
        wrong("render --look-at " + given + " -o x.png",
              "--look-at '" + shown_text +
                  "': takes right ascension and declination in degrees, and a roll"),
        wrong("render --knob " + given + " -o x.png",
              "--knob " + shown_text + ": takes NAME=VALUE"),
        wrong("render --knob " + in_shell(text + "=1") + " -o x.png",
              "--knob " + shown_text + "=1: the node has no such knob (velmora info lists them)"),
        wrong("render --knob " + in_shell("bias=" + text) + " -o x.png",
              "--knob bias=" + shown_text + ": takes a number"),
        {"shot.nk", "VelmoraNK {\n inputs 0\n}\n", "render shot.nk --node " + given + " -o x.png",
         2, "--node " + shown_text + ": shot.nk has no such node of class VelmoraNK"},
    });
}

// Notes, statistics, summaries: lines of ours and nothing that is not printable ASCII.
TEST_F(HostileText, BecomesNoLineAndNoControlInAnythingThatIsSaid) {
    const auto node = [](const std::string& start, const std::string& knob) {
        return "VelmoraNK {\n inputs 0\n " + knob + "\n name " + start + name + "\n}\n";
    };
    write_star_database(folder.file("sky.velmora"), {});
    folder.write("shot.nk", "Root {\n format \"8 8 0 0 8 8 1 small\"\n}\n" +
                                node("off", "disable true") + node("on", "starfile sky.velmora"));
    const Ran ran = run("render shot.nk --stats --jobs 2 -F 1,2 -o " + in_shell(text + "####.png"));
    EXPECT_EQ(ran.status, 0);
    std::istringstream lines(ran.err);
    std::string said;
    int notes = 0, stats = 0;
    while (std::getline(lines, said)) {
        EXPECT_EQ(said.find_first_not_of(
                      " !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
                      "abcdefghijklmnopqrstuvwxyz{|}~"),
                  std::string::npos)
            << said;
        notes += said == "velmora: note: shot.nk: not rendered, being disabled: off" + shown_name;
        stats += said.rfind("velmora: stats: on" + shown_name + ": frame ", 0) == 0;
    }
    EXPECT_EQ(notes, 1);
    EXPECT_EQ(stats, 2);
}

TEST_F(HostileText, InTheNameOfADatabaseIsShownEscaped) {
    write_star_database(folder.file(text), {});
    const Ran ran = run("catalog info " + in_shell(text));
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(ran.out.substr(0, ran.out.find('\n')), shown_text);
}

// What is printable stays readable in any script.
TEST_F(HostileText, IsNotWhatOtherLanguagesWrite) {
    expect_said({
        failing("render 'ночь ★ Größe.nk' -o x.png", "ночь ★ Größe.nk: No such file or directory"),
        camera("1 1 2 3 4 5 fünf\n", "1: 'fünf' is not a number"),
        table(header + "1,二,3,4,,,,\n", "stars.csv, line 2: ra '二' is not a number"),
    });
}
