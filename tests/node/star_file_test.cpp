// SPDX-License-Identifier: BSD-3-Clause

// The star database through the node's life: when it is opened, told of, kept, walked and let go.
#include "tests/message_of.h"
#include "tests/node/comp.h"
#include "tests/node/sky.h"

#include <filesystem>

using namespace node_test;
using DD::Image::Op;

namespace {

// What of a folder this process holds on to: mapped ranges and open descriptors.
int held_of(const std::string& folder) {
    int held = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        held += line.find(folder) != std::string::npos;
    for (const auto& fd : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // the one that lists them
        const std::string target = std::filesystem::read_symlink(fd.path(), gone).string();
        held += target.find(folder) != std::string::npos;
    }
    return held;
}

class NodeStarFile : public testing::Test {
protected:
    const ScratchFolder folder;
    Comp comp;

    int held() const { return held_of(folder.path()); }

    // Another file of that name: what is mapped stays as it was.
    void replace(const std::string& name, const std::string& bytes) const {
        std::filesystem::rename(folder.write(name + ".new", bytes), folder.file(name));
    }

    std::string missing(const std::string& path) const {
        return "Star database file '" + path + "' is missing or invalid";
    }

    // Each validation as it is told to the user: "" where nothing is.
    std::string told() {
        Op& op = comp.tree.at(1);
        op.invalidate();
        const int before = op.error_count();
        op.validate(true);
        EXPECT_LE(op.error_count(), before + 1);
        return op.error_count() > before ? op.error_message() : "";
    }

    bool draws() { return !comp.picture().is_black(); }
};

const char* const bad_magic =
    "error in star database file in <StarRenderer::StarRenderer(const StarRendererData&, const "
    "StarFramebuffer&, StarInput&, const Array<camera>&)> (stars:518)";

} // namespace

TEST_F(NodeStarFile, IsNoneWithoutAPath) {
    EXPECT_EQ(told(), "");
    EXPECT_EQ(inside(comp.tree.at(1)).star_input, nullptr);
    EXPECT_FALSE(draws());
}

// What a host that has no text for the knob leaves in the member.
TEST_F(NodeStarFile, IsNoneWithoutAText) {
    class NoTexts : public DD::Image::Knob_Closure {
    public:
        bool makeKnobs() const override { return false; }
        int getKnobCount() const override { return 0; }
        DD::Image::Knob* made_last() override { return nullptr; }
        DD::Image::Knob* declare(const DD::Image::KnobSpec& spec) override {
            if (spec.store == DD::Image::StringPtr)
                *static_cast<const char**>(spec.data) = nullptr;
            return nullptr;
        }
    };
    comp.set_star_file(folder.write("sky", sky(5)));
    Op& op = comp.validated();
    ASSERT_NE(inside(op).star_input, nullptr);
    NoTexts host;
    op.knobs(host);
    ASSERT_EQ(inside(op).starfile, nullptr);
    op.invalidate();
    op.validate(true);
    EXPECT_FALSE(op.has_error());
    EXPECT_EQ(inside(op).star_input, nullptr);
    EXPECT_EQ(held(), 0);
}

TEST_F(NodeStarFile, IsOpenedByTheFirstValidationWhetherForRealOrNot) {
    comp.set_star_file(folder.write("sky", sky(5)));
    Op& op = comp.tree.at(1);
    EXPECT_EQ(held(), 0);
    op.validate(false);
    ASSERT_NE(inside(op).star_input, nullptr);
    EXPECT_EQ(inside(op).star_input->count, 6u);
    EXPECT_STREQ(inside(op).starfile_loaded.str, folder.file("sky").c_str());
    EXPECT_EQ(held(), 1) << "mapped once, no descriptor left";
}

TEST_F(NodeStarFile, StaysOpenUntilThePathChanges) {
    comp.set_star_file(folder.write("sky", sky(5)));
    const StarInput* const first = inside(comp.validated()).star_input;
    for (int frame = 1; frame < 6; frame++) {
        comp.set("brightness", std::to_string(frame));
        Op& op = comp.validated(frame);
        {
            const velmora::host::Opened opened(op);
            EXPECT_EQ(held(), 1);
        }
        EXPECT_EQ(inside(op).star_input, first);
        EXPECT_EQ(held(), 1) << "closing the picture keeps the stars";
    }
    comp.set_star_file(folder.write("other", sky(9)));
    EXPECT_EQ(inside(comp.validated()).star_input->count, 10u);
    EXPECT_EQ(held(), 1);
    comp.set_star_file("");
    EXPECT_EQ(inside(comp.validated()).star_input, nullptr);
    EXPECT_EQ(held(), 0);
}

TEST_F(NodeStarFile, GoesWithTheNode) {
    {
        Comp other;
        other.set_star_file(folder.write("sky", sky(5)));
        const velmora::host::Opened opened(other.validated());
        EXPECT_EQ(held(), 1);
    }
    EXPECT_EQ(held(), 0);
}

