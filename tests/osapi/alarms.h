// SPDX-License-Identifier: BSD-3-Clause

// A signal every few milliseconds while the object lives, with a handler that counts and, at the
// third, calls a function. Calls that wait fail with EINTR, since the handler does not restart
// them.
#pragma once

#include <signal.h>
#include <sys/time.h>

class Alarms {
public:
    explicit Alarms(void (*at_third)() = nullptr, int flags = 0) {
        count = 0;
        action = at_third;
        struct sigaction counting = {};
        counting.sa_handler = tick;
        counting.sa_flags = flags;
        sigaction(SIGALRM, &counting, &before);
        const itimerval often = {{0, 5000}, {0, 5000}};
        setitimer(ITIMER_REAL, &often, nullptr);
    }
    Alarms(const Alarms&) = delete;
    Alarms& operator=(const Alarms&) = delete;
    ~Alarms() {
        const itimerval never = {};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &before, nullptr);
    }

    static inline volatile sig_atomic_t count;

private:
    static inline void (*action)();
    struct sigaction before;

    static void tick(int) {
        count = count + 1;
        if (count == 3 && action)
            action();
    }
};
