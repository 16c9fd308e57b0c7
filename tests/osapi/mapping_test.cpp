// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

using OSAPI::AnonMapping;
using OSAPI::FileDescriptor;
using OSAPI::FileMapping;
using OSAPI::LockMemory;
using OSAPI::MemoryMapping;
using OSAPI::OPEN_DIRECT;
using OSAPI::OPEN_EXCL;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

const uword page = sysconf(_SC_PAGESIZE);

char* chars(const MemoryMapping& mapping) {
    return static_cast<char*>(mapping.data);
}

std::string text_of(const MemoryMapping& mapping) {
    return std::string(chars(mapping), mapping.size);
}

bool is_mapped(void* address) {
    unsigned char resident;
    return mincore(address, 1, &resident) == 0;
}

bool dies_of(int signal_number, const std::function<bool()>& action) {
    const int status = status_of_child(action);
    return WIFSIGNALED(status) && WTERMSIG(status) == signal_number;
}

bool write_faults(volatile char* address) {
    return dies_of(SIGSEGV, [=] {
        *address = 'x';
        return true;
    });
}

bool read_faults(const volatile char* address) {
    return dies_of(SIGSEGV, [=] { return *address == 'x' || true; });
}

// ---- The classes -----------------------------------------------------------------------------

TEST(MemoryMapping, HoldsDataThenSize) {
    EXPECT_EQ(sizeof(MemoryMapping), sizeof(void*) + sizeof(uword));
    EXPECT_EQ(sizeof(AnonMapping), sizeof(MemoryMapping));
    EXPECT_EQ(sizeof(FileMapping), sizeof(MemoryMapping));
    EXPECT_EQ(sizeof(LockMemory), sizeof(void*) + sizeof(uword));

    AnonMapping mapping(page, false);
    const char* base = reinterpret_cast<const char*>(&mapping);
    EXPECT_EQ(reinterpret_cast<const char*>(&mapping.data) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&mapping.size) - base, 8);
    EXPECT_TRUE((std::is_same<decltype(MemoryMapping::size), uword>::value));
}

template <class T>
bool is_plain_owner() {
    return !std::is_polymorphic<T>::value && !std::is_copy_constructible<T>::value &&
           !std::is_copy_assignable<T>::value;
}

TEST(MemoryMapping, CannotBeCopiedAndHasNoVirtualFunctions) {
    EXPECT_TRUE(is_plain_owner<MemoryMapping>());
    EXPECT_TRUE(is_plain_owner<AnonMapping>());
    EXPECT_TRUE(is_plain_owner<FileMapping>());
    EXPECT_TRUE(is_plain_owner<LockMemory>());
    EXPECT_TRUE((std::is_base_of<MemoryMapping, AnonMapping>::value));
    EXPECT_TRUE((std::is_base_of<MemoryMapping, FileMapping>::value));
}

TEST(MemoryMapping, MayThrowFromItsDestructor) {
    EXPECT_FALSE(std::is_nothrow_destructible<MemoryMapping>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<AnonMapping>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<FileMapping>::value);
    EXPECT_TRUE(std::is_nothrow_destructible<LockMemory>::value);
}

TEST(MemoryMapping, UnmapsWhenItGoes) {
    auto mapping = std::make_unique<AnonMapping>(3 * page, false);
    char* const data = chars(*mapping);
    EXPECT_TRUE(is_mapped(data));
    EXPECT_TRUE(is_mapped(data + 2 * page));
    mapping.reset();
    EXPECT_FALSE(is_mapped(data));
    EXPECT_FALSE(is_mapped(data + 2 * page));
}

TEST(MemoryMapping, OfNothingUnmapsNothing) {
    EXPECT_NO_THROW({
        AnonMapping mapping(page, false);
        munmap(mapping.data, mapping.size);
        mapping.data = nullptr;
    });
}

TEST(MemoryMapping, ThrowsWhenTheRangeCannotBeUnmapped) {
    void* data = nullptr;
    EXPECT_EQ(message_without_line_of([&] {
                  AnonMapping mapping(page, false);
                  data = mapping.data;
                  mapping.data = chars(mapping) + 1; // no page starts here
              }),
              "munmap: Invalid argument in <OSAPI::MemoryMapping::~MemoryMapping()> "
              "(osapi-unix:LINE)");
    EXPECT_EQ(munmap(data, page), 0);
}

TEST(PageSize, IsTheSystems) {
    EXPECT_EQ(uword(OSAPI::get_page_size()), page);
}

// ---- Anonymous mappings ----------------------------------------------------------------------

