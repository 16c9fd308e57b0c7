// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "osapi-unix"

#include "core/xception.h"
#include "osapi/failure.h"
#include "osapi/osapi.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace OSAPI {

// ---- Starting and ending ---------------------------------------------------------------------

OSAPI_pid_t getpid() {
    return ::getpid();
}

OSAPI_pid_t fork_can_fail() {
    return ::fork();
}

OSAPI_pid_t fork() {
    const OSAPI_pid_t pid = fork_can_fail();
    if (pid == -1)
        XTHROW_ERRNO("fork");
    return pid;
}

// In this order, so that a parent that ends between the two calls is noticed by the second.
bool end_with_parent(OSAPI_pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    return getppid() == parent;
}

void exit(int status) {
    ::exit(status);
}

void exit_now(int status) {
    ::_exit(status);
}

void exec(const char* file, const char* const* argv) {
    if (argv)
        execvp(file, const_cast<char* const*>(argv));
    else
        execlp(file, file, static_cast<char*>(nullptr));
    XTHROW_ERRNO("exec(%s)", file);
}

int _kill(OSAPI_pid_t pid, int sig) {
    return ::kill(pid, sig);
}

void kill(OSAPI_pid_t pid, int sig) {
    if (_kill(pid, sig) != 0)
        XTHROW_ERRNO("kill(%d,%d)", pid, sig);
}

// ---- Waiting ---------------------------------------------------------------------------------

static const int no_such_child = 15;

int _wait_until_dead(OSAPI_pid_t pid, OSAPI_pid_t* out, bool nohang) {
    int status = 0; // kept by a call that is interrupted, which is then judged like an end
    for (;;) {
        const OSAPI_pid_t waited = waitpid(pid, &status, nohang ? WNOHANG : 0);
        // No such child, an interruption, or a failure.
        if (waited == -1) {
            if (errno == ECHILD)
                return no_such_child;
            if (errno != EINTR)
                XTHROW_ERRNO("waitpid");
        } else if (waited != pid) {
            if (waited == 0 && nohang)
                return -1;
            if (pid != -1)
                XTHROW("unexpected return value from waitpid()");
        }

        // The low seven bits: 0 for an exit, all set for a stop, otherwise the fatal signal.
        const int end = status & 0x7f;
        if (end == 0x7f)
            continue;
        if (out)
            *out = waited;
        return end == 0 ? (status >> 8) & 0xff : end;
    }
}

void wait_until_dead(OSAPI_pid_t pid) {
    if (_wait_until_dead(pid, nullptr, false) != 0)
        XTHROW("child process returned non-zero exit code");
}

ChildEnd wait_for_any_child() {
    for (;;) {
        int status = 0;
        const OSAPI_pid_t pid = waitpid(-1, &status, 0);
        if (pid == -1 && errno != EINTR)
            XTHROW_ERRNO("waitpid");
        if (pid != -1 && WIFEXITED(status))
            return {pid, WEXITSTATUS(status), 0};
        if (pid != -1 && WIFSIGNALED(status))
            return {pid, -1, WTERMSIG(status)};
    }
}

// ---- About this process ----------------------------------------------------------------------

bool running_as_root() {
    return geteuid() == 0;
}

bool stdin_is_console() {
    return isatty(STDIN_FILENO);
}

bool stdout_is_console() {
    return isatty(STDOUT_FILENO);
}

bool stderr_is_console() {
    return isatty(STDERR_FILENO);
}

// ---- ChildProcess ----------------------------------------------------------------------------

// noexcept, as an exception from `fn` would unwind into the parent's callers, in the child.
static int call(int (*fn)()) noexcept {
    return fn();
}

OSAPI_pid_t ChildProcess::start(int (*fn)()) {
    pid = fork();
    if (pid == 0)
        exit(call(fn));
    return pid;
}

void ChildProcess::stop() {
    if (pid < 1)
        return;
    wait_until_dead(pid);
    pid = -1;
}

} // namespace OSAPI
