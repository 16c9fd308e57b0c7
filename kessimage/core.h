// What the image library stands on: pixel memory that can be traced, and numbered errors.
//
// Errors:    malloc_pixels throws StrXception "out of memory".
// Threads:   TRACE_ALLOCATIONS is read unguarded.
#pragma once

#include "core/types.h"
#include "core/xception.h"

namespace Kess {

// When other than 0, every allocation and release of pixels is told on standard error.
extern int TRACE_ALLOCATIONS;

// A block of `size` bytes, contents unspecified, never null.
char* malloc_pixels(uword size);

// Releases a block of malloc_pixels; `size` is only told.
void free_pixels(char* pointer, uword size);

// A failure known by its number, 0 to 11.
class Error : public Xception {
public:
    int code;

    explicit Error(int code) : code(code) {}
    ~Error() override;

    // The code's text. The code is not checked.
    const char* strerror() const;

    void print() const override;
};

} // namespace Kess
