// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/Thread.h>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using DD::Image::Guard;
using DD::Image::Lock;

TEST(Lock, LetsOneThreadInAtATime) {
    Lock lock;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; i++)
        threads.emplace_back([&] {
            for (int k = 0; k < 10000; k++) {
                const Guard guard(lock);
                count++;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 40000);
}

static bool free_for_others(Lock& lock) {
    bool taken = false;
    std::thread([&] {
        taken = lock.trylock();
        if (taken)
            lock.unlock();
    }).join();
    return taken;
}

TEST(Lock, IsHeldUntilTheGuardGoes) {
    Lock lock;
    EXPECT_TRUE(free_for_others(lock));
    {
        const Guard guard(lock);
        EXPECT_FALSE(free_for_others(lock));
    }
    EXPECT_TRUE(free_for_others(lock));
    lock.lock();
    EXPECT_FALSE(free_for_others(lock));
    lock.unlock();
    EXPECT_TRUE(free_for_others(lock));
}
