// SPDX-License-Identifier: BSD-3-Clause

// The system calls about processes, signals and time made to fail, and the arguments they get.
#include "osapi/osapi.h"

#include "tests/osapi/failing_call.h"
#include "tests/osapi/place.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <functional>
#include <string>
#include <vector>

using OSAPI::ChildProcess;

namespace {

typedef std::vector<std::string> Calls;

const int no_such_child = 15;

const std::string in_wait = in("int OSAPI::_wait_until_dead(OSAPI_pid_t, OSAPI_pid_t*, bool)");
const std::string in_exec = in("void OSAPI::exec(const char*, const char* const*)");
const std::string in_install = in("void OSAPI::Signal::install(const sigaction*)");

void do_nothing(int) {}

TEST(ProcessCallFailure, IsReportedInFullAndLeavesNothing) {
    const char* const arguments[] = {"sh", "-c", "exit", nullptr};
    expect_reported({
        {"fork", 1, ENOMEM, [] { OSAPI::fork(); },
         "fork: Cannot allocate memory" + in("OSAPI_pid_t OSAPI::fork()")},
        {"fork", 1, EAGAIN, [] { ChildProcess().start([] { return 0; }); },
         "fork: Resource temporarily unavailable" + in("OSAPI_pid_t OSAPI::fork()")},
        {"execvp", 1, E2BIG, [&] { OSAPI::exec("sh", arguments); },
         "exec(sh): Argument list too long" + in_exec},
        {"execlp", 1, ENOEXEC, [] { OSAPI::exec("sh", nullptr); },
         "exec(sh): Exec format error" + in_exec},
        {"kill", 1, EPERM, [] { OSAPI::kill(77, 9); },
         "kill(77,9): Operation not permitted" + in("void OSAPI::kill(OSAPI_pid_t, int)")},
        {"waitpid", 1, EINVAL, [] { OSAPI::_wait_until_dead(77, nullptr, false); },
         "waitpid: Invalid argument" + in_wait},
        {"waitpid", 1, ECHILD, [] { OSAPI::wait_for_any_child(); },
         "waitpid: No child processes" + in("OSAPI::ChildEnd OSAPI::wait_for_any_child()")},
        {"waitpid", 1, EINVAL, [] { OSAPI::wait_until_dead(77); },
         "waitpid: Invalid argument" + in_wait},
        {"waitpid", 1, ECHILD, [] { OSAPI::wait_until_dead(77); },
         "child process returned non-zero exit code" +
             in("void OSAPI::wait_until_dead(OSAPI_pid_t)")},
        {"sigaction", 1, EINVAL, [] { OSAPI::SignalIgnore guard(SIGUSR1); },
         "sigaction(10): Invalid argument" + in_install},
        {"sigaction", 1, EFAULT, [] { OSAPI::SignalDefault guard(SIGUSR1); },
         "sigaction(10): Bad address" + in_install},
        {"sigaction", 1, EPERM, [] { OSAPI::SignalHandler guard(SIGUSR1, do_nothing, true); },
         "sigaction(10): Operation not permitted" + in_install},
        {"time", 1, EFAULT, [] { OSAPI::get_date(); },
         "time(): Bad address" + in("OSAPI::Date OSAPI::get_date()")},
    });
}

// ---- Processes -------------------------------------------------------------------------------

TEST(ProcessCalls, ExecGivesTheProgramWhatItWasGiven) {
    const char* const arguments[] = {"name", "one", "two words", nullptr};
    SystemCalls calls;
    calls.fail("execvp", ENOENT);
    calls.fail("execlp", ENOENT);
    EXPECT_THROW(OSAPI::exec("file", arguments), StrXception);
    EXPECT_THROW(OSAPI::exec("file", nullptr), StrXception);
    EXPECT_EQ(calls.made, Calls({"execvp(file, name, one, two words)", "execlp(file, file)"}));
}

TEST(ProcessCalls, AChildThatCouldNotStartLeavesTheOneBefore) {
    ChildProcess child;
    child.pid = 77;
    SystemCalls calls;
    calls.fail("fork", EAGAIN);
    EXPECT_THROW(child.start([] { return 0; }), StrXception);
    EXPECT_EQ(child.pid, 77);
    EXPECT_EQ(calls.made, Calls({"fork()"}));
}

TEST(ProcessCalls, KillTakesAnyOtherResultForAFailure) {
    SystemCalls calls;
    calls.answer("kill", 1, 1, EIO);
    EXPECT_EQ(OSAPI::_kill(77, 9), 1);
    calls.answer("kill", 1, 1, EIO);
    EXPECT_EQ(message_without_place_of([] { OSAPI::kill(77, 9); }),
              "kill(77,9): Input/output error");
    EXPECT_EQ(calls.made, Calls({"kill(77, 9)", "kill(77, 9)"}));
}

TEST(ProcessCalls, TellWhereTheyStand) {
    SystemCalls calls;
    calls.answer("geteuid", 1, 0, 0);
    calls.answer("geteuid", 2, 1000, 0);
    EXPECT_TRUE(OSAPI::running_as_root());
    EXPECT_FALSE(OSAPI::running_as_root());
    for (const int result : {0, 1})
        for (const auto is_console :
             {OSAPI::stdin_is_console, OSAPI::stdout_is_console, OSAPI::stderr_is_console}) {
            calls.answer("isatty", 1, result, ENOTTY);
            EXPECT_EQ(is_console(), result == 1);
        }
    EXPECT_EQ(calls.made, Calls({"geteuid()", "geteuid()", "isatty(0)", "isatty(1)", "isatty(2)",
                                 "isatty(0)", "isatty(1)", "isatty(2)"}));
}

// ---- Waiting ---------------------------------------------------------------------------------

// What one call of waitpid gives: its result, errno, and the status word if there is one.
struct Answer {
    long result;
    int error;
    int status; // -1 for none
};

// Waits for `pid` and gets these, one call after the other; the last one must be enough.
int wait(OSAPI_pid_t pid, OSAPI_pid_t* out, bool nohang, const std::vector<Answer>& answers) {
    SystemCalls calls;
    for (std::size_t i = 0; i < answers.size(); i++) {
        const char* const word = reinterpret_cast<const char*>(&answers[i].status);
        calls.answer("waitpid", int(i) + 1, answers[i].result, answers[i].error,
                     answers[i].status == -1 ? "" : std::string(word, sizeof(int)));
    }
    const int result = OSAPI::_wait_until_dead(pid, out, nohang);
    const std::string call = "waitpid(" + std::to_string(pid) + (nohang ? ", 1)" : ", 0)");
    EXPECT_EQ(calls.made, Calls(answers.size(), call));
    return result;
}

TEST(WaitUntilDead, JudgesTheStatusWord) {
    const int core = 0x80;
    const struct {
        int status, result;
    } cases[] = {
        {0x0000, 0}, {0x0100, 1}, {0x0300, 3},     {0xff00, 255}, {0x7f00, 127},     {9, 9},
        {1, 1},      {126, 126},  {11 | core, 11}, {0x0509, 9},   {0x1234500, 0x45}, {core, 0},
    };
    for (const auto& c : cases) {
        OSAPI_pid_t out = 0;
        EXPECT_EQ(wait(77, &out, false, {{77, 0, c.status}}), c.result) << c.status;
        EXPECT_EQ(out, 77);
    }
}

TEST(WaitUntilDead, WaitsOnAfterEveryStop) {
    const int stopped = SIGSTOP << 8 | 0x7f, continued = 0xffff;
    OSAPI_pid_t out = 0;
    EXPECT_EQ(wait(77, &out, false, {{77, 0, stopped}, {77, 0, continued}, {77, 0, 9}}), 9);
    EXPECT_EQ(out, 77);
    EXPECT_EQ(wait(77, &out, true, {{77, 0, stopped}, {0, 0, -1}}), -1);
}

// The word that the stop left is judged again when the next call is interrupted, and is a stop
// still.
TEST(WaitUntilDead, KeepsTheStatusOfAStopOverAnInterruption) {
    const int stopped = SIGSTOP << 8 | 0x7f;
    OSAPI_pid_t out = 0;
    EXPECT_EQ(wait(77, &out, false,
                   {{77, 0, stopped}, {-1, EINTR, -1}, {-1, EINTR, -1}, {77, 0, 0x0400}}),
              4);
    EXPECT_EQ(out, 77);
}

TEST(WaitUntilDead, ReadsAnInterruptionAsAnExitWithZero) {
    for (const bool nohang : {false, true}) {
        OSAPI_pid_t out = 77;
        EXPECT_EQ(wait(77, &out, nohang, {{-1, EINTR, -1}}), 0);
        EXPECT_EQ(out, -1);
        EXPECT_EQ(wait(-1, nullptr, nohang, {{-1, EINTR, -1}}), 0);
    }
}

TEST(WaitUntilDead, GivesTheProcessOnlyWithAnEnd) {
    OSAPI_pid_t out = 5;
    EXPECT_EQ(wait(77, &out, true, {{0, 0, -1}}), -1);
    EXPECT_EQ(wait(-1, &out, true, {{0, 0, -1}}), -1);
    EXPECT_EQ(wait(77, &out, false, {{-1, ECHILD, -1}}), no_such_child);
    EXPECT_EQ(out, 5);
    EXPECT_EQ(wait(-1, &out, false, {{88, 0, 0x0200}}), 2);
    EXPECT_EQ(out, 88);
}

TEST(WaitUntilDead, ThrowsForAProcessThatWasNotAskedFor) {
    const struct {
        OSAPI_pid_t pid, returned;
        bool nohang;
    } cases[] = {{77, 78, false}, {77, 78, true}, {77, 0, false}, {0, 78, false}, {-5, 78, true}};
    for (const auto& c : cases) {
        SystemCalls calls;
        calls.answer("waitpid", 1, c.returned, 0);
        EXPECT_EQ(
            message_without_line_of([&] { OSAPI::_wait_until_dead(c.pid, nullptr, c.nohang); }),
            "unexpected return value from waitpid()" + in_wait);
    }
}

// ---- Signals ---------------------------------------------------------------------------------

// The signal, the flags, and the mask, which holds the signal alone.
TEST(SignalCalls, GetTheseActions) {
    const std::string restarts = ", 0x10000000, "; // SA_RESTART
    const struct {
        std::function<void()> action;
        std::string call;
    } cases[] = {
        {[] { OSAPI::SignalIgnore guard(SIGUSR1); }, "sigaction(10" + restarts + "10)"},
        {[] { OSAPI::SignalDefault guard(SIGUSR2); }, "sigaction(12" + restarts + "12)"},
        {[] { OSAPI::SignalHandler guard(SIGTERM, do_nothing, true); },
         "sigaction(15" + restarts + "15)"},
        {[] { OSAPI::SignalHandler guard(SIGTERM, do_nothing, false); }, "sigaction(15, 0, 15)"},
    };
    for (const auto& c : cases) {
        SystemCalls calls;
        c.action();
        ASSERT_EQ(calls.names(), "sigaction sigaction ") << "set and restored";
        EXPECT_EQ(calls.made[0], c.call);
    }
}

TEST(SignalCalls, AreNotMadeToRestoreWhatWasNotSet) {
    SystemCalls calls;
    { const OSAPI::Signal idle(SIGUSR1); }
    EXPECT_EQ(calls.made, Calls());
    calls.fail("sigaction", EINVAL);
    EXPECT_THROW(OSAPI::SignalIgnore guard(SIGUSR1), StrXception);
    EXPECT_EQ(calls.count("sigaction"), 1);
}

TEST(SignalCalls, MayFailToRestore) {
    const OSAPI::SignalHandler outer(SIGUSR1, do_nothing, true);
    SystemCalls calls;
    calls.fail("sigaction", EINVAL, 2);
    EXPECT_NO_THROW(OSAPI::SignalIgnore guard(SIGUSR1));
    EXPECT_EQ(calls.count("sigaction"), 2);
}

// ---- Time ------------------------------------------------------------------------------------

TEST(TimeCalls, CountMicroseconds) {
    const timeval now = {4000000000, 999999};
    SystemCalls calls;
    calls.answer("gettimeofday", 1, 0, 0,
                 std::string(reinterpret_cast<const char*>(&now), sizeof now));
    EXPECT_EQ(OSAPI::microsecs(), 4000000000999999u);
}

TEST(TimeCalls, GiveTheDate) {
    const struct {
        time_t now;
        s32 year, month, day;
    } cases[] = {
        {0, 1970, 1, 1},    {951782400, 2000, 2, 29}, {1735689599, 2024, 12, 31},
        {-2, 1969, 12, 31}, {4102444800, 2100, 1, 1}, {-62135596800, 1, 1, 1},
    };
    EXPECT_EQ(status_of_child([&] {
                  setenv("TZ", "UTC0", 1);
                  for (const auto& c : cases) {
                      SystemCalls calls;
                      calls.answer("time", 1, c.now, 0);
                      const OSAPI::Date date = OSAPI::get_date();
                      if (date.year != c.year || date.month != c.month || date.day != c.day)
                          return false;
                  }
                  return true;
              }),
              0);
}

TEST(TimeCalls, ThrowForAYearBeyondTheCalendar) {
    SystemCalls calls;
    calls.answer("time", 1, LONG_MAX, 0);
    EXPECT_EQ(message_without_line_of([] { OSAPI::get_date(); }),
              "time(): Value too large for defined data type" +
                  in("OSAPI::Date OSAPI::get_date()"));
}

} // namespace
