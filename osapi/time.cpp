// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/failure.h"
#include "osapi/osapi.h"

#include <ctime>
#include <sched.h>
#include <unistd.h>

namespace OSAPI {

u64 microsecs() {
    timeval now;
    gettimeofday(&now, nullptr);
    return u64(now.tv_sec) * 1000000 + u64(now.tv_usec);
}

unsigned sleep(unsigned seconds) {
    return ::sleep(seconds);
}

void pause() {
    ::pause();
}

void yield() {
    sched_yield();
}

// As localtime, which reads the time zone each time, but without its shared result.
Date get_date() {
    const time_t now = ::time(nullptr);
    tm local;
    tzset();
    if (now == -1 || !localtime_r(&now, &local))
        XTHROW_ERRNO("time()");
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
}

} // namespace OSAPI