TEST(AnonMapping, IsReadableWritableAndZero) {
    for (bool shared : {false, true}) {
        AnonMapping mapping(2 * page, shared);
        ASSERT_NE(mapping.data, nullptr);
        EXPECT_EQ(mapping.size, 2 * page);
        EXPECT_EQ(text_of(mapping), std::string(2 * page, '\0'));
        std::memset(mapping.data, 'x', mapping.size);
        EXPECT_EQ(text_of(mapping), std::string(2 * page, 'x'));
    }
}

TEST(AnonMapping, KeepsTheSizeItWasAskedFor) {
    const AnonMapping mapping(100, false);
    EXPECT_EQ(mapping.size, 100u);
}

TEST(AnonMapping, IsSharedWithChildrenOnlyWhenAskedToBe) {
    for (bool shared : {false, true}) {
        AnonMapping mapping(page, shared);
        chars(mapping)[0] = 'p';
        ASSERT_EQ(status_of_child([&] {
                      chars(mapping)[0] = 'c';
                      return true;
                  }),
                  0);
        EXPECT_EQ(chars(mapping)[0], shared ? 'c' : 'p');
    }
}

TEST(AnonMapping, NeedsNoDescriptor) {
    const int before = open_descriptors();
    const AnonMapping mapping(page, true);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(AnonMapping, ThrowsTheSystemsReason) {
    const std::string in = " in <OSAPI::AnonMapping::AnonMapping(uword, bool)> (osapi-unix:LINE)";
    EXPECT_EQ(message_without_line_of([] { AnonMapping mapping(0, false); }),
              "mmap(anonymous): Invalid argument" + in);
    EXPECT_EQ(message_without_line_of([] { AnonMapping mapping(uword(1) << 60, true); }),
              "mmap(anonymous): Cannot allocate memory" + in);
}

// ---- File mappings ---------------------------------------------------------------------------

TEST(FileMapping, ShowsTheWholeFile) {
    const ScratchFolder folder;
    const std::string sizes[] = {"x", std::string("a\0b", 3), std::string(page, 'p'),
                                 std::string(3 * page + 17, 'q')};
    for (const std::string& bytes : sizes) {
        const std::string path = folder.write("file", bytes);
        const FileMapping mapping(path.c_str(), OPEN_READ);
        EXPECT_EQ(mapping.size, bytes.size());
        EXPECT_TRUE(text_of(mapping) == bytes);
    }
}

TEST(FileMapping, KeepsNoDescriptor) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const int before = open_descriptors();
    const FileMapping mapping(path.c_str(), OPEN_READ);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(text_of(mapping), "bytes");
}

TEST(FileMapping, OutlivesItsFilesName) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const FileMapping mapping(path.c_str(), OPEN_READ);
    ASSERT_EQ(unlink(path.c_str()), 0);
    EXPECT_EQ(text_of(mapping), "bytes");
}

TEST(FileMapping, MadeForReadingMayNotBeWritten) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const FileMapping mapping(path.c_str(), OPEN_READ);
    EXPECT_EQ(permissions_at(mapping.data), "r--s");
    EXPECT_TRUE(write_faults(chars(mapping)));
    EXPECT_FALSE(read_faults(chars(mapping)));
    EXPECT_EQ(bytes_of(path), "bytes");
}

TEST(FileMapping, ShowsLaterChangesOfTheFile) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const FileMapping mapping(path.c_str(), OPEN_READ);
    ASSERT_EQ(status_of_child([&] {
                  const int fd = ::open(path.c_str(), O_WRONLY);
                  return pwrite(fd, "XY", 2, 1) == 2;
              }),
              0);
    EXPECT_EQ(text_of(mapping), "bXYes");
}

TEST(FileMapping, KeepsTheSizeOfTheMomentItWasMade) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const FileMapping mapping(path.c_str(), OPEN_READ);
    folder.write("file", "bytes and more");
    EXPECT_EQ(mapping.size, 5u);
    EXPECT_EQ(text_of(mapping), "bytes");
}

TEST(FileMapping, TheTwoLowBitsAreTheProtection) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const FileDescriptor fd(::open(path.c_str(), O_RDWR));
    struct {
        int flags;
        const char* permissions;
    } const cases[] = {
        {0, "---s"},
        {OPEN_READ, "r--s"},
        {OPEN_WRITE, "-w-s"},
        {OPEN_READ | OPEN_WRITE, "rw-s"},
        {OPEN_READ | OPEN_DIRECT | OPEN_EXCL, "r--s"},
    };
    for (const auto& c : cases) {
        const FileMapping mapping(fd.fd, 5, c.flags);
        EXPECT_EQ(mapping.size, 5u);
        EXPECT_EQ(permissions_at(mapping.data), c.permissions) << c.flags;
    }
}

