// SPDX-License-Identifier: BSD-3-Clause

// Several writers of one name at the same time, each in a process of its own, and what others may
// have put where the temporary file goes.
#include "osapi/whole_file.h"

#include "tests/message_of.h"
#include "tests/osapi/child.h"
#include "tests/osapi/files.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace velmora;

namespace {

typedef std::vector<std::string> Names;

const std::size_t size = 20000;

std::string busy(const std::string& path) {
    return "opening file \"" + path + ".inprogress\": is being written by another process";
}

// Counts that the processes of a test share.
struct Shared {
    int inside, most_inside, written, refused, otherwise;
};

class SharedCounts {
public:
    SharedCounts()
        : shared(static_cast<Shared*>(mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                                           MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
    SharedCounts(const SharedCounts&) = delete;
    SharedCounts& operator=(const SharedCounts&) = delete;
    ~SharedCounts() { munmap(shared, sizeof(Shared)); }
    Shared* operator->() const { return shared; }

private:
    Shared* const shared;
};

int add(int& count, int n) {
    return __atomic_add_fetch(&count, n, __ATOMIC_SEQ_CST);
}

// Fills the file with `letter`, in pieces between which others get their turn.
void write_letters(OSAPI::fd_t fd, char letter, const SharedCounts& counts) {
    const int now = add(counts->inside, 1);
    if (now > counts->most_inside)
        counts->most_inside = now;
    const std::string piece(size / 20, letter);
    for (int i = 0; i < 20; i++) {
        OSAPI::write(fd, piece.data(), piece.size());
        sched_yield();
    }
    add(counts->inside, -1);
}

// One writer after the other in this process; what each ends in is counted.
void write_often(const std::string& path, char letter, int times, const SharedCounts& counts) {
    for (int i = 0; i < times; i++) {
        const std::string said = message_without_place_of([&] {
            write_whole_file(path.c_str(),
                             [&](OSAPI::fd_t fd) { write_letters(fd, letter, counts); });
        });
        add(said == "(no StrXception)" ? counts->written
            : said == busy(path)       ? counts->refused
                                       : counts->otherwise,
            1);
    }
}

bool is_one_writers(const std::string& bytes) {
    return bytes.size() == size && bytes == std::string(size, bytes[0]);
}

// Lets one writer for each letter run at the same time, `times` files each.
void run_writers(const std::string& path, const std::string& letters, int times,
                 const SharedCounts& counts) {
    std::vector<std::unique_ptr<Child>> writers;
    for (const char letter : letters)
        writers.push_back(std::make_unique<Child>([&] {
            write_often(path, letter, times, counts);
            return 0;
        }));
    for (const auto& writer : writers)
        writer->wait_for_its_end();
}

} // namespace

// ---- At the same time ------------------------------------------------------------------------

TEST(WholeFileWriters, AreOneAtATimeAndTheFileIsOnesWhole) {
    const ScratchFolder folder;
    const std::string path = folder.file("sky");
    const SharedCounts counts;
    for (int round = 0; round < 10; round++) {
        run_writers(path, "abcdef", 8, counts);
        EXPECT_TRUE(is_one_writers(folder.read("sky")));
        EXPECT_EQ(folder.names(), Names{"sky"});
    }
    EXPECT_EQ(counts->most_inside, 1);
    EXPECT_EQ(counts->otherwise, 0);
    EXPECT_EQ(counts->written + counts->refused, 10 * 6 * 8);
    EXPECT_GE(counts->written, 10);
}

TEST(WholeFileWriters, ThatFindOneStaleFileDoNotBothTakeIt) {
    const ScratchFolder folder;
    const std::string path = folder.file("sky");
    const SharedCounts counts;
    for (int round = 0; round < 60; round++) {
        folder.write("sky.inprogress", "left by a writer that was killed");
        run_writers(path, "abcdef", 1, counts);
        ASSERT_TRUE(is_one_writers(folder.read("sky")));
        ASSERT_EQ(folder.names(), Names{"sky"});
    }
    EXPECT_EQ(counts->most_inside, 1);
    EXPECT_EQ(counts->otherwise, 0);
    EXPECT_GE(counts->written, 60);
}

TEST(WholeFileWriters, AreRefusedWhileAnotherWrites) {
    const ScratchFolder folder;
    const std::string path = folder.file("sky");
    bool called = false;
    std::string said;
    write_whole_file(path.c_str(), [&](OSAPI::fd_t fd) {
        OSAPI::write(fd, "one", 3);
        said = message_without_place_of(
            [&] { write_whole_file(path.c_str(), [&](OSAPI::fd_t) { called = true; }); });
    });
    EXPECT_EQ(said, busy(path));
    EXPECT_FALSE(called);
    EXPECT_EQ(folder.read("sky"), "one");
    EXPECT_EQ(folder.names(), Names{"sky"});
}

// A program that is started meanwhile must not go on holding the lock.
TEST(WholeFileWriters, KeepTheirDescriptorsFromOtherPrograms) {
    const ScratchFolder folder;
    write_whole_file(folder.file("sky").c_str(), [&](OSAPI::fd_t) {
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            const std::string target = std::filesystem::read_symlink(entry.path(), gone).string();
            const int fd = std::stoi(entry.path().filename().string());
            if (target.rfind(folder.path(), 0) == 0) {
                EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC) << target;
            }
        }
    });
}

