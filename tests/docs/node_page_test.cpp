// SPDX-License-Identifier: BSD-3-Clause

// What docs/node.md says about the knobs, against the node itself.
#include "tests/docs/knob_table.h"
#include "tests/docs/page.h"
#include "tests/tools/program.h"
#include "tools/comp/knobs.h"
#include "tools/comp/star_node.h"

#include <set>

using namespace velmora;
using namespace velmora::host;

namespace fs = std::filesystem;

static std::string between(const std::string& text, const std::string& start,
                           const std::string& end) {
    const std::size_t first = text.find(start), last = text.find(end);
    if (first == std::string::npos || last == std::string::npos)
        return "(the marks are missing)";
    return text.substr(first + start.size(), last - first - start.size());
}

TEST(NodePage, ShowsTheKnobsThatTheNodeHas) {
    EXPECT_EQ(between(text_of_page("docs/node.md"), "<!-- knobs -->\n", "<!-- end of knobs -->\n"),
              knob_table())
        << "scripts/knob-table brings the page up to date";
}

TEST(NodePage, TellsOfEveryKnobInThePanelsOrder) {
    const std::string text = text_of_page("docs/node.md");
    Graph graph(plugin_path());
    std::size_t before = 0;
    for (const HostKnob* const knob : own_knobs(create_star_node(graph))) {
        const std::size_t at = text.find("\n### " + knob->name() + "\n");
        ASSERT_NE(at, std::string::npos) << knob->name();
        EXPECT_GT(at, before) << knob->name();
        before = at;
    }
}

// ---- pictures ----------------------------------------------------------------------------------

static const std::uintmax_t largest_picture = 40000; // bytes

// Names of the form pictures/node-….png in the page.
static std::set<std::string> shown_pictures() {
    static const std::string start = "(pictures/";
    const std::string text = text_of_page("docs/node.md");
    std::set<std::string> names;
    for (std::size_t at = 0; (at = text.find(start, at)) != std::string::npos;) {
        at += start.size();
        names.insert(text.substr(at, text.find(')', at) - at));
    }
    return names;
}

static std::set<std::string> node_pictures_in(const fs::path& folder) {
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (entry.path().filename().string().compare(0, 5, "node-") == 0)
            names.insert(entry.path().filename().string());
    return names;
}

TEST(NodePage, ShowsThePicturesThatAreThere) {
    const fs::path folder = VELMORA_SOURCE "/docs/pictures";
    EXPECT_EQ(shown_pictures(), node_pictures_in(folder));
    for (const std::string& name : shown_pictures())
        EXPECT_LE(fs::file_size(folder / name), largest_picture) << name;
}

class NodePictures : public Program {};

TEST_F(NodePictures, AreMadeByTheirScript) {
    const std::string command = VELMORA_SOURCE "/scripts/node-pictures " VELMORA_PROGRAM " '" +
                                folder.file("") + "' 2>'" + folder.file("said") + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(folder.read("said"), "");
    EXPECT_EQ(node_pictures_in(folder.path()), shown_pictures());
    // A knob that has a pair changes the picture.
    std::set<std::string> different;
    for (const std::string& name : shown_pictures())
        different.insert(folder.read(name));
    EXPECT_EQ(different.size(), shown_pictures().size());
}
