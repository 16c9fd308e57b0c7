// SPDX-License-Identifier: BSD-3-Clause

// Locks, for what the engine calls of several threads share.
//
// Threads:   a thread that locks twice deadlocks: locks are not recursive.
#pragma once

#include <mutex>

namespace DD::Image {

class Lock {
public:
    Lock() {}
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    bool trylock() { return mutex.try_lock(); }

private:
    std::mutex mutex;
};

// Holds a lock during its life.
class Guard {
public:
    explicit Guard(Lock& lock) : held(lock) { held.lock(); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() { held.unlock(); }

private:
    Lock& held;
};

} // namespace DD::Image