// ---- A temporary file that goes away ---------------------------------------------------------

TEST(WholeFileWriters, NoticeThatTheirTemporaryFileIsAnother) {
    const ScratchFolder folder;
    const std::string path = folder.write("sky", "old");
    EXPECT_EQ(message_without_place_of([&] {
                  write_whole_file(path.c_str(), [&](OSAPI::fd_t fd) {
                      OSAPI::write(fd, "new", 3);
                      unlink((path + ".inprogress").c_str());
                      folder.write("sky.inprogress", "another's");
                  });
              }),
              "rename(" + path + ".inprogress," + path +
                  "): the temporary file was replaced by another process");
    EXPECT_EQ(folder.read("sky"), "old");
    EXPECT_EQ(folder.read("sky.inprogress"), "another's") << "it is not ours to remove";
}

TEST(WholeFileWriters, NoticeThatTheirTemporaryFileIsGone) {
    const ScratchFolder folder;
    const std::string path = folder.write("sky", "old");
    EXPECT_EQ(message_without_place_of([&] {
                  write_whole_file(path.c_str(),
                                   [&](OSAPI::fd_t) { unlink((path + ".inprogress").c_str()); });
              }),
              "rename(" + path + ".inprogress," + path +
                  "): the temporary file was replaced by another process");
    EXPECT_EQ(folder.names(), Names{"sky"});
    EXPECT_EQ(folder.read("sky"), "old");
}

// ---- What others may have put there ----------------------------------------------------------

