// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/jobs.h"

#include "osapi/osapi.h"
#include "tools/failure.h"
#include "tools/say.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>

namespace velmora {

// In this process: what is loaded and opened serves every piece.
static std::size_t run_in_turn(std::size_t count, const std::function<void(std::size_t)>& work,
                               const std::function<void()>& done) {
    std::size_t failed = 0;
    for (std::size_t i = 0; i < count; i++) {
        if (exit_status_of([&] { work(i); }) != EXIT_DONE)
            failed++;
        done();
    }
    return failed;
}

// Returns the process that does work(i), or -1 with errno.
static OSAPI_pid_t start_child(std::size_t i, const std::function<void(std::size_t)>& work) {
    fflush(nullptr); // else the child would write the buffered output again
    const OSAPI_pid_t parent = OSAPI::getpid();
    const OSAPI_pid_t child = OSAPI::fork_can_fail();
    if (child != 0)
        return child;
    // An interrupted render leaves no running children, not even one made at that moment.
    if (!OSAPI::end_with_parent(parent))
        OSAPI::exit_now(EXIT_FAILED);
    const ExitStatus status = exit_status_of([&] { work(i); });
    fflush(nullptr);
    OSAPI::exit_now(status);
}

std::size_t run_jobs(std::size_t count, int jobs, const std::function<void(std::size_t)>& work,
                     const std::function<std::string(std::size_t)>& name,
                     const std::function<void()>& done) {
    if (jobs <= 1)
        return run_in_turn(count, work, done);

    // If the caller ignores SIGCHLD, the system drops the statuses of children.
    const OSAPI::SignalDefault statuses_kept(SIGCHLD);
    std::map<OSAPI_pid_t, std::size_t> running;
    std::size_t next = 0, failed = 0;
    while (next < count || !running.empty()) {
        // Start pieces until `jobs` are running.
        if (next < count && running.size() < std::size_t(jobs)) {
            const OSAPI_pid_t child = start_child(next, work);
            if (child == -1) {
                say(name(next) + ": cannot start a process: " + OSAPI::error_text(errno));
                failed++;
                done();
            } else {
                running[child] = next;
            }
            next++;
            continue;
        }

        // Then wait for one to end, and account for it.
        const OSAPI::ChildEnd end = OSAPI::wait_for_any_child();
        const auto ended = running.find(end.pid);
        // The caller may have children of its own.
        if (ended == running.end())
            continue;
        if (end.signal != 0)
            say(name(ended->second) + ": died: " + strsignal(end.signal));
        if (end.exit_code != EXIT_DONE)
            failed++;
        running.erase(ended);
        done();
    }
    return failed;
}

} // namespace velmora
