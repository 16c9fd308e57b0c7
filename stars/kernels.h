// Which kernels draw: the plain reading, or the fast ones at one of the levels of this machine.
//
// The plain reading is scalar, goes through the C library, and defines what a pixel should be. The
// fast kernels add the same light within the accuracy that rasteriser.h states, and give the same
// bytes at every level and on every machine.
//
// Threads:   the level is one for the whole process and may be read from any thread; set it while
//            nothing is drawn. It starts as the best that the machine has.
#pragma once

namespace velmora {

enum class KernelLevel { plain, sse2, avx2, avx512 };

// The widest level that this machine has; plain where there is none.
KernelLevel best_kernel_level();

// The level in use.
KernelLevel kernel_level();

// Draws with `level` from now on. False, and no change, when the machine does not have it.
bool set_kernel_level(KernelLevel level);

// "plain", "SSE2", "AVX2" or "AVX-512".
const char* kernel_level_name(KernelLevel level);

struct LaneKernels;

// The fast kernels of the level in use; null for the plain reading.
const LaneKernels* lane_kernels();

} // namespace velmora