// Only the text counts: what has become of the file is not looked at.
TEST_F(NodeStarFile, IsNotReadAgainWhileTheTextIsTheSame) {
    comp.set_star_file(folder.write("sky", sky(20, 1)));
    const Pixels first = comp.picture();
    replace("sky", sky(20, 2));
    EXPECT_EQ(told(), "");
    EXPECT_TRUE(same_bits(comp.picture(), first));
    std::filesystem::remove(folder.file("sky"));
    EXPECT_EQ(told(), "");
    EXPECT_TRUE(same_bits(comp.picture(), first));
    EXPECT_EQ(held(), 1);
}

TEST_F(NodeStarFile, IsReadAgainUnderAnotherSpelling) {
    comp.set_star_file(folder.write("sky", sky(20, 1)));
    const Pixels first = comp.picture();
    replace("sky", sky(20, 2));
    comp.set_star_file(folder.path() + "/./sky");
    const Pixels second = comp.picture();
    EXPECT_FALSE(same_bits(first, second));
    Comp fresh;
    fresh.set_star_file(folder.file("sky"));
    EXPECT_TRUE(same_bits(fresh.picture(), second));
}

// ---- files that cannot be opened ---------------------------------------------------------------

TEST_F(NodeStarFile, IsToldOfOnceWhenItIsMissing) {
    const std::string path = folder.file("sky");
    comp.set_star_file(path);
    Op& op = comp.tree.at(1);
    EXPECT_THROW(velmora::host::validate(op), velmora::host::OpFailure);
    EXPECT_EQ(op.error_message(), missing(path));
    EXPECT_EQ(op.error_count(), 1);
    EXPECT_EQ(told(), "");
    EXPECT_FALSE(comp.tree.at(1).has_error());
    EXPECT_FALSE(draws());
    folder.write("sky", sky(20));
    EXPECT_EQ(told(), "") << "not tried again";
    EXPECT_EQ(inside(op).star_input, nullptr);
    EXPECT_FALSE(draws());

    comp.set_star_file(folder.path() + "//sky");
    EXPECT_EQ(told(), "");
    EXPECT_TRUE(draws());
    EXPECT_EQ(op.error_count(), 1);
}

TEST_F(NodeStarFile, IsToldOfWithTheNodesName) {
    comp.set_star_file("/no/such file");
    try {
        comp.validated();
        FAIL() << "nothing was thrown";
    } catch (const velmora::host::OpFailure& failure) {
        EXPECT_STREQ(failure.what(),
                     "VelmoraNK1: Star database file '/no/such file' is missing or invalid");
    }
}

TEST_F(NodeStarFile, IsToldOfAsItIsSpelt) {
    for (const char* const path : {"/no/%s%n%d", "relative", " ", "/no/\xc3\xa9t\xc3\xa9"}) {
        comp.set_star_file(path);
        EXPECT_EQ(told(), missing(path));
        EXPECT_EQ(told(), "");
    }
    const std::string path = "/no/" + std::string(5000, 'x');
    comp.set_star_file(path);
    EXPECT_EQ(told(), missing(path));
}

TEST_F(NodeStarFile, IsToldOfWhenItIsNoDatabaseAtAll) {
    for (const std::string& path :
         {folder.write("empty", ""), folder.write("seven", "VELMORA"), folder.folder("folder")}) {
        comp.set_star_file(path);
        EXPECT_EQ(told(), missing(path));
        EXPECT_EQ(held(), 0);
        EXPECT_FALSE(draws());
    }
}

TEST_F(NodeStarFile, IsLetGoWhenTheNextOneFails) {
    comp.set_star_file(folder.write("sky", sky(20)));
    EXPECT_TRUE(draws());
    comp.set_star_file(folder.file("gone"));
    EXPECT_EQ(told(), missing(folder.file("gone")));
    EXPECT_EQ(held(), 0);
    EXPECT_FALSE(draws());
    comp.set_star_file(folder.file("sky"));
    EXPECT_EQ(told(), "");
    EXPECT_TRUE(draws());
    comp.set_star_file(folder.file("gone"));
    EXPECT_EQ(told(), missing(folder.file("gone"))) << "another text in between: a new attempt";
}

TEST_F(NodeStarFile, IsNotMissedWhenItsPathIsTakenAway) {
    comp.set_star_file(folder.file("gone"));
    EXPECT_EQ(told(), missing(folder.file("gone")));
    comp.set_star_file("");
    EXPECT_EQ(told(), "");
    EXPECT_FALSE(comp.tree.at(1).has_error());
    EXPECT_FALSE(draws());
}

// ---- files that open but are not databases--------------------------------------------------------

