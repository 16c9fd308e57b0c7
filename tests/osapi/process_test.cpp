// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/alarms.h"
#include "tests/osapi/child.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <type_traits>

using OSAPI::ChildProcess;

namespace {

const int no_such_child = 15;

const std::string in_wait = in("int OSAPI::_wait_until_dead(OSAPI_pid_t, OSAPI_pid_t*, bool)");
const std::string non_zero =
    "child process returned non-zero exit code" + in("void OSAPI::wait_until_dead(OSAPI_pid_t)");

// A child that has ended like this and has not been waited for.
class DeadChild : public Child {
public:
    explicit DeadChild(int code) : Child([=] { return code; }) { wait_for_its_end(); }
};

class KilledChild : public Child {
public:
    // The signal's disposition is the default: under nohup or in a shell's background this process
    // ignores some, and its children would, too.
    explicit KilledChild(int signum)
        : Child([signum] {
              ::signal(signum, SIG_DFL);
              return ::raise(signum);
          }) {
        wait_for_its_end();
    }
};

int wait(OSAPI_pid_t pid, bool nohang = false) {
    return OSAPI::_wait_until_dead(pid, nullptr, nohang);
}

// ---- fork, exit ------------------------------------------------------------------------------

TEST(Fork, GivesZeroInTheChildAndTheChildInTheParent) {
    OSAPI::Pipe pipe;
    pipe.open();
    const OSAPI_pid_t pid = OSAPI::fork();
    if (pid == 0) {
        const OSAPI_pid_t self = ::getpid();
        OSAPI::write(pipe.write_end.fd, reinterpret_cast<const char*>(&self), sizeof self);
        _exit(0);
    }
    OSAPI_pid_t sent = 0;
    OSAPI::read(pipe.read_end.fd, reinterpret_cast<char*>(&sent), sizeof sent);
    EXPECT_EQ(sent, pid);
    EXPECT_EQ(wait(pid), 0);
}

TEST(Fork, ThrowsWhenNoMoreProcessesMayBe) {
    EXPECT_TRUE(holds_unprivileged([] {
        const rlimit none = {0, 0};
        return setrlimit(RLIMIT_NPROC, &none) == 0 &&
               message_without_line_of([] {
                   if (OSAPI::fork() == 0)
                       _exit(1);
               }) == "fork: Resource temporarily unavailable" + in("OSAPI_pid_t OSAPI::fork()");
    }));
}

int exit_reported_at = -1;

void tell_of_the_end() {
    OSAPI::write(exit_reported_at, "end", 3);
}

TEST(Exit, RunsWhatIsRegisteredForItAndExitNowDoesNot) {
    for (const bool now : {false, true}) {
        OSAPI::Pipe pipe;
        pipe.open();
        const OSAPI_pid_t pid = OSAPI::fork();
        if (pid == 0) {
            exit_reported_at = pipe.write_end.fd;
            atexit(tell_of_the_end);
            if (now)
                OSAPI::exit_now(7);
            OSAPI::exit(7);
        }
        pipe.write_end.close();
        EXPECT_EQ(wait(pid), 7);
        char bytes[10];
        EXPECT_EQ(OSAPI::read_short(pipe.read_end.fd, bytes, sizeof bytes), now ? 0 : 3);
    }
}

// ---- exec ------------------------------------------------------------------------------------

TEST(Exec, BecomesTheProgramThatThePathHas) {
    const Child child([] {
        const char* const arguments[] = {"anything", "-c",  "exit $#", "name",
                                         "one",      "two", nullptr};
        OSAPI::exec("sh", arguments);
        return 99;
    });
    EXPECT_EQ(wait(child.pid), 2);
}

// With a script on its standard input, a shell that is given no more than its name reads that.
TEST(Exec, WithoutArgumentsGivesTheProgramItsNameAlone) {
    const std::string script = "exit $((40 + $#))";
    OSAPI::Pipe pipe;
    pipe.open();
    OSAPI::write(pipe.write_end.fd, script.data(), script.size());
    pipe.write_end.close();
    const Child child([&] {
        OSAPI::dup2(pipe.read_end.fd, 0);
        OSAPI::exec("sh", nullptr);
        return 99;
    });
    EXPECT_EQ(wait(child.pid), 40);
}

TEST(Exec, ReturnsByThrowingOnly) {
    const std::string place = in("void OSAPI::exec(const char*, const char* const*)");
    const char* const arguments[] = {"missing", nullptr};
    for (const char* const* argv : {arguments, static_cast<const char* const*>(nullptr)}) {
        EXPECT_EQ(message_without_line_of([&] { OSAPI::exec("/no/such 100%d", argv); }),
                  "exec(/no/such 100%d): No such file or directory" + place);
        EXPECT_EQ(message_without_line_of([&] { OSAPI::exec("/", argv); }),
                  "exec(/): Permission denied" + place);
    }
}

TEST(Exec, ClosesMarkedDescriptors) {
    for (const bool marked : {false, true}) {
        OSAPI::Pipe pipe;
        pipe.open();
        if (marked)
            OSAPI::close_on_exec(pipe.write_end.fd);
        const std::string command =
            "exec 2>/dev/null; : >&" + std::to_string(pipe.write_end.fd) + " && exit 5 || exit 6";
        const Child child([&] {
            const char* const arguments[] = {"bash", "-c", command.c_str(), nullptr};
            OSAPI::exec("bash", arguments);
            return 99;
        });
        EXPECT_EQ(wait(child.pid), marked ? 6 : 5);
    }
}

// ---- kill ------------------------------------------------------------------------------------

TEST(Kill, SendsASignal) {
    for (const bool throwing : {false, true}) {
        const Child child(wait_for_ever);
        if (throwing)
            OSAPI::kill(child.pid, SIGTERM);
        else
            EXPECT_EQ(OSAPI::_kill(child.pid, SIGTERM), 0);
        EXPECT_EQ(wait(child.pid), SIGTERM);
    }
    EXPECT_NO_THROW(OSAPI::kill(::getpid(), 0)) << "0 only asks whether one may";
}

TEST(Kill, ThrowsTheSystemsReason) {
    const std::string place = in("void OSAPI::kill(OSAPI_pid_t, int)");
    const OSAPI_pid_t reaped = [] {
        const DeadChild child(0);
        return child.pid;
    }();
    EXPECT_EQ(message_without_line_of([&] { OSAPI::kill(reaped, 0); }),
              "kill(" + std::to_string(reaped) + ",0): No such process" + place);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::kill(::getpid(), 1000); }),
              "kill(" + std::to_string(::getpid()) + ",1000): Invalid argument" + place);
    errno = 0;
    EXPECT_EQ(OSAPI::_kill(::getpid(), 1000), -1);
    EXPECT_EQ(errno, EINVAL);
}

