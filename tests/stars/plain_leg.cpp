// SPDX-License-Identifier: BSD-3-Clause

// Linked into a test program, this has everything drawn by the plain reading.
#include "stars/kernels.h"

namespace {
const bool plain_is_set = velmora::set_kernel_level(velmora::KernelLevel::plain);
}
