// SPDX-License-Identifier: BSD-3-Clause
#include "tests/stars/kernels.h"

using namespace stars_test;
using namespace velmora;

TEST(Kernels, ForceEachLevelThatTheMachineHas) {
    const KernelLevel before = kernel_level();
    for (KernelLevel level :
         {KernelLevel::plain, KernelLevel::sse2, KernelLevel::avx2, KernelLevel::avx512}) {
        const KernelLevel last = kernel_level();
        const bool has = level <= best_kernel_level();
        EXPECT_EQ(set_kernel_level(level), has);
        EXPECT_EQ(kernel_level(), has ? level : last);
    }
    EXPECT_TRUE(set_kernel_level(before));
}

TEST(Kernels, HaveNames) {
    EXPECT_STREQ(kernel_level_name(KernelLevel::plain), "plain");
    EXPECT_STREQ(kernel_level_name(KernelLevel::sse2), "SSE2");
    EXPECT_STREQ(kernel_level_name(KernelLevel::avx2), "AVX2");
    EXPECT_STREQ(kernel_level_name(KernelLevel::avx512), "AVX-512");
}