// ---- _wait_until_dead ------------------------------------------------------------------------

TEST(WaitUntilDead, GivesTheExitCode) {
    for (const int code : {0, 1, 3, 15, 127, 128, 255}) {
        const DeadChild child(code);
        OSAPI_pid_t out = 0;
        EXPECT_EQ(OSAPI::_wait_until_dead(child.pid, &out, false), code);
        EXPECT_EQ(out, child.pid);
    }
}

TEST(WaitUntilDead, GivesTheSignalThatKilledTheChild) {
    const rlimit no_core = {0, 0}; // the signal is distinguished from the mark of a dump, too
    setrlimit(RLIMIT_CORE, &no_core);
    for (const int signum : {SIGKILL, SIGTERM, SIGHUP, SIGQUIT, SIGRTMAX}) {
        const KilledChild child(signum);
        OSAPI_pid_t out = 0;
        EXPECT_EQ(OSAPI::_wait_until_dead(child.pid, &out, false), signum);
        EXPECT_EQ(out, child.pid);
    }
}

TEST(WaitUntilDead, WithNohangOnlyAsks) {
    OSAPI_pid_t out = 77;
    {
        const Child running(wait_for_ever);
        EXPECT_EQ(OSAPI::_wait_until_dead(running.pid, &out, true), -1);
        EXPECT_EQ(OSAPI::_wait_until_dead(-1, &out, true), -1);
        EXPECT_EQ(out, 77) << "nothing has ended";
        EXPECT_TRUE(running.is_there());
    }
    const DeadChild dead(3);
    EXPECT_EQ(OSAPI::_wait_until_dead(dead.pid, &out, true), 3);
    EXPECT_EQ(out, dead.pid);
}

TEST(WaitUntilDead, WaitsForTheEnd) {
    const Child child([] {
        usleep(20000);
        return 4;
    });
    EXPECT_EQ(wait(child.pid), 4);
}

