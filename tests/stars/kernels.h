// SPDX-License-Identifier: BSD-3-Clause

// Drawing by kernels of the test's choice.
#pragma once

#include "stars/kernels.h"

#include <gtest/gtest.h>
#include <vector>

namespace stars_test {

// Draws by `level` while it lives, then by what was before.
class WithKernels {
public:
    explicit WithKernels(velmora::KernelLevel level) : before(velmora::kernel_level()) {
        EXPECT_TRUE(velmora::set_kernel_level(level)) << velmora::kernel_level_name(level);
    }
    WithKernels(const WithKernels&) = delete;
    WithKernels& operator=(const WithKernels&) = delete;
    ~WithKernels() { velmora::set_kernel_level(before); }

private:
    const velmora::KernelLevel before;
};

// The fast levels of this machine, narrowest first.
inline std::vector<velmora::KernelLevel> fast_levels() {
    std::vector<velmora::KernelLevel> levels;
    for (velmora::KernelLevel level :
         {velmora::KernelLevel::sse2, velmora::KernelLevel::avx2, velmora::KernelLevel::avx512})
        if (level <= velmora::best_kernel_level())
            levels.push_back(level);
    return levels;
}

} // namespace stars_test
