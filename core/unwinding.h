// SPDX-License-Identifier: BSD-3-Clause

// For destructors that may throw, which must not while another exception is propagating: the
// program would be terminated.
//
// Threads:   each thread has its own exceptions; these look at the calling thread's.
#pragma once

#include <exception>

namespace velmora {

// True while an exception is propagating: a throwing destructor must then swallow its own.
inline bool unwinding() {
    return std::uncaught_exceptions() > 0;
}

// Runs `release`, which may throw, in a destructor: what it throws is dropped during unwinding.
template <class Release>
void release_in_destructor(Release release) {
    try {
        release();
    } catch (...) {
        if (!unwinding())
            throw;
    }
}

} // namespace velmora
