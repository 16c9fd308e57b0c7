// SPDX-License-Identifier: BSD-3-Clause

// The base of the image library: pixel memory whose allocation can be traced, and numbered errors.
//
// Errors:    malloc_pixels throws StrXception "out of memory".
// Threads:   TRACE_ALLOCATIONS is read without synchronisation; set it before other threads start.
#pragma once

#include "core/types.h"
#include "core/xception.h"

namespace Kess {

// When not 0, every allocation and release of pixels is printed on standard error.
extern int TRACE_ALLOCATIONS;

// A block of `size` bytes, contents unspecified, never null.
char* malloc_pixels(uword size);

// Frees a block of malloc_pixels; `size` is only printed.
void free_pixels(char* pointer, uword size);

// A failure identified by a number, 0 to 11.
class Error : public Xception {
public:
    int code;

    explicit Error(int code) : code(code) {}
    ~Error() override;

    // The text for the code. REQUIRES: 0 <= code <= 11.
    const char* strerror() const;

    void print() const override;
};

} // namespace Kess