namespace {

// What makes a thing of the temporary file's name, beside a file "victim".
struct Planted {
    const char* name;
    std::function<void(const ScratchFolder&, const std::string& temporary)> plant;
    const char* reason;
};

void plant_socket(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const OSAPI::FileDescriptor server(socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(bind(server.fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
}

const char* const not_regular = "is in the way, and is not a regular file";

const std::vector<Planted> planted = {
    {"a link to a file",
     [](const ScratchFolder&, const std::string& temporary) {
         ASSERT_EQ(symlink("victim", temporary.c_str()), 0);
     },
     not_regular},
    {"a link to nothing",
     [](const ScratchFolder&, const std::string& temporary) {
         ASSERT_EQ(symlink("nothing", temporary.c_str()), 0);
     },
     not_regular},
    {"a second name of a file",
     [](const ScratchFolder& folder, const std::string& temporary) {
         ASSERT_EQ(link(folder.file("victim").c_str(), temporary.c_str()), 0);
     },
     "is in the way, and is a file with another name too"},
    {"a pipe",
     [](const ScratchFolder&, const std::string& temporary) {
         ASSERT_EQ(mkfifo(temporary.c_str(), 0666), 0);
     },
     not_regular},
    {"a folder",
     [](const ScratchFolder&, const std::string& temporary) {
         ASSERT_EQ(mkdir(temporary.c_str(), 0777), 0);
     },
     not_regular},
    {"a socket",
     [](const ScratchFolder&, const std::string& temporary) { plant_socket(temporary); },
     not_regular},
};

} // namespace

TEST(WholeFileWriters, NeverWriteThroughWhatIsPlanted) {
    for (const Planted& thing : planted) {
        const ScratchFolder folder;
        folder.write("sky", "old");
        folder.write("victim", "somebody's");
        const std::string path = folder.file("sky"), temporary = path + ".inprogress";
        thing.plant(folder, temporary);
        const Names before = folder.names();
        struct stat was, is;
        ASSERT_EQ(lstat(temporary.c_str(), &was), 0);

        bool called = false;
        EXPECT_EQ(message_without_place_of(
                      [&] { write_whole_file(path.c_str(), [&](OSAPI::fd_t) { called = true; }); }),
                  "opening file \"" + temporary + "\": " + thing.reason)
            << thing.name;
        EXPECT_FALSE(called) << thing.name;
        EXPECT_EQ(folder.read("sky"), "old") << thing.name;
        EXPECT_EQ(folder.read("victim"), "somebody's") << thing.name;
        EXPECT_EQ(folder.names(), before) << thing.name;
        ASSERT_EQ(lstat(temporary.c_str(), &is), 0);
        EXPECT_EQ(is.st_ino, was.st_ino) << thing.name;
    }
}

TEST(WholeFileWriters, LeaveAnothersFileAlone) {
    const ScratchFolder folder;
    const std::string path = folder.file("sky"), temporary = path + ".inprogress";
    folder.write("sky.inprogress", "root's");
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(chmod(temporary.c_str(), 0666), 0);
    if (getuid() != 0)
        GTEST_SKIP() << "needs a privileged user, who can act as two";
    EXPECT_TRUE(holds_unprivileged([&] {
        return message_without_place_of(
                   [&] { write_whole_file(path.c_str(), [](OSAPI::fd_t) {}); }) ==
               "opening file \"" + temporary + "\": is in the way, and belongs to another user";
    }));
    EXPECT_EQ(folder.names(), Names{"sky.inprogress"});
    EXPECT_EQ(folder.read("sky.inprogress"), "root's");
}

// Another user keeps putting links and files of its own in the temporary file's place.
TEST(WholeFileWriters, HoldOutAgainstOneWhoKeepsPlanting) {
    if (getuid() != 0)
        GTEST_SKIP() << "needs a privileged user, who can act as two";
    const ScratchFolder folder;
    const std::string path = folder.file("sky"), temporary = path + ".inprogress";
    folder.write("victim", "somebody's");
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    const Child planter([&] {
        if (setgid(65534) || setuid(65534))
            return 1;
        for (unsigned i = 0;; i++) {
            usleep(i % 50 * 400); // some writes get through undisturbed
            unlink(temporary.c_str());
            if (i % 2)
                (void)!symlink("victim", temporary.c_str());
            else
                close(creat(temporary.c_str(), 0666));
            usleep(100);
            unlink(temporary.c_str());
        }
    });
    int written = 0, disturbed = 0;
    for (int i = 0; i < 100000 && (written < 50 || disturbed < 50); i++) {
        unlink(path.c_str());
        const std::string said = message_without_place_of([&] {
            write_whole_file(path.c_str(), [](OSAPI::fd_t fd) { OSAPI::write(fd, "ours", 4); });
        });
        ASSERT_EQ(folder.read("victim"), "somebody's");
        if (said != "(no StrXception)") {
            disturbed++;
            continue;
        }
        written++;
        struct stat status;
        ASSERT_EQ(lstat(path.c_str(), &status), 0);
        ASSERT_TRUE(S_ISREG(status.st_mode));
        ASSERT_EQ(status.st_uid, 0u);
        ASSERT_EQ(folder.read("sky"), "ours");
    }
    EXPECT_GE(written, 50);
    EXPECT_GE(disturbed, 50);
}

// ---- Permissions -----------------------------------------------------------------------------

namespace {

mode_t mode_of(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

} // namespace

TEST(WholeFile, KeepsTheModeOfTheOneBefore) {
    const struct {
        mode_t before, after;
    } cases[] = {{0600, 0600}, {0640, 0640}, {0666, 0666}, {0755, 0755},
                 {0444, 0444}, {0000, 0000}, {06755, 0755}};
    for (const auto& c : cases) {
        const ScratchFolder folder;
        const std::string path = folder.write("sky", "old");
        ASSERT_EQ(chmod(path.c_str(), c.before), 0);
        const mode_t mask = umask(027);
        write_whole_file(path.c_str(), [&](OSAPI::fd_t fd) {
            OSAPI::write(fd, "new", 3);
            EXPECT_EQ(mode_of(path + ".inprogress") & ~c.before & 0077, 0u)
                << "others see no more of it than of the one before";
        });
        umask(mask);
        EXPECT_EQ(mode_of(path), c.after) << c.before;
    }
}

TEST(WholeFile, HasMode0664LessTheMaskWhereNoneWas) {
    const struct { mode_t mask, mode; } cases[] = {{0, 0664}, {022, 0644}, {077, 0600}};
    for (const auto& c : cases) {
        const ScratchFolder folder;
        const std::string path = folder.file("sky");
        const mode_t mask = umask(c.mask);
        write_whole_file(path.c_str(), [](OSAPI::fd_t) {});
        umask(mask);
        EXPECT_EQ(mode_of(path), c.mode) << c.mask;
    }
}

// A link is replaced, and its mode is not kept.
TEST(WholeFile, TakesNoModeFromALink) {
    const ScratchFolder folder;
    folder.write("target", "old");
    ASSERT_EQ(symlink("target", folder.file("sky").c_str()), 0);
    const mode_t mask = umask(022);
    write_whole_file(folder.file("sky").c_str(), [](OSAPI::fd_t) {});
    umask(mask);
    EXPECT_EQ(mode_of(folder.file("sky")), 0644u);
}

// ---- Names -----------------------------------------------------------------------------------

TEST(WholeFile, SaysThatItsNameIsTooLongBeforeAnythingIsWritten) {
    const ScratchFolder folder;
    const std::string path = folder.file(std::string(250, 'n'));
    bool called = false;
    EXPECT_EQ(message_without_place_of(
                  [&] { write_whole_file(path.c_str(), [&](OSAPI::fd_t) { called = true; }); }),
              "opening file \"" + path + ".inprogress\": File name too long");
    EXPECT_FALSE(called);
}

TEST(WholeFile, MayBeNamedWithoutAFolder) {
    const ScratchFolder folder;
    const OSAPI::ScopedChdir there(folder.path().c_str());
    write_whole_file("sky", [](OSAPI::fd_t fd) { OSAPI::write(fd, "new", 3); });
    EXPECT_EQ(folder.read("sky"), "new");
}
