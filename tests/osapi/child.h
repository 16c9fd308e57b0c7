// SPDX-License-Identifier: BSD-3-Clause

// A child process that is there while the object lives, and is killed and reaped in the end.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

inline void wait_a_moment() {
    const timespec moment = {0, 1000000};
    nanosleep(&moment, nullptr);
}

class Child {
public:
    // Runs `action`, whose result is the exit code, without what is registered for a process's end.
    explicit Child(const std::function<int()>& action) : pid(::fork()) {
        if (pid == 0)
            _exit(action());
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        if (!is_there())
            return;
        ::kill(pid, SIGKILL);
        while (::waitpid(pid, nullptr, 0) == -1 && errno == EINTR) {
        }
    }

    // Whether it runs or has ended without anybody having waited for it.
    bool is_there() const {
        siginfo_t info;
        return waitid(P_PID, id_t(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0;
    }

    // Until it has ended; it stays to be waited for.
    void wait_for_its_end() const {
        siginfo_t info;
        waitid(P_PID, id_t(pid), &info, WEXITED | WNOWAIT);
    }

    // Until it has stopped.
    void wait_for_its_stop() const {
        siginfo_t info;
        waitid(P_PID, id_t(pid), &info, WSTOPPED | WNOWAIT);
    }

    const pid_t pid;
};

// What a child runs that only waits to be killed.
inline int wait_for_ever() {
    for (;;)
        ::pause();
}
