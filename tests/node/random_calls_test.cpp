// SPDX-License-Identifier: BSD-3-Clause

// The node in the hands of a host without a plan: any call that a host may make, in any order, with
// files that come, go and change beside it.
#include "tests/message_of.h"
#include "tests/node/comp.h"
#include "tests/node/sky.h"

#include <filesystem>
#include <map>
#include <optional>

using namespace node_test;
using DD::Image::Iop;
using DD::Image::Op;
using stars_test::Dice;

namespace {

const char* const files[] = {"one", "two", "three"};

struct Choice {
    const char* knob;
    std::vector<const char*> values;
};

const std::vector<Choice> star_choices = {
    {"format", {"\"24 16\"", "\"9 14\"", "\"16 16 2 3 12 10\"", "\"1 1\""}},
    {"brightness", {"5", "0", "-1", "1e30", "{curve L x1 0 x3 8}"}},
    {"bias", {"1", "0", "-1", "3"}},
    {"saturation", {"0.4", "0", "2"}},
    {"tint_strength", {"0", "1", "-3"}},
    {"tint_color", {"0 0 0", "1 0.5 0.25", "1e30 -1e30 0"}},
    {"lum_max", {"0.5", "1e30", "-1"}},
    {"lum_threshold", {"0.0001", "-1", "5"}},
    {"star_size", {"2.5", "0", "300", "-2", "1e9"}},
    {"star_aspect", {"1", "0", "4"}},
    {"blur_segs", {"1", "0", "-1", "3", "6"}},
    {"shutter", {"0.5", "0", "2", "-1"}},
    {"shutter_offset", {"0", "-1", "0.25"}},
    {"projection", {"Perspective", "Hemispherical", "\"Azimuthal Equidistant\"", "7"}},
    {"threed", {"true", "false"}},
    {"parallax", {"100", "0", "-50"}},
    {"anamorphic_dof", {"true", "false"}},
    {"rotate", {"0 0 0", "10 20 30", "0 180 0", "0 {curve L x1 0 x3 40} 0"}},
    {"translate", {"0 0 0", "0.1 0.2 0.3", "1e30 0 0"}},
};

const std::vector<Choice> camera_choices = {
    {"focal", {"50", "20", "0", "-10", "{curve L x1 10 x3 60}"}},
    {"haperture", {"24.576", "0", "{curve L x1 10 x3 40}"}},
    {"vaperture", {"18.672", "0", "-20"}},
    {"rotate", {"0 0 0", "{curve L x1 -10 x3 10} 5 0"}},
    {"translate", {"0 0 0", "0 0 {curve L x1 0 x3 -2}"}},
};

// What nodes are to look like, so that it can be had a second time.
struct Plan {
    std::map<std::string, std::string> stars, camera, axis;
    bool camera_connected = false, axis_connected = false, axis_over_camera = false;
};

class Nodes {
public:
    velmora::host::Graph graph{plugin_path()};
    Node& stars = graph.create("VelmoraNK");
    Node& camera = graph.create("Camera2");
    Node& axis = graph.create("Axis2");

    Nodes() { graph.set_format(DD::Image::Format(12, 10)); }

    void connect(const Plan& plan) {
        EXPECT_TRUE(stars.set_input(0, plan.axis_connected ? &axis : nullptr));
        EXPECT_TRUE(stars.set_input(1, plan.camera_connected ? &camera : nullptr));
        EXPECT_TRUE(camera.set_input(0, plan.axis_over_camera ? &axis : nullptr));
    }
};

// A picture, or what was thrown in its place.
struct Outcome {
    std::string thrown;
    Pixels pixels;
};

Outcome rendered(Op& op) {
    op.validate(true);
    Iop& iop = *op.iop();
    iop.request(DD::Image::Mask_RGBA, 1);
    Outcome outcome = {message_of([&] { iop.open(); }), Pixels(iop.info())};
    if (op.opened())
        for (int y = iop.y(); y < iop.t(); y++) {
            DD::Image::Row row(iop.x(), iop.r());
            iop.get(y, iop.x(), iop.r(), DD::Image::Mask_RGBA, row);
            outcome.pixels.take(row, y, iop.x(), iop.r());
        }
    op.close();
    return outcome;
}

int mapped_of(const std::string& folder) {
    int count = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        count += line.find(folder) != std::string::npos;
    return count;
}

// Beside the node runs an account of which database it must hold: the contents of the file at the
// moment when its path was first validated.
class Wanderer {
public:
    Wanderer(const ScratchFolder& folder, unsigned seed)
        : folder(folder), dice(seed), nodes(std::make_unique<Nodes>()) {
        for (const char* const file : files)
            change_file(file);
        grow_tree();
    }

