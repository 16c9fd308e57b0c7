// operator new, which fails on demand in programs that link failing_memory.cpp. It serves the C++
// library too, so its streams and strings run out of memory with everything else.
#pragma once

class FailingMemory {
public:
    // From now on `count` requests fail, the first of them the `nth`, counted from 1.
    explicit FailingMemory(int nth, int count = 1);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    ~FailingMemory(); // requests succeed again

    // Whether one has failed.
    static bool has_failed();
};