TEST_F(NodeStarFile, OfAnotherMagicFailsAtEveryOpening) {
    comp.set_star_file(folder.write("sky", stars_test::sky_bytes("VELMORA3", scattered_stars(20))));
    Op& op = comp.validated();
    EXPECT_FALSE(op.has_error());
    for (int opening = 0; opening < 3; opening++) {
        EXPECT_EQ(message_of([&] { velmora::host::Opened opened(op); }), bad_magic);
        EXPECT_FALSE(op.opened());
        EXPECT_FALSE(op.has_error());
        ASSERT_NE(inside(op).image, nullptr) << "blank, as it was made";
        const Kess::Image& image = *inside(op).image;
        EXPECT_EQ(std::string(image.data, image.stride * u32(image.height)),
                  std::string(image.stride * u32(image.height), '\0'));
    }
    EXPECT_EQ(held(), 1);

    comp.set_star_file(folder.write("good", sky(20)));
    EXPECT_TRUE(draws());
}

// The second record is no header, however much it looks like one.
TEST_F(NodeStarFile, OfAnotherMagicFailsAgainBeforeARecordThatLooksLikeAHeader) {
    comp.set_star_file(
        folder.write("sky", stars_test::header_bytes("NOTSTARS") + sky(20, 1, "VELMORA1")));
    Op& op = comp.validated();
    for (int opening = 0; opening < 3; opening++)
        EXPECT_EQ(message_of([&] { velmora::host::Opened opened(op); }), bad_magic);
}

TEST_F(NodeStarFile, OfTheHeaderAloneDrawsNothingAndIsRewound) {
    comp.set_star_file(folder.write("sky", stars_test::header_bytes()));
    for (int frame = 0; frame < 3; frame++) {
        Op& op = comp.validated();
        const auto& input = static_cast<const MMAPStarFile&>(*inside(op).star_input);
        EXPECT_EQ(input.count, 1u);
        const velmora::host::Opened opened(op);
        EXPECT_EQ(static_cast<const void*>(input.cursor), input.mapping.data);
        EXPECT_TRUE(pulled(opened.iop()).is_black());
    }
}

TEST_F(NodeStarFile, OfTheMagicAloneDrawsNothing) {
    comp.set_star_file(folder.write("sky", "VELMORA2"));
    EXPECT_EQ(told(), "");
    EXPECT_EQ(inside(comp.tree.at(1)).star_input->count, 0u);
    EXPECT_FALSE(draws());
    EXPECT_FALSE(draws());
}

// ---- files that are fine -----------------------------------------------------------------------

TEST_F(NodeStarFile, IsRewoundAfterEveryPicture) {
    comp.set_star_file(folder.write("sky", sky(30)));
    const Pixels first = comp.picture();
    EXPECT_FALSE(first.is_black());
    for (int frame = 2; frame < 5; frame++) {
        EXPECT_TRUE(same_bits(comp.picture(frame), first));
        const auto& input =
            static_cast<const MMAPStarFile&>(*inside(comp.tree.at(frame)).star_input);
        EXPECT_EQ(static_cast<const void*>(input.cursor), input.mapping.data);
    }
}

// Without light no record but the header is taken, and the header is taken back.
TEST_F(NodeStarFile, IsRewoundAfterAPictureWithoutLight) {
    comp.set_star_file(folder.write("sky", sky(30)));
    const Pixels lit = comp.picture();
    comp.set("brightness", "0");
    EXPECT_FALSE(draws());
    comp.set("brightness", "5");
    EXPECT_TRUE(same_bits(comp.picture(), lit));
}

// Bytes after the last whole record are not a star, even when most of one is there.
TEST_F(NodeStarFile, IsDrawnUpToItsLastWholeRecord) {
    const std::string whole = sky(30);
    comp.set_star_file(folder.write("whole", whole));
    const Pixels expected = comp.picture();
    comp.set_star_file(folder.write("more", whole + sky(1, 2).substr(32, 31)));
    EXPECT_TRUE(same_bits(comp.picture(), expected));
    comp.set_star_file(folder.write("fewer", whole.substr(0, whole.size() - 1)));
    EXPECT_EQ(inside(comp.validated()).star_input->count, 30u);
}

TEST_F(NodeStarFile, HasDistancesInItsSecondVersionOnly) {
    Node& camera = comp.connect_camera();
    set(camera, "translate", "0.05 0 0");
    comp.set("parallax", "0");
    comp.set_star_file(folder.write("one", sky(30, 1, "VELMORA1")));
    const Pixels far = comp.picture();
    comp.set_star_file(folder.write("two", sky(30, 1, "VELMORA2")));
    const Pixels near = comp.picture();
    EXPECT_FALSE(same_bits(near, far));
    comp.set("threed", "false");
    EXPECT_TRUE(same_bits(comp.picture(), far));
    comp.set("threed", "true");
    comp.set("parallax", "100"); // crushes all that is farther away than 1
    EXPECT_TRUE(same_bits(comp.picture(), far));
}
