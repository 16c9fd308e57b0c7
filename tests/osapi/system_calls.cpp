#include "tests/osapi/system_calls.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <utility>

namespace {

SystemCalls* active = nullptr;

[[gnu::format(printf, 1, 2)]] std::string text(const char* format, ...) {
    char buffer[1000];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return buffer;
}

} // namespace

SystemCalls::SystemCalls() : mappings(0) {
    active = this;
}

SystemCalls::~SystemCalls() {
    active = nullptr;
}

void SystemCalls::answer(const std::string& name, int nth, long result, int error) {
    answered[{name, calls[name] + nth}] = {result, error};
}

int SystemCalls::count(const std::string& name) const {
    const auto found = calls.find(name);
    return found == calls.end() ? 0 : found->second;
}

bool SystemCalls::answers(const std::string& name, const std::string& arguments, long& result) {
    made.push_back(name + "(" + arguments + ")");
    const auto found = answered.find({name, ++calls[name]});
    if (found == answered.end())
        return false;
    result = found->second.result;
    errno = found->second.error;
    return true;
}

// ---- The calls -------------------------------------------------------------------------------

// Defines __wrap_<name>, which answers for the active SystemCalls or passes the call on.
#define WRAPPED(type, name, parameters, arguments, ...)                                            \
    extern "C" type __real_##name parameters;                                                      \
    extern "C" type __wrap_##name parameters {                                                     \
        long result = 0;                                                                           \
        if (active && active->answers(#name, text(__VA_ARGS__), result))                           \
            return static_cast<type>(result);                                                      \
        return __real_##name arguments;                                                            \
    }

WRAPPED(int, fstat, (int fd, struct stat* status), (fd, status), "%s", "")
WRAPPED(int, stat, (const char* path, struct stat* status), (path, status), "%s", path)
WRAPPED(int, mlock, (const void* address, size_t bytes), (address, bytes), "%p, %zu", address,
        bytes)
WRAPPED(int, munlock, (const void* address, size_t bytes), (address, bytes), "%p, %zu", address,
        bytes)
WRAPPED(int, fsync, (int fd), (fd), "%s", "")
WRAPPED(int, rename, (const char* from, const char* to), (from, to), "%s, %s", from, to)
WRAPPED(int, unlink, (const char* path), (path), "%s", path)
WRAPPED(ssize_t, write, (int fd, const void* bytes, size_t n), (fd, bytes, n), "%zu", n)
WRAPPED(int, access, (const char* path, int mode), (path, mode), "%s, %d", path, mode)

extern "C" int __real_open(const char* path, int flags, ...);
extern "C" int __real_fcntl(int fd, int command, ...);
extern "C" int __real_close(int fd);
extern "C" void* __real_mmap(void*, size_t, int, int, int, off_t);
extern "C" int __real_munmap(void*, size_t);

extern "C" int __wrap_open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if (flags & O_CREAT) {
        va_list args;
        va_start(args, flags);
        mode = va_arg(args, mode_t);
        va_end(args);
    }
    long result = 0;
    if (active && active->answers("open", text("%#o, %#o", unsigned(flags), mode), result))
        return int(result);
    return __real_open(path, flags, mode);
}

extern "C" int __wrap_fcntl(int fd, int command, ...) {
    va_list args;
    va_start(args, command);
    const long argument = va_arg(args, long);
    va_end(args);
    const bool takes_none = command == F_GETFD || command == F_GETFL;
    long result = 0;
    if (active &&
        active->answers("fcntl",
                        takes_none ? text("%d", command) : text("%d, %d", command, int(argument)),
                        result))
        return int(result);
    return __real_fcntl(fd, command, argument);
}

// As the system does, a close that reports a failure has closed the descriptor all the same.
extern "C" int __wrap_close(int fd) {
    long result = 0;
    if (active && active->answers("close", "", result)) {
        const int error = errno;
        __real_close(fd);
        errno = error;
        return int(result);
    }
    return __real_close(fd);
}

extern "C" void* __wrap_mmap(void* address, size_t bytes, int protection, int flags, int fd,
                             off_t offset) {
    long result = 0;
    if (active && active->answers("mmap",
                                  text("%zu, %d, %#x, %d, %ld", bytes, protection, unsigned(flags),
                                       fd < 0 ? fd : 0, long(offset)),
                                  result))
        return MAP_FAILED;
    void* const data = __real_mmap(address, bytes, protection, flags, fd, offset);
    if (active && data != MAP_FAILED)
        active->mappings++;
    return data;
}

extern "C" int __wrap_munmap(void* address, size_t bytes) {
    long result = 0;
    if (active && active->answers("munmap", text("%zu", bytes), result))
        return int(result);
    const int done = __real_munmap(address, bytes);
    if (active && done == 0)
        active->mappings--;
    return done;
}