TEST(WaitUntilDead, TakesAnyChildForMinusOne) {
    const DeadChild one(11), two(11);
    OSAPI_pid_t first = 0, second = 0;
    EXPECT_EQ(OSAPI::_wait_until_dead(-1, &first, false), 11);
    EXPECT_EQ(OSAPI::_wait_until_dead(-1, &second, true), 11);
    EXPECT_TRUE((first == one.pid && second == two.pid) || (first == two.pid && second == one.pid));
    EXPECT_EQ(wait(-1), no_such_child);
}

TEST(WaitUntilDead, ReportsNoSuchChild) {
    OSAPI_pid_t out = 77;
    for (const OSAPI_pid_t pid : {OSAPI_pid_t(1), ::getpid(), OSAPI_pid_t(-1)})
        for (const bool nohang : {false, true})
            EXPECT_EQ(OSAPI::_wait_until_dead(pid, &out, nohang), no_such_child);
    const DeadChild child(0);
    EXPECT_EQ(wait(child.pid), 0);
    EXPECT_EQ(wait(child.pid), no_such_child) << "an end is reported once";
    EXPECT_EQ(out, 77);
}

// A group's child is not what was asked for; it has been waited for all the same.
TEST(WaitUntilDead, ThrowsForAGroup) {
    const DeadChild child(0);
    EXPECT_EQ(message_without_line_of([] { wait(0); }),
              "unexpected return value from waitpid()" + in_wait);
    EXPECT_FALSE(child.is_there());
}

TEST(WaitUntilDead, IgnoresThatAChildHasStopped) {
    const Child child(wait_for_ever);
    ::kill(child.pid, SIGSTOP);
    child.wait_for_its_stop();
    EXPECT_EQ(wait(child.pid, true), -1);
    const Child killer([&] {
        usleep(20000);
        return ::kill(child.pid, SIGKILL);
    });
    EXPECT_EQ(wait(child.pid), SIGKILL);
}

// The stops of a traced child are reported to its waiter, which must go on waiting. Where tracing
// is forbidden the child is stopped as any other.
TEST(WaitUntilDead, WaitsOnAfterAStopThatIsReported) {
    const Child child([] {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        return wait_for_ever();
    });
    child.wait_for_its_stop();
    const Child killer([&] {
        usleep(20000);
        return ::kill(child.pid, SIGKILL);
    });
    OSAPI_pid_t out = 0;
    EXPECT_EQ(OSAPI::_wait_until_dead(child.pid, &out, false), SIGKILL);
    EXPECT_EQ(out, child.pid);
}

// It reports an end that has not come.
TEST(WaitUntilDead, TakesAnInterruptedWaitForAnExitWithZero) {
    const Child child(wait_for_ever);
    const Alarms alarms;
    OSAPI_pid_t out = 77;
    EXPECT_EQ(OSAPI::_wait_until_dead(child.pid, &out, false), 0);
    EXPECT_EQ(out, -1) << "marks the interruption";
    EXPECT_NO_THROW(OSAPI::wait_until_dead(child.pid));
    EXPECT_TRUE(child.is_there());
    EXPECT_EQ(::kill(child.pid, 0), 0);
}

void do_nothing(int) {}

TEST(WaitUntilDead, IsNotInterruptedByAHandlerThatRestartsCalls) {
    const OSAPI::SignalHandler handler(SIGUSR1, do_nothing, true);
    const OSAPI_pid_t parent = ::getpid();
    const Child child([=] {
        for (int i = 0; i < 5; i++) {
            ::kill(parent, SIGUSR1);
            usleep(4000);
        }
        return 3;
    });
    EXPECT_EQ(wait(child.pid), 3);
}

// ---- wait_until_dead -------------------------------------------------------------------------

TEST(WaitUntilDead, AcceptsAnExitWithZeroOnlyWhenItMayThrow) {
    const DeadChild good(0), bad(3);
    const KilledChild killed(SIGKILL);
    EXPECT_NO_THROW(OSAPI::wait_until_dead(good.pid));
    EXPECT_EQ(message_without_line_of([&] { OSAPI::wait_until_dead(bad.pid); }), non_zero);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::wait_until_dead(killed.pid); }), non_zero);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::wait_until_dead(good.pid); }), non_zero)
        << "which is no child any more";
}

