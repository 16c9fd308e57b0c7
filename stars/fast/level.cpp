// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/level.h"

namespace velmora {

KernelLevel widest_level() {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl"))
        return KernelLevel::avx512;
    return __builtin_cpu_supports("avx2") ? KernelLevel::avx2 : KernelLevel::sse2;
}

const LaneKernels* lane_kernels(KernelLevel level) {
    switch (level) {
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
