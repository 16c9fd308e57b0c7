// SPDX-License-Identifier: BSD-3-Clause

// Memory that objects hold when their making or their end fails: it is given back.
#include "osapi/osapi.h"

#include "tests/core/heap_watch.h"
#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/system_calls.h"

#include <glob.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <string>

namespace {

TEST(FailureMemory, IsGivenBack) {
    const struct {
        const char* call;
        long result;
        std::function<void()> action;
        std::string message;
    } rows[] = {
        {"write", -1,
         [] {
             OSAPI::DiskFile file;
             OSAPI::FileOutput output(file);
             BufferedOutput buffered(output, 1000);
             buffered.write("a", 1);
         },
         "write: Input/output error"},
        {"write", -1,
         [] {
             OSAPI::BufferedFileOutput output(some_descriptor(), 1000, true);
             output.buffered.write("a", 1);
         },
         "write: Input/output error"},
        {"sigaction", -1, [] { OSAPI::SignalIgnore guard(SIGUSR1); },
         "sigaction(10): Input/output error"},
        {"sigaction", -1, [] { OSAPI::SignalHandler guard(SIGUSR1, SIG_DFL, true); },
         "sigaction(10): Input/output error"},
        {"glob", GLOB_ABORTED, [] { OSAPI::Glob names("*"); }, "glob(*): 2"},
        {"socket", -1, [] { OSAPI::UNIXServerSocket server("socket"); },
         "socket: Input/output error"},
    };
    for (const auto& row : rows) {
        const HeapWatch watch;
        {
            SystemCalls calls;
            // The last try at the end of a stream fails like those before.
            for (const int nth : {1, 2})
                calls.answer(row.call, nth, row.result, EIO);
            EXPECT_EQ(message_without_place_of(row.action), row.message);
        }
        EXPECT_EQ(watch.live(), 0) << row.message;
    }
}

} // namespace