TEST(FileMapping, MadeForWritingReachesTheFile) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const FileDescriptor fd(::open(path.c_str(), O_RDWR));
    const FileMapping mapping(fd.fd, 5, OPEN_READ | OPEN_WRITE);
    chars(mapping)[0] = 'X';
    EXPECT_EQ(bytes_of(path), "Xytes");
}

TEST(FileMapping, OfADescriptorOutlivesTheDescriptorAndLeavesItOpen) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    FileDescriptor fd(::open(path.c_str(), O_RDONLY));
    const FileMapping mapping(fd.fd, 3, OPEN_READ);
    EXPECT_NE(fcntl(fd.fd, F_GETFD), -1);
    fd.close();
    EXPECT_EQ(text_of(mapping), "byt");
}

TEST(FileMapping, WithNeitherBitOpensForReadingButShowsNothing) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const FileMapping mapping(path.c_str(), 0);
    EXPECT_EQ(mapping.size, 5u);
    EXPECT_TRUE(read_faults(chars(mapping)));
    EXPECT_EQ(bytes_of(path), "bytes");
}

// ---- Failures --------------------------------------------------------------------------------

const char in_map[] = " in <void OSAPI::FileMapping::map(OSAPI::fd_t, uword, int)> "
                      "(osapi-unix:LINE)";
const char in_open[] = " in <OSAPI::fd_t OSAPI::open(const char*, int)> (osapi-unix:LINE)";

TEST(FileMapping, OfAnEmptyFileIsRefused) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "");
    const int before = open_descriptors();
    EXPECT_EQ(message_without_line_of([&] { FileMapping mapping(path.c_str(), OPEN_READ); }),
              std::string("mmap(file): Invalid argument") + in_map);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(FileMapping, OfAMissingFileNamesItAndLeavesNothingOpen) {
    const ScratchFolder folder;
    const std::string path = folder.file("missing");
    const int before = open_descriptors();
    EXPECT_EQ(message_without_line_of([&] { FileMapping mapping(path.c_str(), OPEN_READ); }),
              "opening file \"" + path + "\": No such file or directory" + in_open);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_TRUE(folder.names().empty());
}

TEST(FileMapping, OfAPathThatLeadsNowhereNamesIt) {
    const ScratchFolder folder;
    const std::string below = folder.write("file", "bytes") + "/below", loop = folder.file("loop");
    ASSERT_EQ(symlink("loop", loop.c_str()), 0);
    EXPECT_EQ(message_without_line_of([&] { FileMapping mapping(below.c_str(), OPEN_READ); }),
              "opening file \"" + below + "\": Not a directory" + in_open);
    EXPECT_EQ(message_without_line_of([&] { FileMapping mapping(loop.c_str(), OPEN_READ); }),
              "opening file \"" + loop + "\": Too many levels of symbolic links" + in_open);
}

TEST(FileMapping, OfAFolderIsRefused) {
    const ScratchFolder folder;
    EXPECT_THROW(FileMapping(folder.path().c_str(), OPEN_READ), StrXception);
    EXPECT_EQ(
        message_without_line_of([&] { FileMapping mapping(folder.path().c_str(), OPEN_WRITE); }),
        "opening file \"" + folder.path() + "\": Is a directory" + in_open);
}

// Opening for writing empties the file before its size is taken.
TEST(FileMapping, OfAPathForWritingFindsAnEmptyFile) {
    const ScratchFolder folder;
    for (int flags : {int(OPEN_WRITE), OPEN_READ | OPEN_WRITE}) {
        const std::string path = folder.write("file", "bytes");
        EXPECT_EQ(message_without_line_of([&] { FileMapping mapping(path.c_str(), flags); }),
                  std::string("mmap(file): Invalid argument") + in_map);
        EXPECT_EQ(bytes_of(path), "");
    }
}

TEST(FileMapping, OfAPathTakesExclusiveForItsOpening) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    EXPECT_EQ(
        message_without_line_of([&] { FileMapping mapping(path.c_str(), OPEN_WRITE | OPEN_EXCL); }),
        "opening file \"" + path + "\": File exists" + in_open);
    EXPECT_EQ(bytes_of(path), "bytes");
}

TEST(FileMapping, OfABadDescriptorIsRefused) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const FileDescriptor read_only(::open(path.c_str(), O_RDONLY));
    EXPECT_EQ(message_without_line_of([] { FileMapping mapping(-1, 10, OPEN_READ); }),
              std::string("mmap(file): Bad file descriptor") + in_map);
    EXPECT_EQ(message_without_line_of([&] { FileMapping mapping(read_only.fd, 5, 3); }),
              std::string("mmap(file): Permission denied") + in_map);
    EXPECT_EQ(message_without_line_of([&] { FileMapping mapping(read_only.fd, 0, OPEN_READ); }),
              std::string("mmap(file): Invalid argument") + in_map);
}

