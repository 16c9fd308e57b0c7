// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/osapi/alarms.h"
#include "tests/osapi/child.h"
#include "tests/osapi/files.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>

#include <string>
#include <type_traits>

namespace {

TEST(Microsecs, AreTheSystemsClock) {
    timespec before, after;
    clock_gettime(CLOCK_REALTIME, &before);
    const u64 now = OSAPI::microsecs();
    clock_gettime(CLOCK_REALTIME, &after);
    EXPECT_GE(now, u64(before.tv_sec) * 1000000 + u64(before.tv_nsec) / 1000);
    EXPECT_LE(now, u64(after.tv_sec) * 1000000 + u64(after.tv_nsec) / 1000);
}

TEST(Sleep, EndsAtOnceForNothingAndEarlyForASignal) {
    EXPECT_EQ(OSAPI::sleep(0), 0u);
    const Alarms alarms;
    EXPECT_GE(OSAPI::sleep(100), 99u) << "the seconds that were left, rounded";
}

TEST(Pause, WaitsForASignal) {
    const Alarms alarms;
    const int before = Alarms::count;
    OSAPI::pause();
    EXPECT_GT(Alarms::count, before);
}

TEST(Getpid, IsThisProcess) {
    EXPECT_EQ(OSAPI::getpid(), ::getpid());
    EXPECT_TRUE((std::is_same<decltype(OSAPI::getpid()), OSAPI_pid_t>::value));
    EXPECT_TRUE((std::is_same<OSAPI_pid_t, s32>::value));
}

// Around the globe it is two dates at once, but for an instant: zones 26 hours apart.
TEST(GetDate, IsThatOfTheLocalCalendar) {
    const char* const zones[] = {"UTC0", "AHEAD-14", "BEHIND12"};
    for (const char* zone : zones)
        EXPECT_EQ(status_of_child([&] {
                      setenv("TZ", zone, 1);
                      for (;;) {
                          const time_t before = time(nullptr);
                          const OSAPI::Date date = OSAPI::get_date();
                          const time_t after = time(nullptr);
                          const tm local = *localtime(&before);
                          const tm later = *localtime(&after);
                          if (local.tm_mday != later.tm_mday)
                              continue; // midnight came
                          return date.year == local.tm_year + 1900 &&
                                 date.month == local.tm_mon + 1 && date.day == local.tm_mday;
                      }
                  }),
                  0)
            << zone;
}

TEST(GetDate, FollowsAZoneThatChanges) {
    EXPECT_EQ(status_of_child([] {
                  setenv("TZ", "AHEAD-14", 1);
                  const OSAPI::Date ahead = OSAPI::get_date();
                  setenv("TZ", "BEHIND12", 1);
                  const OSAPI::Date behind = OSAPI::get_date();
                  return ahead.day != behind.day;
              }),
              0);
}

} // namespace
