// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/script_tree.h"

#include <gtest/gtest.h>

using namespace velmora::host;

static const std::string script = "shot.nk";

static ScriptTree tree_of(const std::string& braced) {
    return {{ScriptValue::Kind::braced, braced, {1, 1}}, script};
}

TEST(ScriptTree, HasTheItemsOfListsInLists) {
    const ScriptTree tree = tree_of("{1 2} \"3 4\" 5");
    ASSERT_EQ(tree.items().size(), 3u);
    const ScriptTree& list = tree.items()[0];
    EXPECT_TRUE(list.is_list());
    ASSERT_EQ(list.items().size(), 2u);
    EXPECT_EQ(list.items()[1].value().text, "2");
    EXPECT_EQ(list.items()[1].value().place.column, 5);
    EXPECT_FALSE(tree.items()[1].is_list()) << "blanks in quotes separate nothing";
    ASSERT_EQ(tree.items()[2].items().size(), 1u) << "a word is a list of itself";
    EXPECT_EQ(tree.items()[2].items()[0].value().text, "5");
}

TEST(ScriptTree, SplitsAListOnce) {
    const ScriptTree tree = tree_of("{1 2} 3");
    const ScriptTree* const first = &tree.items()[0];
    EXPECT_EQ(&tree.items()[0], first);
    EXPECT_EQ(&first->items()[0], &tree.items()[0].items()[0]);
}

TEST(ScriptTree, SplitsNothingThatIsNotAskedFor) {
    const ScriptTree tree = tree_of("{\"open} 1");
    EXPECT_EQ(tree.items().size(), 2u) << "the quote inside is another list's";
    EXPECT_THROW(tree.items()[0].items(), ScriptError);
}

TEST(ScriptTree, KnowsACurveByItsFirstItem) {
    EXPECT_TRUE(tree_of("curve x1 35").is_curve());
    EXPECT_FALSE(tree_of("{curve x1 35}").is_curve()) << "a list that holds one";
    EXPECT_FALSE(tree_of("35 curve").is_curve());
    EXPECT_FALSE(tree_of("").is_curve());
    EXPECT_FALSE(ScriptTree({ScriptValue::Kind::word, "curve", {1, 1}}, script).is_curve());
}

TEST(ScriptTree, FailsAtItsPlace) {
    try {
        tree_of("1\n {2 3}").items()[1].fail("no row");
        FAIL();
    } catch (const ScriptError& error) {
        EXPECT_STREQ(error.what(), "shot.nk:2:2: no row");
    }
}
