// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/level.h"
#include "tests/stars/kernels.h"

using namespace stars_test;
using namespace velmora;

TEST(Level, HasKernelsOfItsOwnUnlessItIsPlain) {
    EXPECT_EQ(lane_kernels(KernelLevel::plain), nullptr);
    const LaneKernels* last = nullptr;
    for (KernelLevel level : fast_levels()) {
        EXPECT_NE(lane_kernels(level), nullptr);
        EXPECT_NE(lane_kernels(level), last) << kernel_level_name(level);
        last = lane_kernels(level);
    }
}

TEST(Level, OfThisMachineIsTheBestThatCanBeSet) {
    EXPECT_EQ(widest_level(), best_kernel_level());
    EXPECT_GE(widest_level(), KernelLevel::sse2) << "which every x86-64 processor has";
}
