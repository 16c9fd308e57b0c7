// SPDX-License-Identifier: BSD-3-Clause

// operator new, which fails on demand in programs that link failing_memory.cpp. The C++
// library uses it too, so its streams and strings run out of memory as everything else does.
#pragma once

class FailingMemory {
public:
    // From now on `count` requests fail, starting with the `nth`, counted from 1.
    explicit FailingMemory(int nth, int count = 1);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    ~FailingMemory(); // requests succeed again

    // Whether a request has failed.
    static bool has_failed();
};
