// SPDX-License-Identifier: BSD-3-Clause
#include "core/unwinding.h"
#include "osapi/failure.h"
#include "osapi/osapi.h"

#include <sys/stat.h>
#include <unistd.h>

namespace OSAPI {

// ---- Open files ------------------------------------------------------------------------------

void DiskFile::stat(struct ::stat* status) const {
    if (fstat(fd, status) == -1)
        XTHROW_ERRNO("fstat");
}

FileTime DiskFile::get_mtime() const {
    struct ::stat status;
    stat(&status);
    return status.st_mtime;
}

// ---- Streams ---------------------------------------------------------------------------------

// The seeks of both streams, which keep their position in `pos`; no call when it would not change.
static s64 seek_to(const DiskFile& file, s64& pos, s64 target) {
    if (target != pos)
        pos = lseek(file.fd, target, SEEK_SET);
    return pos;
}

static s64 seek_by(const DiskFile& file, s64& pos, s64 delta) {
    if (delta != 0)
        pos = lseek(file.fd, delta, SEEK_CUR);
    return pos;
}

int FileInput::read(char* buf, int n) {
    const sword count = read_short(file.fd, buf, uword(n));
    pos += count;
    return int(count);
}

s64 FileInput::seek_from_start(s64 target) {
    return seek_to(file, pos, target);
}

s64 FileInput::seek_from_curpos(s64 delta) {
    return seek_by(file, pos, delta);
}

int FileOutput::write(const char* buf, int n) {
    const sword count = OSAPI::write(file.fd, buf, uword(n));
    pos += count;
    return int(count);
}

s64 FileOutput::seek_from_start(s64 target) {
    return seek_to(file, pos, target);
}

s64 FileOutput::seek_from_curpos(s64 delta) {
    return seek_by(file, pos, delta);
}

// ---- A file that is written through a buffer -------------------------------------------------

// A descriptor that this object does not own is stored last, when nothing can throw any more.
BufferedFileOutput::BufferedFileOutput(fd_t fd, int bufsize, bool close_when_done)
    : file(close_when_done ? fd : -1), output(file), buffered(output, bufsize),
      close_when_done(close_when_done) {
    file.fd = fd;
}

// The members' destructors follow, last member first: `buffered` retries what a failed flush left,
// and `file` closes its descriptor if it still has one.
BufferedFileOutput::~BufferedFileOutput() noexcept(false) {
    try {
        buffered.flush();
    } catch (...) {
        if (velmora::unwinding())
            return;
        throw;
    }
    if (!close_when_done)
        file.fd = -1;
}

} // namespace OSAPI