    ~Wanderer() { drop_tree(); }

    void step() {
        switch (dice.below(17)) {
        case 0:
            return change_file(files[dice.below(3)]);
        case 1:
            return choose_file();
        case 2:
        case 3:
            return turn_knob(nodes->stars, plan.stars, star_choices);
        case 4:
            return turn_knob(nodes->camera, plan.camera, camera_choices);
        case 5:
            return connect();
        case 6:
        case 7:
        case 8:
            return go_to_frame();
        case 9:
            return validate(false);
        case 10:
            return validate(true);
        case 11:
            op->invalidate();
            return;
        case 12:
        case 13:
            return open();
        case 14:
            return pull();
        case 15:
            if (dice.below(3) == 0)
                tree->abort();
            return close();
        default:
            return destroy();
        }
    }

    // The last frame, and the same of nodes that have seen nothing but the end of it.
    void expect_as_fresh() {
        go_to_frame();
        account_of_validation();
        const Outcome worn = rendered(*op);
        EXPECT_EQ(op->error_count(), failures);

        Nodes others;
        for (const auto& [knob, value] : plan.stars)
            set(others.stars, knob, value);
        for (const auto& [knob, value] : plan.camera)
            set(others.camera, knob, value);
        others.connect(plan);
        if (held) {
            folder.write("fresh", *held);
            others.stars.knob("starfile")->set_text(folder.file("fresh").c_str());
        }
        velmora::host::OpTree other_tree(others.stars);
        const Outcome fresh = rendered(other_tree.at(op->outputContext()));
        EXPECT_EQ(worn.thrown, fresh.thrown);
        EXPECT_TRUE(same_bits(worn.pixels, fresh.pixels));
        lit = !fresh.pixels.is_black() && fresh.thrown == "(no StrXception)";
    }

    bool lit = false; // whether the last frame had anything to compare

private:
    const ScratchFolder& folder;
    Dice dice;
    std::unique_ptr<Nodes> nodes;
    std::unique_ptr<velmora::host::OpTree> tree;
    Op* op = nullptr;
    Plan plan;

    std::string chosen;              // the knob's text
    std::string stored;              // what the op was given of it
    std::string tried;               // the path of the last attempt to open
    std::optional<std::string> held; // the database that came of it
    int failures = 0;                // in the life of the op

    // Whole files only: the old one stays as it was for those who have it mapped.
    void change_file(const std::string& name) {
        static const char* const magics[] = {"VELMORA1", "VELMORA2"};
        std::string bytes;
        switch (dice.below(9)) {
        case 0:
            std::filesystem::remove(folder.file(name));
            return;
        case 1:
            bytes = std::string(std::size_t(dice.below(9)), 'V');
            break;
        case 2:
            bytes = sky(5, 1, "NOTSTARS");
            break;
        case 3:
            bytes = stars_test::header_bytes();
            break;
        case 4: // records of any bits
            bytes = stars_test::header_bytes(magics[dice.below(2)]);
            for (int i = 0; i < 8 * 32 + 7; i++)
                bytes += char(dice.below(256));
            break;
        default:
            bytes = sky(1 + dice.below(20), unsigned(dice.below(1000)), magics[dice.below(2)]);
        }
        folder.write("new", bytes);
        std::filesystem::rename(folder.file("new"), folder.file(name));
    }

    void choose_file() {
        const int choice = dice.below(8);
        chosen = choice == 0   ? ""
                 : choice == 1 ? folder.file("never")
                               : folder.file(files[choice % 3]);
        nodes->stars.knob("starfile")->set_text(chosen.c_str());
    }

