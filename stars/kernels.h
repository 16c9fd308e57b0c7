// SPDX-License-Identifier: BSD-3-Clause

// Which reading draws: the plain one, or the fast kernels at one of the levels of this machine.
//
// The plain reading is scalar, goes through the C library, and defines what a pixel should be. The
// fast kernels add the same light within the accuracy that accuracy.h states, and give the same
// bytes at every level and on every machine. A build without them (VELMORA_PLAIN_ONLY, and every
// build for a processor other than x86-64) has the plain level only.
//
// Threads:   the default level is one for the whole process. It may be read from any thread; set it
//            while nothing is drawn.
#pragma once

namespace velmora {

enum class KernelLevel { plain, sse2, avx2, avx512 };

// The widest level that this machine and this build have.
KernelLevel best_kernel_level();

// The level of renderers that are not given one, and of op_star_streak: at first the best.
KernelLevel kernel_level();

// Makes `level` the default. False, and no change, when it is not available.
bool set_kernel_level(KernelLevel level);

// "plain", "SSE2", "AVX2" or "AVX-512".
const char* kernel_level_name(KernelLevel level);

} // namespace velmora
