// SPDX-License-Identifier: BSD-3-Clause

// The layer where something has run out: descriptors, room in a file system, the size of a file.
#include "osapi/osapi.h"
#include "osapi/whole_file.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/local_client.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

using OSAPI::AtomicFileWrite;
using OSAPI::FileDescriptor;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

typedef std::vector<std::string> Names;

// ---- Descriptors -----------------------------------------------------------------------------

// Allows this process no new descriptors while it lives. Meant for a child, and to be gone before
// anything else is done: sanitizers need descriptors too.
class NoMoreDescriptors {
public:
    NoMoreDescriptors() {
        const int next = next_descriptor();
        getrlimit(RLIMIT_NOFILE, &before);
        const rlimit limit = {rlim_t(next), before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    NoMoreDescriptors(const NoMoreDescriptors&) = delete;
    NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;
    ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &before); }

private:
    rlimit before;
};

TEST(NoMoreDescriptors, IsReportedByWhateverNeedsOne) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes"), out = folder.file("out");
    const std::string dir = folder.path();
    const FileDescriptor held(some_descriptor());
    const struct {
        std::function<void()> action;
        std::string text;
    } cases[] = {
        {[&] { OSAPI::open(path.c_str(), OPEN_READ); }, "opening file \"" + path + "\""},
        {[&] { OSAPI::FileMapping mapping(path.c_str(), OPEN_READ); },
         "opening file \"" + path + "\""},
        {[&] { AtomicFileWrite write(out.c_str(), OPEN_WRITE); },
         "opening file \"" + out + ".inprogress\""},
        {[&] { OSAPI::dup(held.fd); }, "dup"},
        {[] { OSAPI::Pipe().open(); }, "pipe"},
        {[&] {
             Array<String> listed;
             OSAPI::lsdir(dir.c_str(), listed);
         },
         "opendir(\"" + dir + "\")"},
        {[&] { OSAPI::UNIXServerSocket server(out.c_str()); }, "socket"},
        {[] { OSAPI::TCPServerSocket server(54321); }, "socket"},
        {[] { OSAPI::print_statistics(); }, "opening file \"/proc/self/stat\""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(status_of_child([&] {
                      const int before = open_descriptors();
                      return message_without_place_of([&] {
                                 const NoMoreDescriptors limit;
                                 c.action();
                             }) == c.text + ": Too many open files" &&
                             open_descriptors() == before;
                  }),
                  0)
            << c.text;
    EXPECT_EQ(folder.names(), Names({"file"}));
}

TEST(NoMoreDescriptors, MakesExclusiveGiveNull) {
    const ScratchFolder folder;
    EXPECT_EQ(status_of_child([&] {
                  const NoMoreDescriptors limit;
                  return AtomicFileWrite::exclusive(folder.file("out").c_str()) == nullptr &&
                         errno == EMFILE;
              }),
              0);
}

TEST(NoMoreDescriptors, LeaveAConnectionWaiting) {
    const ScratchFolder folder;
    const std::string path = folder.file("socket");
    EXPECT_EQ(status_of_child([&] {
                  OSAPI::UNIXServerSocket server(path.c_str());
                  const FileDescriptor client(connect_unix(path));
                  const std::string said = message_without_line_of([&] {
                      const NoMoreDescriptors limit;
                      server.accept(true);
                  });
                  const FileDescriptor accepted(server.accept(true));
                  return accepted.is_open() &&
                         said == "accept: Too many open files" +
                                     in("OSAPI::fd_t OSAPI::UNIXServerSocket::accept(bool)");
              }),
              0);
}

// ---- Room ------------------------------------------------------------------------------------

bool put_text(const char* path, const std::string& text) {
    const int fd = ::open(path, O_WRONLY);
    const bool written = fd != -1 && ::write(fd, text.data(), text.size()) == ssize_t(text.size());
    ::close(fd);
    return written;
}

// Makes this process see a file system of its own at `path`, with room for `bytes`; false where the
// machine does not allow it. Meant for a child.
bool mount_small_disk(const std::string& path, int bytes) {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0)
        return false;
    if (user != 0 && !(put_text("/proc/self/setgroups", "deny") &&
                       put_text("/proc/self/uid_map", "0 " + std::to_string(user) + " 1") &&
                       put_text("/proc/self/gid_map", "0 " + std::to_string(group) + " 1")))
        return false;
    const std::string size = "size=" + std::to_string(bytes);
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", path.c_str(), "tmpfs", 0, size.c_str()) == 0;
}

// Lets this process write no more than some 64 KiB, by a full disk or, where that cannot be had, by
// a limit on its files. Gives the system's reason. Meant for a child.
std::string run_short_of_room(const std::string& path) {
    const int room = 65536;
    if (mount_small_disk(path, room))
        return "No space left on device";
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {room, room};
    setrlimit(RLIMIT_FSIZE, &limit);
    return "File too large";
}

const std::string much(1000000, 'm');

const struct {
    const char* name;
    void (*write)(const std::string& path);
} writers[] = {
    {"an atomic write",
     [](const std::string& path) {
         AtomicFileWrite file(path.c_str(), OPEN_WRITE);
         const FileDescriptor owner(file.fd);
         OSAPI::write(file.fd, much.data(), much.size());
         file.complete();
     }},
    {"an atomic write in pieces",
     [](const std::string& path) {
         AtomicFileWrite file(path.c_str(), OPEN_WRITE);
         OSAPI::BufferedFileOutput out(file.fd, 1000, true);
         for (std::size_t at = 0; at < much.size(); at += 100)
             out.buffered.write(&much[at], 100);
         out.buffered.flush();
         file.complete();
     }},
    {"a whole file",
     [](const std::string& path) {
         velmora::write_whole_file(
             path.c_str(), [](OSAPI::fd_t fd) { OSAPI::pwrite(fd, much.data(), much.size(), 0); });
     }},
};

TEST(NoMoreRoom, IsReportedAndLeavesTheOldFileAndNothingElse) {
    const ScratchFolder folder;
    for (const auto& writer : writers)
        EXPECT_EQ(status_of_child([&] {
                      const std::string reason = run_short_of_room(folder.path());
                      const std::string path = folder.write("out", "the old bytes");
                      const int before = open_descriptors();
                      for (int time = 0; time < 2; time++) // the room is given back
                          if (message_without_place_of([&] { writer.write(path); }) !=
                                  "write: " + reason ||
                              folder.read("out") != "the old bytes" ||
                              folder.names() != Names({"out"}) || open_descriptors() != before)
                              return false;
                      velmora::write_whole_file(path.c_str(), [](OSAPI::fd_t fd) {
                          OSAPI::write(fd, much.data(), 30000);
                      });
                      return folder.read("out") == much.substr(0, 30000);
                  }),
                  0)
            << writer.name;
}

// The temporary name leads to a device that is always full. A whole file follows no link there.
TEST(NoMoreRoom, OnADeviceIsReportedToo) {
    const ScratchFolder folder;
    const std::string path = folder.write("out", "the old bytes");
    for (const auto& writer : {writers[0], writers[1]}) {
        ASSERT_EQ(symlink("/dev/full", (path + ".inprogress").c_str()), 0);
        EXPECT_EQ(message_without_place_of([&] { writer.write(path); }),
                  "write: No space left on device")
            << writer.name;
        EXPECT_EQ(folder.read("out"), "the old bytes");
        EXPECT_EQ(folder.names(), Names({"out"}));
    }
}

} // namespace