    void turn_knob(Node& node, std::map<std::string, std::string>& values,
                   const std::vector<Choice>& choices) {
        const Choice& choice = choices[std::size_t(dice.below(int(choices.size())))];
        const char* const value = choice.values[std::size_t(dice.below(int(choice.values.size())))];
        set(node, choice.knob, value);
        values[choice.knob] = value;
    }

    void connect() {
        bool* const wires[] = {&plan.camera_connected, &plan.axis_connected,
                               &plan.axis_over_camera};
        bool& wire = *wires[dice.below(3)];
        wire = !wire;
        nodes->connect(plan);
        // Earlier inputs point to ops of other nodes; a host sets the inputs again.
        go_to_frame();
    }

    void grow_tree() {
        tree = std::make_unique<velmora::host::OpTree>(nodes->stars);
        tried = "";
        held.reset();
        failures = 0;
        go_to_frame();
    }

    void drop_tree() {
        tree.reset();
        EXPECT_EQ(mapped_of(folder.path()), 0);
    }

    void go_to_frame() {
        op = &tree->at(1 + dice.below(3));
        stored = chosen;
    }

    void account_of_validation() {
        if (stored == tried)
            return;
        tried = stored;
        held.reset();
        if (stored.empty())
            return;
        const std::string name = std::filesystem::path(stored).filename().string();
        if (std::filesystem::exists(stored) && folder.read(name).size() >= 8)
            held = folder.read(name);
        else
            failures++;
    }

    void validate(bool for_real) {
        account_of_validation();
        op->validate(for_real);
        EXPECT_EQ(op->error_count(), failures);
        EXPECT_EQ(mapped_of(folder.path()), held ? 1 : 0);
        if (op->has_error()) {
            EXPECT_EQ(op->error_message(),
                      "Star database file '" + stored + "' is missing or invalid");
        }
    }

    void open() {
        validate(true);
        const bool is_sky = !held || held->compare(0, 7, "VELMORA") == 0;
        const std::string thrown = message_without_place_of([&] { op->open(); });
        EXPECT_EQ(thrown, is_sky ? "(no StrXception)" : "error in star database file");
        EXPECT_EQ(op->opened(), is_sky);
    }

    void pull() {
        if (!op->opened())
            return;
        Iop& iop = *op->iop();
        velmora::host::Pulling pulling;
        pulling.threads = 1 + dice.below(2);
        pulling.span = dice.below(6);
        pulling.shuffled = unsigned(dice.below(5));
        try {
            velmora::host::pull_rows(iop, iop.info(), DD::Image::Mask_RGBA, pulling,
                                     [](const DD::Image::Row&, int, int, int) {});
        } catch (const velmora::host::OpFailure&) {
            EXPECT_TRUE(op->has_error()); // told again by the host, which looked past it
        }
    }

    void close() {
        const bool was_open = op->opened();
        op->close();
        // An opening that failed leaves its picture; there is nothing to close then.
        EXPECT_TRUE(!was_open || !inside(*op).image);
    }

    // At any point, open or not; now and then with all that the host has of the comp. Sometimes an
    // op that was only just made goes, too.
    void destroy() {
        std::unique_ptr<Op> young = nodes->stars.make_op();
        if (dice.below(2)) {
            young->setOutputContext(op->outputContext());
            nodes->stars.store_early(*young);
        }
        young.reset();
        if (dice.below(3))
            return;
        drop_tree();
        if (dice.below(2)) {
            nodes = std::make_unique<Nodes>();
            plan = {};
            chosen = "";
        }
        grow_tree();
    }
};

} // namespace

class NodeInAnyOrder : public testing::TestWithParam<unsigned> {};

// 250 walks for each of the seeds.
TEST_P(NodeInAnyOrder, MakesThePictureOfAFreshOne) {
    const ScratchFolder folder;
    int lit = 0;
    for (unsigned walk = 0; walk < 250; walk++) {
        SCOPED_TRACE(walk);
        Wanderer wanderer(folder, 1000 * GetParam() + walk);
        for (int steps = 0; steps < 30; steps++)
            wanderer.step();
        wanderer.expect_as_fresh();
        lit += wanderer.lit;
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(lit, 25) << "most of the pictures compared were black";
}

INSTANTIATE_TEST_SUITE_P(Seeds, NodeInAnyOrder, testing::Range(1u, 5u));
