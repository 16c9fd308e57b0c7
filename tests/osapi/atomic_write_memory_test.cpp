// SPDX-License-Identifier: BSD-3-Clause

// An exclusive write when its memory runs out: the temporary name is a mark to other writers, so it
// must not stay where there is no writer.
#include "osapi/osapi.h"

#include "tests/core/heap_watch.h"
#include "tests/osapi/files.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <unistd.h>
#include <vector>

using OSAPI::AtomicFileWrite;

typedef std::vector<std::string> Names;

// Whether that request, counted from 1, is for the object itself.
static bool asks_by_new(const char* path, int n) {
    HeapWatch watch;
    const std::unique_ptr<AtomicFileWrite> file(AtomicFileWrite::exclusive(path));
    watch.stop();
    if (!file)
        return false; // a mark was left
    const OSAPI::FileDescriptor owner(file->fd);
    return n <= watch.requests() && watch.request(n - 1).way == HeapWatch::NEW;
}

TEST(ExclusiveWriteWithoutMemory, LeavesNeitherDescriptorNorMark) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    const int before = open_descriptors();
    int refused = 0;
    for (int n = 1; n <= 10; n++) {
        if (!asks_by_new(path.c_str(), n))
            continue;
        refused++;
        bool thrown = false;
        try {
            HeapWatch watch;
            watch.refuse(n);
            delete AtomicFileWrite::exclusive(path.c_str());
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
        EXPECT_TRUE(thrown);
        EXPECT_EQ(folder.names(), Names());
        EXPECT_EQ(open_descriptors(), before);
    }
    EXPECT_EQ(refused, 1) << "the object is asked for once";

    const std::unique_ptr<AtomicFileWrite> next(AtomicFileWrite::exclusive(path.c_str()));
    ASSERT_NE(next, nullptr) << "the next writer finds no mark";
    const OSAPI::FileDescriptor owner(next->fd);
}