TEST(FileMapping, HoldsNothingAfterAFailedMap) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    FileMapping mapping(path.c_str(), OPEN_READ);
    ASSERT_EQ(munmap(mapping.data, mapping.size), 0);
    EXPECT_THROW(mapping.map(-1, 10, OPEN_READ), StrXception);
    EXPECT_EQ(mapping.data, nullptr);
    EXPECT_EQ(mapping.size, 0u);
    const FileDescriptor fd(::open(path.c_str(), O_RDONLY));
    mapping.map(fd.fd, 5, OPEN_READ);
    EXPECT_EQ(text_of(mapping), "bytes");
}

TEST(LargePages, KeepContentsAndErrno) {
    const uword size = uword(7) << 20; // whatever its alignment, it holds whole large pages
    const AnonMapping memory(size, false);
    const auto byte_at = [](uword i) { return char(i * 31 + (i >> 16)); };
    for (uword i = 0; i < size; i++)
        chars(memory)[i] = byte_at(i);
    errno = EDOM;
    OSAPI::gather_into_large_pages(chars(memory) + 1, size - 2);
    EXPECT_EQ(errno, EDOM);
    uword changed = 0;
    for (uword i = 0; i < size; i++)
        changed += chars(memory)[i] != byte_at(i);
    EXPECT_EQ(changed, 0u);
}

TEST(LargePages, LeaveARangeAloneThatHoldsNone) {
    const AnonMapping memory(page, false);
    ASSERT_EQ(mprotect(memory.data, page, PROT_NONE), 0); // touching it would end the process
    OSAPI::gather_into_large_pages(memory.data, page);
    OSAPI::gather_into_large_pages(memory.data, 0);
    OSAPI::gather_into_large_pages(nullptr, 0);
}

// ---- Memory that may be lost -------------------------------------------------------------------

// A file of `pages` pages of which each byte holds its page's number, mapped, then cut to `left`.
struct CutFile {
    const ScratchFolder folder;
    const std::string path;
    const FileMapping mapping;

    CutFile(uword pages, uword left)
        : path(folder.write("file", bytes(pages))), mapping(path.c_str(), OPEN_READ) {
        EXPECT_EQ(::truncate(path.c_str(), off_t(left)), 0);
    }

    static std::string bytes(uword pages) {
        std::string all;
        for (uword i = 0; i < pages; i++)
            all += std::string(page, char('a' + i));
        return all;
    }
};

TEST(CopyCanFail, CopiesAllThatIsThere) {
    const CutFile file(3, 3 * page);
    for (uword from : {uword(0), uword(1), page - 1, 2 * page + 7})
        for (uword n : {uword(0), uword(1), uword(17), page}) {
            if (from + n > 3 * page)
                continue;
            std::string copy(n + 2, '#');
            EXPECT_EQ(OSAPI::copy_can_fail(&copy[1], chars(file.mapping) + from, n), n);
            EXPECT_TRUE(copy == "#" + CutFile::bytes(3).substr(from, n) + "#") << from << " " << n;
        }
}

TEST(CopyCanFail, CopiesNothingOfALostPage) {
    const CutFile file(2, 0);
    std::string copy(page, '#');
    EXPECT_EQ(OSAPI::copy_can_fail(&copy[0], file.mapping.data, page), 0u);
    EXPECT_EQ(OSAPI::copy_can_fail(&copy[0], chars(file.mapping) + page + 9, 1), 0u);
    EXPECT_TRUE(copy == std::string(page, '#'));
}

TEST(CopyCanFail, StopsAtTheFirstLostPage) {
    const CutFile file(20, 2 * page);
    std::string copy(20 * page, '#');
    EXPECT_EQ(OSAPI::copy_can_fail(&copy[0], file.mapping.data, 20 * page), 2 * page);
    EXPECT_TRUE(copy == CutFile::bytes(2) + std::string(18 * page, '#'));
}

// The end of a file cut within a page reads as zeros to the end of that page.
TEST(CopyCanFail, CopiesZerosAfterACutWithinAPage) {
    const CutFile file(2, page / 2);
    std::string copy(page, '#');
    EXPECT_EQ(OSAPI::copy_can_fail(&copy[0], file.mapping.data, page), page);
    EXPECT_TRUE(copy == std::string(page / 2, 'a') + std::string(page / 2, '\0'));
}

TEST(CopyCanFail, CopiesInAChild) {
    const CutFile file(1, page);
    EXPECT_EQ(status_of_child([&] {
                  std::string copy(page, '#');
                  return OSAPI::copy_can_fail(&copy[0], file.mapping.data, page) == page &&
                         copy == CutFile::bytes(1);
              }),
              0);
}

} // namespace
