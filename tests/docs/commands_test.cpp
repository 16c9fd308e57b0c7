// SPDX-License-Identifier: BSD-3-Clause

// Every fenced block on the pages: our own commands are run as written, and everything else must be
// listed here with what is done about it.
//
// The commands of a page run in its order in one folder, which holds the examples and the catalogue
// of the source tree and what `supplied` adds. They must succeed, and print nothing to standard error
// except how many stars were imported and which nodes are disabled. Pictures are rendered small: a
// `velmora render` without --format is given one.
#include "tests/docs/page.h"
#include "tests/tools/program.h"

#include <algorithm>
#include <sstream>

namespace fs = std::filesystem;

namespace {

enum class Listed {
    output,   // is what `with`, a command, prints and says
    file,     // is the text of the file `with`, which the commands of the page read
    appended, // is run after `with`, the beginning of a command
    shown,    // is compared by another test, as `with` tells
    not_run,  // for the reason `with`
};

struct Entry {
    const char* page;
    const char* begins; // of the block
    Listed kind;
    const char* with;
};

// A file that a page's commands read but do not make.
struct Supply {
    const char* page;
    const char* name;
    const char* source; // in the tree, or null
    const char* text;   // where there is no source
};

} // namespace

static const char* const machine = "sets up, builds or installs on the machine that runs it";
static const char* const metadata = "metadata_text_page_test.cpp compares it";

static const Entry entries[] = {
    {"README.md", "./scripts/demo ", Listed::not_run, machine},
    {"README.md", "out/orion.exr out/orion.png\n", Listed::shown,
     "demo_test.cpp renders the demo's pictures"},
    {"README.md", "tools/     velmora, the command line\n", Listed::shown,
     "check-includes holds the folders to it"},
    {"README.md", "cmake --install ", Listed::not_run, machine},
    {"README.md", "cmake --preset release", Listed::not_run, machine},
    {"docs/architecture.md", " velmora   ", Listed::not_run, "is a drawing"},
    {"docs/catalogues.md", "velmora: sky.velmora: stars written: ", Listed::output,
     "velmora catalog import stars.csv.gz -o sky.velmora"},
    {"docs/catalogues.md", "velmora: mine.csv, line 7: ", Listed::output,
     "head -n 6 north.csv >mine.csv; echo 7,400,0,1,,,, >>mine.csv; "
     "velmora catalog import mine.csv -o mine.velmora || true"},
    {"docs/catalogues.md", "hip,ra,dec,vmag,bv,plx,e_plx,name\n", Listed::output,
     "gzip -dc stars.csv.gz | head -n 1"},
    {"docs/catalogues.md", "sky.velmora\nversion ", Listed::output,
     "velmora catalog info sky.velmora"},
    {"docs/command-line.md", "# frame  tx ty tz  rx ry rz\n", Listed::file, "shot.chan"},
    {"docs/command-line.md", "velmora: sky.0007.exr: is being written ", Listed::output,
     "flock sky.0007.exr.inprogress velmora render -F 7 --vaperture 13.824 -o sky.####.exr || "
     "true"},
    {"docs/command-line.md", "frame 1, pixel 712,977 ", Listed::output,
     "velmora explain --pixel 712,977 --look-at 84,-1 --fov 36 --vaperture 13.824 "
     "--save few.velmora"},
    {"docs/install.md", "cmake --preset release\n", Listed::not_run, machine},
    {"docs/install.md", "export NUKE_PATH=", Listed::not_run, "is for the shell that starts Nuke"},
    {"docs/install.md", "nuke.knobDefault(", Listed::not_run, "is run by Nuke"},
    {"docs/install.md", "cmake -S . -B build/nuke15.0 ", Listed::not_run, machine},
    {"docs/metadata-text.md", "KESSMETA1 float:gain=1.5 ", Listed::shown, metadata},
    {"docs/metadata-text.md", "KESSMETA1 float:gain=0.25 ", Listed::shown, metadata},
    {"docs/metadata-text.md", "00000000  4b 45 53 53 ", Listed::shown, metadata},
    {"docs/metadata-text.md", "KESSMETA1 m44f:world=", Listed::shown, metadata},
    {"docs/pictures.md", "--knob saturation=1.3 ", Listed::appended,
     "velmora render --no-camera -o sky.png"},
    {"docs/pictures.md", "shown = colour / m ", Listed::shown,
     "tone_test.cpp holds the curve to it"},
    {"docs/scripts.md", "velmora: note: docs/examples/layers.nk: ", Listed::output,
     "velmora render docs/examples/layers.nk --node Bright -o bright.png"},
    {"docs/scripts.md", "velmora: note: comp.nk: ", Listed::output,
     "velmora render comp.nk -F 1 -o comp.png"},
    {"docs/scripts.md", "velmora: shot.nk:", Listed::output,
     "velmora render shot.nk -F 1 -o shot.png || true"},
    {"docs/scripts.md", "Root {\n", Listed::output, "cat orion.nk"},
    {"docs/star-database.md", "00000000  56 45 4c 4d ", Listed::output,
     "python3 write.py && python3 dump.py one.velmora"},
    {"docs/star-database.md", "import struct\n", Listed::file, "write.py"},
};

