// SPDX-License-Identifier: BSD-3-Clause
#include "core/unwinding.h"
#include "osapi/failure.h"
#include "osapi/osapi.h"

#include <cerrno>
#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

namespace OSAPI {

int get_page_size() {
    return getpagesize();
}

MemoryMapping::~MemoryMapping() noexcept(false) {
    if (!data)
        return;
    // Forget the range before a failure is reported.
    const int result = munmap(data, size);
    data = nullptr;
    size = 0;
    if (result == -1 && !velmora::unwinding())
        XTHROW_ERRNO("munmap");
}

AnonMapping::AnonMapping(uword len, bool shared) {
    const int sharing = shared ? MAP_SHARED : MAP_PRIVATE;
    void* range = mmap(nullptr, len, PROT_READ | PROT_WRITE, sharing | MAP_ANONYMOUS, -1, 0);
    if (range == MAP_FAILED)
        XTHROW_ERRNO("mmap(anonymous)");
    data = range;
    size = len;
}

FileMapping::FileMapping(fd_t fd, uword len, int flags) {
    map(fd, len, flags);
}

FileMapping::FileMapping(const char* path, int flags) {
    const FileDescriptor file(open(path, flags));
    map(file.fd, getsize(file.fd), flags);
}

void FileMapping::map(fd_t fd, uword len, int flags) {
    void* range = mmap(nullptr, len, flags & 3, MAP_SHARED, fd, 0);
    if (range == MAP_FAILED) {
        data = nullptr;
        size = 0;
        XTHROW_ERRNO("mmap(file)");
    }
    data = range;
    size = len;
}

// ---- Memory that may be lost -------------------------------------------------------------------

// Writing to a pipe copies the bytes in the kernel, where a lost page is the error EFAULT instead
// of a signal. Each write takes as many as the pipe has room for, and they are read back at once.
static uword copy_through_pipe(char* to, const char* from, uword n) {
    Pipe pipe;
    pipe.open();
    close_on_exec(pipe.read_end.fd);
    close_on_exec(pipe.write_end.fd);
    set_blocking(pipe.write_end.fd, false);
    uword copied = 0;
    while (copied < n) {
        const ssize_t count = ::write(pipe.write_end.fd, from + copied, n - copied);
        if (count > 0)
            copied += uword(read(pipe.read_end.fd, to + copied, uword(count)));
        else if (errno == EFAULT)
            break;
        else if (errno != EINTR)
            XTHROW_ERRNO("write");
    }
    pipe.read_end.close();
    pipe.write_end.close();
    return copied;
}

// The process id is obtained in each call, so that a child after fork() reads its own memory.
uword copy_can_fail(void* to, const void* from, uword n) {
    if (n == 0)
        return 0;
    const iovec target = {to, n}, source = {const_cast<void*>(from), n};
    const ssize_t copied = process_vm_readv(::getpid(), &target, 1, &source, 1, 0);
    if (copied >= 0)
        return uword(copied);

    // EFAULT: the first page is lost. Any other error: the call is not permitted here.
    if (errno == EFAULT)
        return 0;
    return copy_through_pipe(static_cast<char*>(to), static_cast<const char*>(from), n);
}

LockMemory::LockMemory(void* addr, uword len) : addr(addr), len(len) {
    if (mlock(addr, len) == -1)
        XTHROW_ERRNO("mlock");
}

LockMemory::~LockMemory() {
    munlock(addr, len);
}

void gather_into_large_pages(void* addr, uword len) {
    const uword large_page = uword(2) << 20;
    const int collapse = 25; // MADV_COLLAPSE, which C libraries of before 2022 have no name for
    const uword start = reinterpret_cast<uword>(addr);

    // The whole large pages within the range.
    const uword first = (start + large_page - 1) / large_page * large_page;
    const uword end = (start + len) / large_page * large_page;
    if (end <= first)
        return;

    // The system only gathers large pages of which at least one small page is present: touch one
    // byte of each.
    for (uword page = first; page < end; page += large_page) {
        volatile char* byte = reinterpret_cast<volatile char*>(page);
        *byte = *byte;
    }
    const int before = errno;
    madvise(reinterpret_cast<void*>(first), end - first, collapse);
    errno = before;
}

} // namespace OSAPI
