// SPDX-License-Identifier: BSD-3-Clause

// What may be called from several threads at once: everything whose state is the caller's own.
// Meant for the thread sanitizer, which reports what is shared; the values show what got mixed up.
#include "osapi/osapi.h"
#include "osapi/whole_file.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using OSAPI::AtomicFileWrite;
using OSAPI::FileDescriptor;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

const int threads = 4;
const int rounds = 50;

// Runs `action` with each number below `threads`, all at once, `rounds` times.
void at_once(const std::function<void(const std::string&)>& action) {
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; thread++)
        running.emplace_back([&, thread] {
            for (int round = 0; round < rounds; round++)
                action(std::to_string(thread));
        });
    for (std::thread& thread : running)
        thread.join();
}

TEST(Threads, WriteAndReadTheirFiles) {
    const ScratchFolder folder;
    at_once([&](const std::string& me) {
        const std::string path = folder.file(me), text = "file of thread " + me + "\nand a line\n";
        velmora::write_whole_file(path.c_str(), [&](OSAPI::fd_t fd) {
            OSAPI::BufferedFileOutput out(fd, 8, false);
            for (const char ch : text)
                out.buffered.write(&ch, 1);
        });
        OSAPI::DiskFile file(OSAPI::open(path.c_str(), OPEN_READ));
        OSAPI::FileInput input(file);
        BufferedInput lines(input, 8);
        EXPECT_EQ("file of thread " + me + "\n", lines.readline().str);
        EXPECT_EQ(OSAPI::getsize(path.c_str()), text.size());
        const OSAPI::FileMapping mapping(path.c_str(), OPEN_READ);
        EXPECT_EQ(std::string(static_cast<const char*>(mapping.data), mapping.size), text);
    });
}

TEST(Threads, ReadOneFileAtTheirOwnOffsets) {
    const ScratchFolder folder;
    const FileDescriptor file(OSAPI::open(folder.write("file", "0123").c_str(), OPEN_READ));
    at_once([&](const std::string& me) {
        char byte = '#';
        OSAPI::pread(file.fd, &byte, 1, u64(me[0] - '0'));
        EXPECT_EQ(std::string(1, byte), me);
    });
}

TEST(Threads, NamePathsAndListFolders) {
    const ScratchFolder folder;
    folder.write("a.txt", "");
    folder.write("b.txt", "");
    at_once([&](const std::string& me) {
        const std::string path = "dir" + me + "/name." + me;
        EXPECT_EQ("name." + me, OSAPI::basename(path.c_str()).str);
        EXPECT_EQ("dir" + me, OSAPI::dirname(path.c_str()).str);
        EXPECT_EQ(me, OSAPI::extension(path.c_str()).str);
        Array<String> names;
        OSAPI::lsdir(folder.path().c_str(), names);
        EXPECT_EQ(names.len(), 4u);
        OSAPI::Glob glob(folder.file("*.txt").c_str());
        EXPECT_EQ(glob.next(), folder.file("a.txt"));
        EXPECT_TRUE(OSAPI::is_directory(folder.path().c_str()));
        EXPECT_EQ(OSAPI::getcwd().str, std::string(OSAPI::getcwd().str));
    });
}

TEST(Threads, EachFailForTheirOwnReason) {
    at_once([](const std::string& me) {
        const std::string path = "/no such folder/" + me;
        EXPECT_EQ(message_without_line_of([&] { OSAPI::open(path.c_str(), OPEN_READ); }),
                  "opening file \"" + path + "\": No such file or directory" +
                      in("OSAPI::fd_t OSAPI::open(const char*, int)"));
        EXPECT_EQ(message_without_place_of([] { OSAPI::close(-1); }), "close: Bad file descriptor");
    });
}

TEST(Threads, TalkThroughPipes) {
    at_once([](const std::string& me) {
        OSAPI::Pipe pipe;
        pipe.open();
        OSAPI::pollfd fd = {pipe.read_end.fd, POLLIN, 0};
        EXPECT_EQ(OSAPI::poll(&fd, 1, 0, false), 0);
        OSAPI::write(pipe.write_end.fd, me.data(), 1);
        EXPECT_EQ(OSAPI::poll(&fd, 1, -1, false), 1);
        char byte = '#';
        OSAPI::read(pipe.read_end.fd, &byte, 1);
        EXPECT_EQ(std::string(1, byte), me);
    });
}

// In a zone that is named and known by then: without one the C library looks for the machine's each
// time, under a lock of its own that the sanitizer does not see.
TEST(Threads, AskForTheTime) {
    setenv("TZ", "UTC0", 1);
    OSAPI::get_date();
    at_once([](const std::string&) {
        EXPECT_GE(OSAPI::get_date().year, 2020);
        EXPECT_GT(OSAPI::microsecs(), 0u);
        OSAPI::yield();
    });
}

// There is one exclusive writer at a time, and what it wrote is whole.
TEST(Threads, WriteOneFileOneAtATime) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    std::atomic<int> writing{0}, written{0};
    at_once([&](const std::string& me) {
        const std::unique_ptr<AtomicFileWrite> file(AtomicFileWrite::exclusive(path.c_str()));
        if (!file) {
            OSAPI::yield();
            return;
        }
        EXPECT_EQ(++writing, 1);
        const FileDescriptor owner(file->fd);
        for (int i = 0; i < 100; i++)
            OSAPI::write(file->fd, me.data(), 1);
        written++;
        writing--;
        file->complete_nosync();
    });
    EXPECT_GE(written, 1);
    const std::string bytes = folder.read("out");
    EXPECT_EQ(bytes, std::string(100, bytes[0]));
    EXPECT_EQ(folder.names(), std::vector<std::string>({"out"}));
}

} // namespace