static const char* const star_table = "hip,ra,dec,vmag,bv,plx,e_plx,name\n"
                                      "1,10,20,5,0.6,10,1,\n2,11,21,6,,,,\n3,12,22,7,1.5,,,\n"
                                      "4,13,23,4,,,,\n5,14,24,3,,,,\n";

static const char* const dump_program =
    "import sys\n"
    "data = open(sys.argv[1], 'rb').read()\n"
    "for at in range(0, len(data), 16):\n"
    "    line = data[at:at + 16]\n"
    "    halves = [' '.join('%02x' % b for b in line[k:k + 8]) for k in (0, 8)]\n"
    "    text = ''.join(chr(b) if 32 <= b < 127 else '.' for b in line)\n"
    "    print('%08x  %s  |%s|' % (at, '  '.join(halves), text))\n";

static const Supply supplied[] = {
    {"docs/catalogues.md", "stars.csv.gz", "data/stars.csv.gz", nullptr},
    {"docs/catalogues.md", "north.csv", nullptr, star_table},
    {"docs/catalogues.md", "south.csv", nullptr, star_table},
    {"docs/scripts.md", "comp.nk", nullptr,
     "Read {\n inputs 0\n}\nWrite {\n}\nVelmoraNK {\n inputs 0\n}\n"},
    {"docs/scripts.md", "shot.nk", nullptr,
     "Root {\n inputs 0\n}\nCamera2 {\n inputs 0\n rotate {0 {frame*2} 0}\n}\npush 0\n"
     "VelmoraNK {\n inputs 2\n}\n"},
    {"docs/star-database.md", "dump.py", nullptr, dump_program},
};

// ---- what a block is ---------------------------------------------------------------------------

static const Entry* entry_of(const Block& block) {
    for (const Entry& entry : entries)
        if (block.page == entry.page &&
            block.text.compare(0, std::strlen(entry.begins), entry.begins) == 0)
            return &entry;
    return nullptr;
}

// A line that ends in a backslash continues on the next.
static std::vector<std::string> commands_of(const Block& block) {
    std::vector<std::string> commands;
    bool goes_on = false;
    std::istringstream lines(block.text);
    for (std::string line; std::getline(lines, line);) {
        if (goes_on)
            commands.back() += "\n" + line;
        else
            commands.push_back(line);
        goes_on = !line.empty() && line.back() == '\\';
    }
    return commands;
}

// Whether the command's first word is our program, in any folder.
static bool is_ours(const std::string& command) {
    const std::string word = command.substr(0, command.find(' '));
    return fs::path(word).filename() == "velmora";
}

static bool is_run(const Block& block) {
    const std::vector<std::string> commands = commands_of(block);
    return block.language.empty() && std::all_of(commands.begin(), commands.end(), is_ours);
}

// ---- where it runs -----------------------------------------------------------------------------

namespace {

class Workshop {
public:
    explicit Workshop(const std::string& page) : page(page) {
        make_program("bin");
        make_program("build/release/bin");
        make_program("opt/velmora/bin");
        for (const char* prefix : {"build/release", "opt/velmora"}) {
            fs::create_directories(folder.file(prefix) + "/share/velmora");
            fs::create_symlink(fs::path(VELMORA_PROGRAM).parent_path().parent_path() /
                                   "share/velmora/stars.velmora",
                               folder.file(prefix) + "/share/velmora/stars.velmora");
        }
        copy("docs/examples", "docs/examples");
        copy("data/stars.csv.gz", "data/stars.csv.gz");
        copy("packaging/examples", "opt/velmora/examples");
        folder.folder("out"); // where scripts/demo has put its pictures before
        for (const Supply& supply : supplied)
            if (page == supply.page)
                put(supply);
    }

    void write(const std::string& name, const std::string& text) { folder.write(name, text); }

