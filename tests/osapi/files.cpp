// SPDX-License-Identifier: BSD-3-Clause
#include "tests/osapi/files.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

std::string bytes_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return "(none)";
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool exists(const std::string& path) {
    return fs::symlink_status(path).type() != fs::file_type::not_found;
}

int open_descriptors() {
    // The listing holds one itself, as often as it is made.
    return int(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

int some_descriptor() {
    return open("/dev/null", O_RDWR);
}

int next_descriptor() {
    const int next = some_descriptor();
    close(next);
    return next;
}

std::string permissions_at(const void* address) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t start = 0;
        char permissions[5] = "";
        if (std::sscanf(line.c_str(), "%" SCNxPTR "-%*x %4s", &start, permissions) == 2 &&
            start == reinterpret_cast<std::uintptr_t>(address))
            return permissions;
    }
    return "";
}

int status_of_child(const std::function<bool()>& action) {
    const pid_t child = fork();
    if (child == 0) {
        // Faults end the child plainly, also where a sanitizer listens for them.
        signal(SIGSEGV, SIG_DFL);
        signal(SIGBUS, SIG_DFL);
        bool held = false;
        try {
            held = action();
        } catch (...) {
        }
        _exit(held ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

bool holds_unprivileged(const std::function<bool()>& action) {
    const int status = status_of_child([&] {
        const uid_t nobody = 65534;
        if (getuid() == 0 && (setgroups(0, nullptr) || setgid(nobody) || setuid(nobody)))
            return false;
        return getuid() != 0 && action();
    });
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
