// SPDX-License-Identifier: BSD-3-Clause

// The calls about processes, signals, sockets, time and stdio.
#include "tests/osapi/wrapped_calls.h"

#include <netdb.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/types.h>

#include <cerrno>
#include <cstring>
#include <vector>

// ---- Processes and signals -------------------------------------------------------------------

WRAPPED(pid_t, fork, (), (), "%s", "")
WRAPPED(int, kill, (pid_t pid, int signum), (pid, signum), "%d, %d", pid, signum)
WRAPPED_OUT(pid_t, waitpid, (pid_t pid, int* status, int options), (pid, status, options), status,
            sizeof *status, "%d, %d", pid, options)
WRAPPED(uid_t, geteuid, (), (), "%s", "")
WRAPPED(int, isatty, (int fd), (fd), "%d", fd)
// Written down as the signal, the flags, and the signals of the mask.
static std::string action_text(int signum, const struct sigaction* action) {
    std::string text = std::to_string(signum);
    if (!action)
        return text;
    text += ", " + arguments_text("%#x", unsigned(action->sa_flags));
    for (int other = 1; other < NSIG; other++)
        if (sigismember(&action->sa_mask, other) == 1)
            text += ", " + std::to_string(other);
    return text;
}

WRAPPED(int, sigaction, (int signum, const struct sigaction* action, struct sigaction* old),
        (signum, action, old), "%s", action_text(signum, action).c_str())

// Written down as the program and what it is given.
static std::string command_line(const char* file, const std::vector<char*>& argv) {
    std::string text = file;
    for (std::size_t i = 0; i + 1 < argv.size(); i++)
        text += std::string(", ") + argv[i];
    return text;
}

extern "C" int __real_execvp(const char* file, char* const* argv);

extern "C" int __wrap_execvp(const char* file, char* const* argv) {
    std::vector<char*> arguments;
    do
        arguments.push_back(*argv);
    while (*argv++);
    long result = 0;
    if (active_system_calls &&
        active_system_calls->answers("execvp", command_line(file, arguments), result))
        return int(result);
    return __real_execvp(file, arguments.data());
}

extern "C" int __wrap_execlp(const char* file, const char* argument, ...) {
    std::vector<char*> arguments = {const_cast<char*>(argument)};
    va_list args;
    va_start(args, argument);
    while (arguments.back())
        arguments.push_back(va_arg(args, char*));
    va_end(args);
    long result = 0;
    if (active_system_calls &&
        active_system_calls->answers("execlp", command_line(file, arguments), result))
        return int(result);
    return __real_execvp(file, arguments.data());
}

// ---- Time ------------------------------------------------------------------------------------

WRAPPED_OUT(int, gettimeofday, (timeval * now, void* zone), (now, zone), now, sizeof *now, "%s", "")
WRAPPED(time_t, time, (time_t * now), (now), "%s", "")
WRAPPED(unsigned, sleep, (unsigned seconds), (seconds), "%u", seconds)
WRAPPED(int, pause, (), (), "%s", "")
WRAPPED(int, sched_yield, (), (), "%s", "")

// ---- Sockets ---------------------------------------------------------------------------------

WRAPPED_OUT(int, gethostname, (char* name, size_t size), (name, size), name, size, "%zu", size)
WRAPPED(int, socket, (int domain, int type, int protocol), (domain, type, protocol), "%d, %d, %d",
        domain, type, protocol)
WRAPPED(int, setsockopt, (int fd, int level, int option, const void* value, socklen_t size),
        (fd, level, option, value, size), "%d, %d, %d", level, option,
        *static_cast<const int*>(value))
WRAPPED(int, bind, (int fd, const sockaddr* address, socklen_t size), (fd, address, size), "%u",
        size)
WRAPPED(int, listen, (int fd, int backlog), (fd, backlog), "%d", backlog)
WRAPPED(int, connect, (int fd, const sockaddr* address, socklen_t size), (fd, address, size), "%u",
        size)
WRAPPED(int, accept, (int fd, sockaddr* address, socklen_t* size), (fd, address, size), "%u", *size)

// Answered by -1, it fails with h_errno; answered by an address family, it finds such a host.
extern "C" hostent* __real_gethostbyname(const char* name);

extern "C" hostent* __wrap_gethostbyname(const char* name) {
    long result = 0;
    if (!active_system_calls || !active_system_calls->answers("gethostbyname", name, result))
        return __real_gethostbyname(name);
    if (result == -1) {
        h_errno = errno;
        return nullptr;
    }
    static char address[16] = {127, 0, 0, 1}, another[16] = {127, 0, 0, 2};
    static char* addresses[] = {address, another, nullptr};
    static hostent host = {};
    host.h_addrtype = int(result);
    host.h_length = result == AF_INET ? 4 : 16;
    host.h_addr_list = addresses;
    return &host;
}

// ---- stdio -----------------------------------------------------------------------------------

WRAPPED_POINTER(FILE*, fdopen, (int fd, const char* mode), (fd, mode), "%s", mode)

extern "C" int __real_fclose(FILE* file);

extern "C" int __wrap_fclose(FILE* file) {
    long result = 0;
    if (active_system_calls && active_system_calls->answers("fclose", "", result)) {
        const int error = errno;
        __real_fclose(file);
        errno = error;
        return int(result);
    }
    return __real_fclose(file);
}
