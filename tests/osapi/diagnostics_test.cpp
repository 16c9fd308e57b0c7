// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/core/captured.h"
#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <regex>
#include <string>
#include <type_traits>

using OSAPI::Profiler;
using OSAPI::ScopedFILE;

namespace {

// ---- Profiler --------------------------------------------------------------------------------

TEST(Profiler, HoldsItsNameThenItsTimes) {
    stdout_of([] {
        const char* const name = "name";
        const Profiler profiler(name);
        const char* base = reinterpret_cast<const char*>(&profiler);
        EXPECT_EQ(reinterpret_cast<const char*>(&profiler.name) - base, 0);
        EXPECT_EQ(reinterpret_cast<const char*>(&profiler.start) - base, 8);
        EXPECT_EQ(reinterpret_cast<const char*>(&profiler.end) - base, 24);
        EXPECT_EQ(profiler.name, name) << "not a copy";
    });
    EXPECT_EQ(sizeof(Profiler), 40u);
    EXPECT_FALSE(std::is_copy_constructible<Profiler>::value);
}

TEST(Profiler, CountsThoseAlive) {
    EXPECT_EQ(Profiler::indent, 0);
    stdout_of([] {
        const Profiler outer("outer");
        EXPECT_EQ(Profiler::indent, 1);
        {
            const Profiler inner("inner");
            EXPECT_EQ(Profiler::indent, 2);
        }
        EXPECT_EQ(Profiler::indent, 1);
    });
    EXPECT_EQ(Profiler::indent, 0);
}

TEST(Profiler, MeasuresTheTimeThatPasses) {
    double printed = 0;
    const u64 start = OSAPI::microsecs();
    const std::string text = stdout_of([] {
        const Profiler profiler("a name with 100%d");
        usleep(20000);
    });
    const double passed = double(OSAPI::microsecs() - start) / 1000;
    ASSERT_EQ(std::sscanf(text.c_str(),
                          "PROFILE: a name with 100%%d\na name with 100%%d = %lf ms\n", &printed),
              1)
        << text;
    EXPECT_GE(printed, 20);
    EXPECT_LE(printed, passed);
}

// ---- print_statistics ------------------------------------------------------------------------

// The process's own sizes, as the manual of /proc has them: bytes and pages.
struct Sizes {
    unsigned long bytes, pages;
};

Sizes own_sizes() {
    const std::string line = bytes_of("/proc/self/stat");
    std::string rest = line.substr(line.rfind(')') + 2);
    Sizes sizes = {};
    for (int field = 3; field < 23; field++)
        rest = rest.substr(rest.find(' ') + 1);
    std::sscanf(rest.c_str(), "%lu %lu", &sizes.bytes, &sizes.pages);
    return sizes;
}

TEST(PrintStatistics, PrintsTheSizesOfThisProcess) {
    const int before = open_descriptors();
    double vm = 0, resident = 0;
    Sizes earlier, later;
    do { // until nothing grew meanwhile
        earlier = own_sizes();
        const std::string text = stdout_of([] { OSAPI::print_statistics(); });
        later = own_sizes();
        ASSERT_TRUE(std::regex_match(text, std::regex("Memory:\nVM size:\t[0-9]+\\.[0-9]{2} MB\n"
                                                      "resident:\t[0-9]+\\.[0-9]{2} MB\n")))
            << text;
        ASSERT_EQ(
            std::sscanf(text.c_str(), "Memory:\nVM size: %lf MB\nresident: %lf MB", &vm, &resident),
            2);
    } while (earlier.bytes != later.bytes);
    const double megabyte = 1024 * 1024;
    // Sizes are printed modulo 32 bits, with two digits. The resident pages change all
    // the time: by less than 16 MB here.
    EXPECT_NEAR(vm, double(later.bytes & 0xffffffff) / megabyte, 0.005001);
    EXPECT_NEAR(resident, double(later.pages) * double(OSAPI::get_page_size()) / megabyte, 16);
    EXPECT_EQ(open_descriptors(), before);
}

// ---- ScopedFILE ------------------------------------------------------------------------------

TEST(ScopedFILE, IsAStreamAndNothingElse) {
    EXPECT_EQ(sizeof(ScopedFILE), sizeof(FILE*));
    EXPECT_FALSE(std::is_copy_constructible<ScopedFILE>::value);
    EXPECT_TRUE(std::is_nothrow_destructible<ScopedFILE>::value);
}

TEST(ScopedFILE, OwnsItsDescriptor) {
    const ScratchFolder folder;
    const std::string path = folder.file("file");
    const int fd = OSAPI::open(path.c_str(), OSAPI::OPEN_WRITE);
    {
        const ScopedFILE stream(fd, path.c_str(), "w");
        EXPECT_EQ(fileno(stream.file), fd);
        std::fputs("buffered", stream.file);
        EXPECT_EQ(bytes_of(path), "");
    }
    EXPECT_EQ(bytes_of(path), "buffered");
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

TEST(ScopedFILE, ReportsTheNameAndTheModeButNoReason) {
    const ScratchFolder folder;
    const OSAPI::FileDescriptor fd(OSAPI::open(folder.write("file", "").c_str(), OSAPI::OPEN_READ));
    const std::string place =
        in("OSAPI::ScopedFILE::ScopedFILE(OSAPI::fd_t, const char*, const char*)");
    for (const char* mode : {"w", "nonsense"})
        EXPECT_EQ(message_without_line_of([&] { ScopedFILE stream(fd.fd, "100%d", mode); }),
                  std::string("fdopen(\"100%d\", \"") + mode + "\")" + place);
    EXPECT_NE(fcntl(fd.fd, F_GETFD), -1) << "the descriptor stays the caller's";
}

TEST(ScopedFILE, IgnoresWhatCannotBeWrittenInTheEnd) {
    const int fd = ::open("/dev/full", O_WRONLY);
    {
        const ScopedFILE stream(fd, "/dev/full", "w");
        std::fputs("lost", stream.file);
    }
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

} // namespace
