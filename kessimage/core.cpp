#define XSOURCE "core"

#include "kessimage/core.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>

namespace Kess {

int TRACE_ALLOCATIONS = 0;

static const char* const error_texts[] = {
    "OK",
    "unknown error",
    "error opening file",
    "error stat()ing file",
    "error allocating memory",
    "error reading from file",
    "file is too short",
    "unknown file format",
    "invalid file",
    "operation cannot be performed on this image format",
    "error writing to file",
    "unimplemented image format translation",
};

// Asks for large pages under a large block: a picture's first writing costs less in their hundreds
// than in small ones' ten thousands. Advice only; where it is not taken nothing changes.
static void prefer_large_pages(char* block, uword size) {
    const uword large_page = uword(2) << 20;
    const uword first = (reinterpret_cast<uword>(block) + large_page - 1) & ~(large_page - 1);
    const uword end = (reinterpret_cast<uword>(block) + size) & ~(large_page - 1);
    if (end <= first)
        return;
    const int before = errno;
    madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
    errno = before;
}

char* malloc_pixels(uword size) {
    if (TRACE_ALLOCATIONS)
        fprintf(stderr, "libkessimage: malloc_pixels(%lu)", size);
    void* block = malloc(size);
    if (!block)
        XTHROW("out of memory");
    if (TRACE_ALLOCATIONS)
        fprintf(stderr, " = %p\n", block);
    prefer_large_pages(static_cast<char*>(block), size);
    return static_cast<char*>(block);
}

void free_pixels(char* pointer, uword size) {
    if (TRACE_ALLOCATIONS)
        fprintf(stderr, "libkessimage: free_pixels(%p, %lu)\n", static_cast<void*>(pointer), size);
    free(pointer);
}

Error::~Error() {}

const char* Error::strerror() const {
    return error_texts[code];
}

void Error::print() const {
    fprintf(stderr, "libkessimage error: %s\n", strerror());
}

} // namespace Kess
