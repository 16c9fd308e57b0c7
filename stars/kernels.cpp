#include "stars/kernels.h"
#include "stars/fast/lane_kernels.h"

#include <atomic>

namespace velmora {

static KernelLevel probe_machine() {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl"))
        return KernelLevel::avx512;
    return __builtin_cpu_supports("avx2") ? KernelLevel::avx2 : KernelLevel::sse2;
}

KernelLevel best_kernel_level() {
    static const KernelLevel best = probe_machine();
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

const LaneKernels* lane_kernels() {
    switch (kernel_level()) {
    case KernelLevel::sse2:
        return &lane_kernels_sse2;
    case KernelLevel::avx2:
        return &lane_kernels_avx2;
    case KernelLevel::avx512:
        return &lane_kernels_avx512;
    default:
        return nullptr;
    }
}

} // namespace velmora
