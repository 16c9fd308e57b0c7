// SPDX-License-Identifier: BSD-3-Clause
#include "stars/kernels.h"

#include "stars/dispatch.h"

#include <atomic>

namespace velmora {

KernelLevel best_kernel_level() {
    static const KernelLevel best = widest_available_level();
    return best;
}

// Made on first use, so that whoever draws before main() finds it.
static std::atomic<KernelLevel>& level_in_use() {
    static std::atomic<KernelLevel> level(best_kernel_level());
    return level;
}

KernelLevel kernel_level() {
    return level_in_use().load(std::memory_order_relaxed);
}

bool set_kernel_level(KernelLevel level) {
    if (level > best_kernel_level())
        return false;
    level_in_use().store(level, std::memory_order_relaxed);
    return true;
}

const char* kernel_level_name(KernelLevel level) {
    switch (level) {
    case KernelLevel::sse2:
        return "SSE2";
    case KernelLevel::avx2:
        return "AVX2";
    case KernelLevel::avx512:
        return "AVX-512";
    default:
        return "plain";
    }
}

} // namespace velmora
