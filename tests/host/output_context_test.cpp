// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/OutputContext.h>
#include <gtest/gtest.h>

using DD::Image::Hash;
using DD::Image::OutputContext;

static OutputContext at(double frame, int view) {
    OutputContext context;
    context.setFrame(frame);
    context.setView(view);
    return context;
}

TEST(OutputContext, IsFrameAndViewZeroAtFirst) {
    EXPECT_EQ(OutputContext().frame(), 0);
    EXPECT_EQ(OutputContext().view(), 0);
    EXPECT_EQ(OutputContext(), at(0, 0));
}

TEST(OutputContext, KeepsFramesBetweenFrames) {
    EXPECT_EQ(at(10.25, 2).frame(), 10.25);
    EXPECT_EQ(at(10.25, 2).view(), 2);
}

TEST(OutputContext, ComesEarlierByFrameAndThenByView) {
    const OutputContext contexts[] = {at(-1, 5), at(0, 0), at(0, 1), at(0.5, 0), at(2, -1)};
    for (int i = 0; i < 5; i++) {
        for (int k = 0; k < 5; k++) {
            EXPECT_EQ(contexts[i] < contexts[k], i < k);
            EXPECT_EQ(contexts[i] > contexts[k], i > k);
            EXPECT_EQ(contexts[i] == contexts[k], i == k);
            EXPECT_EQ(contexts[i] != contexts[k], i != k);
        }
    }
}

TEST(OutputContext, HashesFrameAndView) {
    const auto hash_of = [](const OutputContext& context) {
        Hash hash(1);
        context.append(hash);
        return hash;
    };
    EXPECT_EQ(hash_of(at(1, 1)), hash_of(at(1, 1)));
    EXPECT_NE(hash_of(at(1, 1)), hash_of(at(2, 1)));
    EXPECT_NE(hash_of(at(1, 1)), hash_of(at(1, 2)));
}
