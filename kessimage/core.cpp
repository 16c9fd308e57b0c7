// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "core"

#include "kessimage/core.h"
#include "osapi/osapi.h"

#include <cstdio>
#include <cstdlib>

namespace Kess {

int TRACE_ALLOCATIONS = 0;

// By code.
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

char* malloc_pixels(uword size) {
    if (TRACE_ALLOCATIONS)
        fprintf(stderr, "libkessimage: malloc_pixels(%lu)", size);
    void* block = malloc(size);
    if (!block)
        XTHROW("out of memory");
    if (TRACE_ALLOCATIONS)
        fprintf(stderr, " = %p\n", block);
    // The first write to each page costs a page fault: hundreds for a picture in large pages, tens
    // of thousands in small ones.
    OSAPI::gather_into_large_pages(block, size);
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
