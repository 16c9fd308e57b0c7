// SPDX-License-Identifier: BSD-3-Clause

// Writers that are killed, as by kill -9, before each of their system calls in turn: the final name
// holds the old bytes or the new ones, whole.
#include "osapi/osapi.h"
#include "osapi/whole_file.h"

#include "tests/osapi/files.h"
#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <set>
#include <string>
#include <vector>

using OSAPI::AtomicFileWrite;
using OSAPI::FileDescriptor;
using OSAPI::OPEN_WRITE;

namespace {

const std::string old_bytes = "what was there before";
const std::string new_bytes = "0123456789abcdefghijklmnopqrstuvwxyz";

struct Writer {
    const char* name;
    void (*write)(const char* path);
    bool completes;
};

const Writer writers[] = {
    {"complete",
     [](const char* path) {
         AtomicFileWrite file(path, OPEN_WRITE);
         const FileDescriptor owner(file.fd);
         OSAPI::write(file.fd, new_bytes.data(), new_bytes.size());
         file.complete();
     },
     true},
    {"complete_nosync",
     [](const char* path) {
         AtomicFileWrite file(path, OPEN_WRITE);
         const FileDescriptor owner(file.fd);
         OSAPI::write(file.fd, new_bytes.data(), new_bytes.size());
         file.complete_nosync();
     },
     true},
    {"exclusive",
     [](const char* path) {
         const std::unique_ptr<AtomicFileWrite> file(AtomicFileWrite::exclusive(path));
         const FileDescriptor owner(file->fd);
         OSAPI::write(file->fd, new_bytes.data(), new_bytes.size());
         file->complete();
     },
     true},
    {"a buffered file",
     [](const char* path) {
         AtomicFileWrite file(path, OPEN_WRITE);
         OSAPI::BufferedFileOutput out(file.fd, 10, true);
         for (const char ch : new_bytes)
             out.buffered.write(&ch, 1);
         out.buffered.flush();
         file.complete();
     },
     true},
    {"a whole file",
     [](const char* path) {
         velmora::write_whole_file(path, [](OSAPI::fd_t fd) {
             OSAPI::pwrite(fd, new_bytes.data() + 20, new_bytes.size() - 20, 20);
             OSAPI::write(fd, new_bytes.data(), 20);
         });
     },
     true},
    {"abort",
     [](const char* path) {
         AtomicFileWrite file(path, OPEN_WRITE);
         const FileDescriptor owner(file.fd);
         OSAPI::write(file.fd, new_bytes.data(), new_bytes.size());
     },
     false},
};

// Whether the writer was killed before its `nth` call, rather than done by then.
bool killed(const Writer& writer, const std::string& path, int nth) {
    const int status = status_of_child([&] {
        SystemCalls calls;
        for (const char* call : {"write", "pwrite"})
            calls.shorten(call, 3);
        calls.kill_before(nth);
        writer.write(path.c_str());
        return true;
    });
    EXPECT_TRUE(status == 0 || (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)) << status;
    return status != 0;
}

TEST(KilledWriter, LeavesTheOldFileOrTheNewOneWhole) {
    const ScratchFolder folder;
    const std::string path = folder.file("out"), none = "(none)";
    for (const Writer& writer : writers)
        for (const bool was_there : {true, false}) {
            std::set<std::string> seen;
            int kills = 0;
            for (bool done = false; !done; kills += !done) {
                unlink(path.c_str());
                unlink((path + ".inprogress").c_str());
                if (was_there)
                    folder.write("out", old_bytes);
                done = !killed(writer, path, kills + 1);
                const std::string now = bytes_of(path), before = was_there ? old_bytes : none;
                EXPECT_TRUE(now == before || now == new_bytes)
                    << writer.name << ", killed before call " << kills + 1 << ": " << now;
                seen.insert(now);
                EXPECT_TRUE(!done || now == (writer.completes ? new_bytes : before)) << writer.name;
            }
            EXPECT_GE(kills, 16) << writer.name << " makes as many calls at least";
            EXPECT_EQ(seen.size(), writer.completes ? 2u : 1u) << writer.name;
        }
}

// What it leaves is in the way only of an exclusive writer.
TEST(KilledWriter, LeavesItsMarkToExclusiveWriters) {
    const ScratchFolder folder;
    const std::string path = folder.write("out", old_bytes);
    ASSERT_TRUE(killed(writers[0], path, 5));
    EXPECT_EQ(folder.names(), std::vector<std::string>({"out", "out.inprogress"}));
    EXPECT_EQ(AtomicFileWrite::exclusive(path.c_str()), nullptr);
    EXPECT_EQ(errno, EEXIST);
    writers[0].write(path.c_str());
    EXPECT_EQ(bytes_of(path), new_bytes);
    EXPECT_EQ(folder.names(), std::vector<std::string>({"out"}));
    EXPECT_NO_THROW(writers[2].write(path.c_str()));
}

// Also where the file that is replaced, and so what is left of its successor, forbids its owner to
// write: as a user whom that binds.
TEST(KilledWriter, OfAWholeFileLeavesTheWayFreeForTheNext) {
    const Writer& whole = writers[4];
    for (const mode_t mode : {0644, 0444})
        EXPECT_TRUE(holds_unprivileged([&] {
            const ScratchFolder folder;
            const std::string path = folder.file("out");
            int kills = 0, left = 0;
            for (bool done = false; !done; kills += !done) {
                unlink(path.c_str());
                folder.write("out", old_bytes);
                chmod(path.c_str(), mode);
                done = !killed(whole, path, kills + 1);
                left += folder.names().size() == 2;
                whole.write(path.c_str());
                struct stat status = {};
                stat(path.c_str(), &status);
                if (bytes_of(path) != new_bytes || folder.names().size() != 1 ||
                    (status.st_mode & 07777) != mode)
                    return false;
            }
            return kills > 20 && left > 15;
        })) << mode;
}

} // namespace