// ---- About this process ----------------------------------------------------------------------

TEST(RunningAsRoot, LooksAtTheEffectiveUser) {
    EXPECT_EQ(OSAPI::running_as_root(), geteuid() == 0);
    EXPECT_TRUE(holds_unprivileged([] { return !OSAPI::running_as_root(); }));
}

TEST(Consoles, AreTerminals) {
    EXPECT_EQ(status_of_child([] {
                  const int null = fcntl(some_descriptor(), F_DUPFD, 3);
                  const int terminal = fcntl(posix_openpt(O_RDWR | O_NOCTTY), F_DUPFD, 3);
                  for (const int console : {0, 1, 2}) {
                      for (const int fd : {0, 1, 2})
                          dup2(fd == console ? terminal : null, fd);
                      if (OSAPI::stdin_is_console() != (console == 0) ||
                          OSAPI::stdout_is_console() != (console == 1) ||
                          OSAPI::stderr_is_console() != (console == 2))
                          return false;
                  }
                  return true;
              }),
              0);
}

// ---- ChildProcess ----------------------------------------------------------------------------

TEST(ChildProcess, IsAProcessAndNothingElse) {
    EXPECT_EQ(sizeof(ChildProcess), sizeof(OSAPI_pid_t));
    EXPECT_FALSE(std::is_copy_constructible<ChildProcess>::value);
    ChildProcess child;
    EXPECT_EQ(child.pid, -1);
    EXPECT_NO_THROW(child.stop());
    child.pid = 0;
    EXPECT_NO_THROW(child.stop());
    EXPECT_EQ(child.pid, 0) << "nothing happens below 1";
}

TEST(ChildProcess, RunsAFunctionUntilItsEnd) {
    ChildProcess child;
    const OSAPI_pid_t pid = child.start([] { return 0; });
    EXPECT_GT(pid, 0);
    EXPECT_EQ(child.pid, pid);
    child.stop();
    EXPECT_EQ(child.pid, -1);
    EXPECT_EQ(wait(pid), no_such_child);
    child.start([] { return 0; });
    child.stop();
}

TEST(ChildProcess, KeepsAChildThatEndedBadly) {
    ChildProcess child;
    const OSAPI_pid_t pid = child.start([] { return 3; });
    EXPECT_EQ(message_without_line_of([&] { child.stop(); }), non_zero);
    EXPECT_EQ(child.pid, pid);
    EXPECT_EQ(message_without_line_of([&] { child.stop(); }), non_zero);
}

TEST(ChildProcess, WaitsAndSendsNoSignal) {
    ChildProcess child;
    child.start([] {
        usleep(20000);
        return 0;
    });
    EXPECT_NO_THROW(child.stop());
}

TEST(ChildProcess, RunsWhatIsRegisteredForItsEnd) {
    OSAPI::Pipe pipe;
    pipe.open();
    exit_reported_at = pipe.write_end.fd;
    ChildProcess child;
    child.start([] {
        atexit(tell_of_the_end);
        return 0;
    });
    child.stop();
    char bytes[3];
    EXPECT_EQ(OSAPI::read_short(pipe.read_end.fd, bytes, 3), 3);
}

// Otherwise the child would unwind into the parent's callers, which would go on twice.
TEST(ChildProcess, NeverLetsAnExceptionIntoItsCaller) {
    const OSAPI_pid_t self = ::getpid();
    ChildProcess child;
    try {
        child.start([]() -> int {
            signal(SIGABRT, SIG_DFL);
            ::close(2); // the message of the termination is not wanted
            throw std::runtime_error("no more");
        });
    } catch (...) {
    }
    if (::getpid() != self)
        _exit(0); // which stop() would take for a good end
    EXPECT_EQ(wait(child.pid), SIGABRT);
}

TEST(ChildProcess, TakesAnInterruptedWaitForItsEnd) {
    ChildProcess child;
    const OSAPI_pid_t pid = child.start(wait_for_ever);
    {
        const Alarms alarms;
        EXPECT_NO_THROW(child.stop());
    }
    EXPECT_EQ(child.pid, -1);
    EXPECT_EQ(wait(pid, true), -1) << "it still runs, without an owner";
    ::kill(pid, SIGKILL);
    EXPECT_EQ(wait(pid), SIGKILL);
}

} // namespace
