#include "tools/frames/jobs.h"

#include "osapi/osapi.h"
#include "tools/failure.h"
#include "tools/say.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmora {

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

static pid_t start_child(std::size_t i, const std::function<void(std::size_t)>& work) {
    fflush(nullptr); // or the child would write what is buffered a second time
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child != 0)
        return child;
    // An interrupted render leaves no children behind, not even one made at that moment.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent)
        _exit(EXIT_FAILED);
    const ExitStatus status = exit_status_of([&] { work(i); });
    fflush(nullptr);
    _exit(status);
}

// Waits for any child and returns it, with what became of it in `status`.
static pid_t wait_for_child(int& status) {
    pid_t child;
    do
        child = waitpid(-1, &status, 0);
    while (child == -1 && errno == EINTR);
    if (child == -1)
        throw WorkFailure("waiting for frames", strerror(errno));
    return child;
}

std::size_t run_jobs(std::size_t count, int jobs, const std::function<void(std::size_t)>& work,
                     const std::function<std::string(std::size_t)>& name,
                     const std::function<void()>& done) {
    if (jobs <= 1)
        return run_in_turn(count, work, done);

    // A caller may have left SIGCHLD ignored: the system would then drop the statuses of children.
    const OSAPI::SignalDefault statuses_kept(SIGCHLD);
    std::map<pid_t, std::size_t> running;
    std::size_t next = 0, failed = 0;
    while (next < count || !running.empty()) {
        if (next < count && running.size() < std::size_t(jobs)) {
            const pid_t child = start_child(next, work);
            if (child == -1) {
                say(name(next) + ": cannot start a process: " + strerror(errno));
                failed++;
                done();
            } else {
                running[child] = next;
            }
            next++;
            continue;
        }

        int status = 0;
        const auto ended = running.find(wait_for_child(status));
        if (ended == running.end())
            continue;
        if (WIFSIGNALED(status))
            say(name(ended->second) + ": died: " + strsignal(WTERMSIG(status)));
        if (!WIFEXITED(status) || WEXITSTATUS(status) != EXIT_DONE)
            failed++;
        running.erase(ended);
        done();
    }
    return failed;
}

} // namespace velmora
