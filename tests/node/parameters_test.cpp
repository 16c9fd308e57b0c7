// SPDX-License-Identifier: BSD-3-Clause

// How each knob reaches what the renderer takes.
#include "host/runtime/script_loader.h"
#include "tests/node/comp.h"
#include "tests/node/sky.h"

#include <functional>

using namespace node_test;

namespace {

class NodeParameters : public testing::Test {
protected:
    Comp comp;

    const VelmoraNK& with(const std::string& knob, const std::string& value) {
        comp.set(knob, value);
        return inside(comp.validated());
    }
};

} // namespace

TEST_F(NodeParameters, ReachTheRendererAsTheyStand) {
    const struct {
        const char* knob;
        double StarRendererData::*field;
        double by_default;
    } rows[] = {
        {"brightness", &StarRendererData::brightness, 5},
        {"saturation", &StarRendererData::saturation, 0.4},
        {"tint_strength", &StarRendererData::tint_strength, 0},
        {"lum_max", &StarRendererData::lum_max, 0.5},
        {"lum_threshold", &StarRendererData::lum_threshold, 0.0001},
        {"star_size", &StarRendererData::star_size, 2.5},
        {"parallax", &StarRendererData::parallax, 100},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.knob);
        EXPECT_EQ(inside(comp.validated()).render_data.*row.field, row.by_default);
        EXPECT_EQ(with(row.knob, "0.3").render_data.*row.field, 0.3);
        // Beyond the slider's ends, too.
        EXPECT_EQ(with(row.knob, "-1234.5").render_data.*row.field, -1234.5);
        EXPECT_EQ(with(row.knob, "0").render_data.*row.field, 0);
    }
}

TEST_F(NodeParameters, TurnTheBiasIntoAnExponent) {
    const struct {
        const char* bias;
        double exponent;
    } rows[] = {{"1", 1},   {"0.5", 2},  {"4", 0.25},    {"3", 1.0 / 3},
                {"0", 100}, {"-0", 100}, {"-2.5", -0.4}, {"0.001", 1 / 0.001}};
    for (const auto& row : rows)
        EXPECT_EQ(with("bias", row.bias).render_data.bias_exponent, row.exponent) << row.bias;
}

TEST_F(NodeParameters, GiveTheSpotItsShapeFromSizeAndAspect) {
    EXPECT_EQ(inside(comp.validated()).render_data.spot_width, 2.5);
    EXPECT_EQ(with("star_aspect", "3").render_data.spot_width, 7.5);
    EXPECT_EQ(inside(comp.validated()).render_data.star_size, 2.5) << "the height stays";
    EXPECT_EQ(with("star_size", "0.1").render_data.spot_width, 0.1 * 3.0);
    EXPECT_EQ(with("star_aspect", "0").render_data.spot_width, 0);
}

TEST_F(NodeParameters, NarrowTheTintToFloats) {
    const Color3& tint = with("tint_color", "0.1 0.7 1e-50").render_data.tint_color;
    EXPECT_EQ(tint[0], 0.1f);
    EXPECT_EQ(tint[1], 0.7f);
    EXPECT_EQ(tint[2], 0.0f);
}

TEST_F(NodeParameters, ChooseTheProjection) {
    const struct {
        const char* item;
        int place, mode;
    } rows[] = {{"Hemispherical", 1, 1},
                {"\"Azimuthal Equidistant\"", 2, 2},
                {"Perspective", 0, 0},
                {"1", 1, 1},
                {"3", 3, 0},
                {"-1", -1, 0},
                {"2", 2, 2},
                {"2147483647", 2147483647, 0}};
    for (const auto& row : rows) {
        const VelmoraNK& node = with("projection", row.item);
        EXPECT_EQ(node.projection, row.place) << row.item;
        EXPECT_EQ(node.projection_mode, row.mode) << row.item;
        EXPECT_EQ(int(node.render_data.projection), row.mode) << row.item;
    }
}

TEST_F(NodeParameters, SwitchTheDistancesOnAndOff) {
    EXPECT_TRUE(inside(comp.validated()).render_data.threed);
    EXPECT_FALSE(with("threed", "false").render_data.threed);
    EXPECT_TRUE(with("threed", "true").render_data.threed);
}

TEST_F(NodeParameters, DrawEveryLine) {
    EXPECT_EQ(int(inside(comp.validated()).render_data.lines), 0);
    EXPECT_EQ(int(with("projection", "2").render_data.lines), 0);
}

TEST_F(NodeParameters, AreThoseOfTheFrame) {
    comp.set("brightness", "{curve x1 1 x11 2}");
    EXPECT_EQ(inside(comp.validated(1)).render_data.brightness, 1);
    EXPECT_EQ(inside(comp.validated(11)).render_data.brightness, 2);
}

// One camera record per sample, whether a camera is there or not.
TEST_F(NodeParameters, DecideHowManySamplesThereAre) {
    EXPECT_EQ(inside(comp.validated()).cameras.len(), 2u);
    EXPECT_EQ(with("blur_segs", "3").cameras.len(), 4u);
    EXPECT_EQ(with("blur_segs", "0").cameras.len(), 1u);
    EXPECT_EQ(with("blur_segs", "-5").cameras.len(), 1u);
    comp.connect_camera();
    EXPECT_EQ(with("blur_segs", "6").cameras.len(), 7u);
}

TEST_F(NodeParameters, LeaveThePictureAloneWhereNothingReadsThem) {
    const ScratchFolder folder;
    comp.set_star_file(folder.write("sky", sky(40)));
    const Pixels plain = comp.picture();
    ASSERT_FALSE(plain.is_black());
    comp.set("anamorphic_dof", "true");
    EXPECT_TRUE(inside(comp.validated()).anamorphic_dof);
    EXPECT_TRUE(same_bits(comp.picture(), plain));

    Node& parent = comp.graph.create("Axis2");
    set(parent, "rotate", "10 20 30");
    ASSERT_TRUE(comp.stars.set_input(0, &parent));
    EXPECT_TRUE(same_bits(comp.picture(), plain)) << "the parent input";
}