    Ran run(std::string command) const {
        // Pages install to a folder that needs special rights.
        const std::string prefix = "/opt/velmora", here = folder.file("opt/velmora");
        for (std::size_t at = 0; (at = command.find(prefix, at)) != std::string::npos;
             at += here.size())
            command.replace(at, prefix.size(), here);

        const ScratchFolder shell;
        shell.write("script", command + "\n");
        const std::string line = "cd '" + folder.path() + "' && PATH='" + folder.file("bin") +
                                 "':\"$PATH\" sh -eu '" + shell.file("script") + "' </dev/null >'" +
                                 shell.file("out") + "' 2>'" + shell.file("err") + "'";
        const int status = std::system(line.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), shell.read("out"),
                shell.read("err")};
    }

private:
    const std::string page;
    ScratchFolder folder;

    // From the source tree, which no page may write to.
    void copy(const std::string& from, const std::string& to) const {
        const fs::path target = folder.file(to);
        fs::create_directories(target.parent_path());
        fs::copy(fs::path(VELMORA_SOURCE) / from, target);
    }

    void put(const Supply& supply) const {
        if (supply.source)
            copy(supply.source, supply.name);
        else
            folder.write(supply.name, supply.text);
    }

    // The program, which renders small pictures unless it is told a size.
    void make_program(const std::string& where) const {
        fs::create_directories(folder.file(where));
        const std::string path =
            folder.write(where + "/velmora", "#!/bin/sh\n"
                                             "case \" $* \" in\n"
                                             "*' --format '* | *' --help '*) ;;\n"
                                             "' render '*) set -- \"$@\" --format 96x54 ;;\n"
                                             "esac\n"
                                             "exec '" VELMORA_PROGRAM "' \"$@\"\n");
        fs::permissions(path, fs::perms::owner_all);
    }
};

} // namespace

// `said` without the lines that a command of a page may print.
static std::string unexpected(const std::string& said) {
    std::string rest;
    std::istringstream lines(said);
    for (std::string line; std::getline(lines, line);)
        if (line.find(": stars written: ") == std::string::npos &&
            line.find(": not rendered, being disabled: ") == std::string::npos)
            rest += line + "\n";
    return rest;
}

static void expect_to_run(const Workshop& workshop, const Block& block,
                          const std::string& command) {
    const Ran ran = workshop.run(command);
    EXPECT_EQ(ran.status, 0) << block.place();
    EXPECT_EQ(unexpected(ran.err), "") << block.place();
}

static void expect_listed(const Workshop& workshop, const Block& block, const Entry& entry) {
    if (entry.kind == Listed::appended)
        expect_to_run(workshop, block, entry.with + (" " + block.text));
    if (entry.kind != Listed::output)
        return;
    const Ran ran = workshop.run(entry.with);
    EXPECT_EQ(ran.status, 0) << block.place();
    EXPECT_EQ(ran.out + ran.err, block.text) << block.place();
}

// ---- tests -------------------------------------------------------------------------------------

class DocsCommands : public testing::TestWithParam<std::string> {};

TEST_P(DocsCommands, DoWhatThePageSays) {
    Workshop workshop(GetParam());
    const std::vector<Block> blocks = blocks_of_page(GetParam());
    for (const Block& block : blocks) {
        const Entry* const entry = entry_of(block);
        if (entry && entry->kind == Listed::file)
            workshop.write(entry->with, block.text);
    }
    for (const Block& block : blocks) {
        if (const Entry* const entry = entry_of(block)) {
            expect_listed(workshop, block, *entry);
        } else if (is_run(block)) {
            expect_to_run(workshop, block, block.text);
        } else {
            ADD_FAILURE() << block.place() << ": is neither a command of ours nor listed in "
                          << __FILE__;
        }
    }
}

// From docs/a-page.md to docs_a_page.
static std::string test_name(const testing::TestParamInfo<std::string>& page) {
    std::string name = fs::path(page.param).replace_extension().string();
    std::replace_if(
        name.begin(), name.end(), [](char ch) { return ch == '/' || ch == '-'; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Of, DocsCommands, testing::ValuesIn(all_pages()), test_name);

TEST(Docs, ListNothingThatIsGone) {
    std::vector<Block> blocks;
    for (const std::string& page : all_pages())
        for (const Block& block : blocks_of_page(page))
            blocks.push_back(block);
    for (const Entry& entry : entries)
        EXPECT_EQ(std::count_if(blocks.begin(), blocks.end(),
                                [&](const Block& block) { return entry_of(block) == &entry; }),
                  1)
            << entry.page << ": " << entry.begins;
}

TEST(Docs, RunEveryExampleScript) {
    std::string commands;
    for (const std::string& page : all_pages())
        for (const Block& block : blocks_of_page(page))
            if (is_run(block))
                commands += block.text;
    for (const fs::directory_entry& entry : fs::directory_iterator(VELMORA_SOURCE "/docs/examples"))
        EXPECT_NE(commands.find("docs/examples/" + entry.path().filename().string()),
                  std::string::npos)
            << entry.path();
}
