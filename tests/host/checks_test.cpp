// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/checks.h"

#include "tests/host/comp.h"

using namespace velmora;
using namespace velmora::host;
using namespace DD::Image;

class ChecksTest : public CompTest {
protected:
    Node& misuse = create("Misuse", "M");
    OpTree tree{misuse};

    std::string pulling_error(int y, int x, int r) {
        return error_of([&] {
            const Opened opened(tree.at(1));
            Row row(x, r);
            opened.iop().get(y, x, r, Mask_RGBA, row);
        });
    }

    std::string storing_error() {
        return error_of([&] { tree.at(1); });
    }
};

TEST(Checks, AreOnInBuildsWithAssertions) {
#ifdef NDEBUG
    EXPECT_FALSE(checks_plugins());
#else
    EXPECT_TRUE(checks_plugins());
#endif
}

TEST_F(ChecksTest, FindNothingWhereNothingIsWrong) {
    EXPECT_EQ(pulling_error(3, 2, 6), "no error");
    EXPECT_EQ(pulling_error(-1, -5, 20), "no error");
}

TEST_F(ChecksTest, NameTheSpanThatWasNotKeptTo) {
    set_text(misuse, "way", "write before");
    EXPECT_EQ(pulling_error(3, 2, 6),
              "M (Misuse): engine, for row 3 from 2 to 6, wrote outside the span in rgba.green");
    set_text(misuse, "way", "write after");
    EXPECT_EQ(pulling_error(0, 0, 10),
              "M (Misuse): engine, for row 0 from 0 to 10, wrote outside the span in rgba.alpha");
    // Outside the box the nearest pixels are requested.
    EXPECT_EQ(pulling_error(-7, 8, 30),
              "M (Misuse): engine, for row 0 from 8 to 10, wrote outside the span in rgba.alpha");
}

TEST_F(ChecksTest, ReachThreadsToo) {
    set_text(misuse, "way", "write after");
    const Opened opened(tree.at(1));
    const std::string error = error_of([&] {
        pull_rows(opened.iop(), Box(0, 4, 10, 5), Mask_RGBA, {4, 0, 0},
                  [](const Row&, int, int, int) {});
    });
    EXPECT_EQ(error,
              "M (Misuse): engine, for row 4 from 0 to 10, wrote outside the span in rgba.alpha");
}

TEST_F(ChecksTest, MissTheOpening) {
    Op& op = tree.at(1);
    validate(op);
    Row row(0, 4);
    const auto get = [&] { op.iop()->get(1, 0, 4, Mask_RGBA, row); };
    const std::string error = "M (Misuse): engine was called while the op was not open";
    EXPECT_EQ(error_of(get), error);
    op.open();
    EXPECT_EQ(error_of(get), "no error");
    op.close();
    EXPECT_EQ(error_of(get), error);
    set_checks_plugins(false);
    EXPECT_EQ(error_of(get), "no error");
}

// What would overwrite the op's memory is found even when plug-ins are not checked.
TEST_F(ChecksTest, NameTheKnobThatIsNotWhatItWas) {
    for (const bool checked : {true, false}) {
        set_checks_plugins(checked);
        const struct {
            const char *way, *error;
        } cases[] = {
            {"store a text",
             "M (Misuse): knob 'value' is declared as another kind than when it was made"},
            {"store one number",
             "M (Misuse): knob 'colour' is declared as another kind than when it was made"},
            {"declare another knob",
             "M (Misuse): knob 'other' is declared where it was not when the knobs were made"},
            {"declare one more",
             "M (Misuse): knob 'more' is declared where it was not when the knobs were made"},
        };
        for (const auto& c : cases) {
            set_text(misuse, "way", c.way);
            EXPECT_EQ(storing_error(), c.error);
        }
        set_text(misuse, "way", "none");
        EXPECT_EQ(storing_error(), "no error");
    }
}

TEST_F(ChecksTest, NameTheTypeThatAKnobCannotBeStoredAs) {
    Op& op = tree.at(1);
    Hash hash;
    double number = 0;
    const char* text = "unchanged";
    HostKnob& value = *misuse.knob("value");
    EXPECT_EQ(error_of([&] { value.store_into(op, StringPtr, &text, hash); }),
              "M (Misuse): knob 'value' is stored as StringPtr, which it cannot be");
    EXPECT_STREQ(text, "unchanged");
    const struct {
        StoreType type;
        const char* name;
    } types[] = {
        {StdStringPtr, "StdStringPtr"},
        {ChannelSetPtr, "ChannelSetPtr"},
        {MatrixPtr, "MatrixPtr"},
        {FormatPairPtr, "FormatPairPtr"},
    };
    for (const auto& t : types)
        EXPECT_EQ(error_of([&] { value.store_into(op, t.type, &text, hash); }),
                  std::string("M (Misuse): knob 'value' is stored as ") + t.name +
                      ", which it cannot be");
    value.store_into(op, NoPtr, nullptr, hash);
    value.store_into(op, DoublePtr, nullptr, hash);
    EXPECT_EQ(hash, Hash());
    value.store_into(op, DoublePtr, &number, hash);
    EXPECT_EQ(number, 1);
}

TEST_F(ChecksTest, SayWhichOpItIs) {
    const std::unique_ptr<Op> op = misuse.make_op();
    EXPECT_STREQ(PluginMisuse(*op, "did this").what(), "M (Misuse): did this");
    const std::unique_ptr<Op> nobodys(misuse.description().constructor(nullptr));
    EXPECT_STREQ(PluginMisuse(*nobodys, "did that").what(), "Misuse (Misuse): did that");
}