// ---- format ------------------------------------------------------------------------------------

TEST_F(NodeParameters, TakeTheScriptsFormatUntilOneIsChosen) {
    const DD::Image::Iop& image = *comp.validated().iop();
    EXPECT_EQ(image.format(), DD::Image::Format(24, 16));
    EXPECT_EQ(image.full_size_format(), DD::Image::Format(24, 16));
}

// The box is the format's image area; the picture is of the whole file.
TEST_F(NodeParameters, GiveTheOutputItsFormat) {
    comp.set("format", "\"40 30 4 2 36 26 2 wide\"");
    DD::Image::Op& op = comp.validated();
    const DD::Image::Iop& image = *op.iop();
    EXPECT_EQ(image.format(), DD::Image::Format(40, 30, 4, 2, 36, 26, 2));
    EXPECT_EQ(image.full_size_format(), DD::Image::Format(40, 30, 4, 2, 36, 26, 2));
    EXPECT_TRUE(image.info() == DD::Image::Box(4, 2, 36, 26));
    EXPECT_EQ(inside(op).render_data.right, 40.0 / 30);

    const velmora::host::Opened opened(op);
    ASSERT_NE(inside(op).image, nullptr);
    EXPECT_EQ(inside(op).image->width, 40);
    EXPECT_EQ(inside(op).image->height, 30);
    EXPECT_EQ(inside(op).image->format, Kess::ImageSpec::BGRA_FLOAT);
}

TEST_F(NodeParameters, GiveTheOutputRedGreenBlueAndAlpha) {
    const DD::Image::Iop& image = *comp.validated().iop();
    EXPECT_TRUE(DD::Image::ChannelSet(image.channels()) ==
                DD::Image::ChannelSet(DD::Image::Mask_RGBA));
    EXPECT_TRUE(DD::Image::ChannelSet(image.out_channels()) ==
                DD::Image::ChannelSet(DD::Image::Mask_RGBA));
}

// An op keeps its values until its knobs are stored again.
TEST_F(NodeParameters, StayAsTheyWereValidatedWhileTheKnobsMoveOn) {
    comp.set("format", "\"24 16\"");
    DD::Image::Op& op = comp.validated();
    comp.set("format", "\"8 6\"");
    comp.set("brightness", "1");
    const velmora::host::Opened opened(op);
    EXPECT_EQ(opened.iop().format(), DD::Image::Format(24, 16));
    EXPECT_EQ(inside(op).image->width, 24);
    EXPECT_EQ(inside(op).image->height, 16);
    EXPECT_EQ(inside(op).render_data.brightness, 5);
}

TEST_F(NodeParameters, StayAsTheyWereValidatedWhileTheProjectMovesOn) {
    DD::Image::Op& op = comp.validated();
    comp.graph.set_format(DD::Image::Format(8, 6));
    const velmora::host::Opened opened(op);
    EXPECT_EQ(opened.iop().format(), DD::Image::Format(24, 16));
    EXPECT_EQ(inside(op).image->width, 24);
}

// ---- saved scripts -----------------------------------------------------------------------------

static const VelmoraNK& loaded(velmora::host::Graph& graph,
                               std::unique_ptr<velmora::host::OpTree>& tree,
                               const std::string& knobs) {
    const std::string text =
        "Root {\n format \"24 16 small\"\n}\nVelmoraNK {\n inputs 0\n" + knobs + "}\n";
    const velmora::host::LoadedScript script = velmora::host::load_script(
        velmora::host::Script::parse(text, "shot.nk"), "VelmoraNK", graph);
    tree = std::make_unique<velmora::host::OpTree>(*script.nodes.at(0));
    DD::Image::Op& op = tree->at(1);
    velmora::host::validate(op);
    return inside(op);
}

TEST(NodeOfAScript, RendersAProjectionThatIsNoneAsPerspective) {
    for (const char* const index : {"3", "7", "-1", "-2147483647"}) {
        velmora::host::Graph graph(plugin_path());
        std::unique_ptr<velmora::host::OpTree> tree;
        const VelmoraNK& node = loaded(graph, tree, std::string(" projection ") + index + "\n");
        EXPECT_EQ(node.projection, std::stoi(index));
        EXPECT_EQ(node.projection_mode, 0) << index;
        EXPECT_EQ(int(node.render_data.projection), 0) << index;
    }
}

TEST(NodeOfAScript, HasTheScriptsValues) {
    velmora::host::Graph graph(plugin_path());
    std::unique_ptr<velmora::host::OpTree> tree;
    const VelmoraNK& node =
        loaded(graph, tree,
               " brightness 7.5\n bias 0\n tint_color {0.25 0.5 1}\n"
               " blur_segs 4\n shutter 1\n projection \"Azimuthal Equidistant\"\n"
               " threed false\n anamorphic_dof true\n translate {1 2 3}\n");
    EXPECT_EQ(node.render_data.brightness, 7.5);
    EXPECT_EQ(node.render_data.bias_exponent, 100);
    EXPECT_EQ(node.render_data.tint_color[1], 0.5f);
    EXPECT_EQ(node.cameras.len(), 5u);
    EXPECT_EQ(int(node.render_data.projection), 2);
    EXPECT_FALSE(node.render_data.threed);
    EXPECT_TRUE(node.anamorphic_dof);
    EXPECT_EQ(node.transform.a13, 2);
}
