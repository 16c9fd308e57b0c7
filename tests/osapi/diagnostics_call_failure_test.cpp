// SPDX-License-Identifier: BSD-3-Clause

// Profilers and statistics with times and sizes of the test's own.
#include "osapi/osapi.h"

#include "tests/core/captured.h"
#include "tests/osapi/failing_call.h"
#include "tests/osapi/place.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using OSAPI::Profiler;

namespace {

typedef std::vector<std::string> Calls;

const std::string in_statistics = in("void OSAPI::print_statistics()");

// ---- Profiler --------------------------------------------------------------------------------

// The clock shows these, call by call.
void set_clock(SystemCalls& calls, const std::vector<timeval>& times) {
    for (std::size_t i = 0; i < times.size(); i++)
        calls.answer("gettimeofday", int(i) + 1, 0, 0,
                     std::string(reinterpret_cast<const char*>(&times[i]), sizeof(timeval)));
}

TEST(Profiler, PrintsMillisecondsWithFourDigits) {
    const struct {
        timeval start, end;
        const char* text;
    } cases[] = {
        {{10, 1000}, {10, 2500}, "1.5000"},  {{10, 999900}, {11, 1400}, "1.5000"},
        {{10, 0}, {10, 0}, "0.0000"},        {{10, 0}, {10, 1}, "0.0010"},
        {{10, 0}, {10, 123456}, "123.4560"}, {{10, 500000}, {3610, 500001}, "3600000.0010"},
        {{10, 2500}, {10, 1000}, "-1.5000"}, // the clock was set back
    };
    for (const auto& c : cases)
        EXPECT_EQ(stdout_of([&] {
                      SystemCalls calls;
                      set_clock(calls, {c.start, c.end});
                      const Profiler profiler("name");
                  }),
                  std::string("PROFILE: name\nname = ") + c.text + " ms\n");
}

// Writing the lines is not part of what is measured.
TEST(Profiler, StartsItsClockAfterItsFirstLineAndStopsItBeforeItsLast) {
    struct Watched {
        SystemCalls calls;
        std::vector<std::pair<std::string, int>> written; // and the clock's calls so far

        static ssize_t write(void* cookie, const char* text, std::size_t n) {
            auto& watched = *static_cast<Watched*>(cookie);
            watched.written.push_back({std::string(text, n), watched.calls.count("gettimeofday")});
            return ssize_t(n);
        }
    } watched;
    set_clock(watched.calls, {{0, 0}, {0, 2000}});
    cookie_io_functions_t functions = {};
    functions.write = Watched::write;
    FILE* const stream = fopencookie(&watched, "w", functions);
    ASSERT_NE(stream, nullptr);
    setvbuf(stream, nullptr, _IOLBF, BUFSIZ);
    FILE* const real_stdout = stdout;
    stdout = stream;
    { const Profiler profiler("name"); }
    stdout = real_stdout;
    std::fclose(stream);
    const std::vector<std::pair<std::string, int>> expected = {{"PROFILE: name\n", 0},
                                                               {"name = 2.0000 ms\n", 2}};
    EXPECT_EQ(watched.written, expected);
}

TEST(Profiler, IndentsWhatIsInside) {
    EXPECT_EQ(stdout_of([] {
                  SystemCalls calls;
                  set_clock(calls, {{0, 0},
                                    {0, 1000},
                                    {0, 2000},
                                    {0, 3000},
                                    {0, 5000},
                                    {0, 8000},
                                    {0, 13000},
                                    {0, 21000}});
                  const Profiler frame("frame");
                  {
                      const Profiler read("read");
                      const Profiler decode("decode");
                  }
                  const Profiler write("write");
              }),
              "PROFILE: frame\n"
              "\tPROFILE: read\n"
              "\t\tPROFILE: decode\n"
              "\t\tdecode = 1.0000 ms\n"
              "\tread = 4.0000 ms\n"
              "\tPROFILE: write\n"
              "\twrite = 5.0000 ms\n"
              "frame = 21.0000 ms\n");
}

// ---- print_statistics ------------------------------------------------------------------------

// The system's line with these sizes and this many fields, of which the 35 first are looked at.
std::string stat_line(const std::string& bytes, const std::string& pages, int fields,
                      const std::string& name = "(velmora)") {
    std::string line = "4711 " + name + " R";
    for (int field = 4; field <= fields; field++)
        line += ' ' + (field == 23   ? bytes
                       : field == 24 ? pages
                                     : std::to_string(field == 8 ? -1 : field));
    return line + "\n";
}

// What is printed when the system's file holds `text`.
std::string statistics_of(const std::string& text) {
    return stdout_of([&] {
        SystemCalls calls;
        calls.answer("read", 1, long(std::min(text.size(), std::size_t(4096))), 0, text);
        OSAPI::print_statistics();
        EXPECT_EQ(calls.names(), "open fcntl fcntl read close ");
        EXPECT_EQ(calls.made[3], "read(4096)");
    });
}

std::string memory(const char* vm, const char* resident) {
    return std::string("Memory:\nVM size:\t") + vm + " MB\nresident:\t" + resident + " MB\n";
}

TEST(PrintStatistics, PrintsMegabytes) {
    ASSERT_EQ(OSAPI::get_page_size(), 4096) << "what the resident sizes below are worked out for";
    EXPECT_EQ(statistics_of(stat_line("1048576", "256", 35)), memory("1.00", "1.00"));
    EXPECT_EQ(statistics_of(stat_line("0", "0", 35)), memory("0.00", "0.00"));
    EXPECT_EQ(statistics_of(stat_line("2621440", "1", 35)), memory("2.50", "0.00"));
    EXPECT_EQ(statistics_of(stat_line("12345678", "2000", 35)), memory("11.77", "7.81"));
}

TEST(PrintStatistics, TakesTheLongerLinesOfLaterSystems) {
    for (const int fields : {35, 36, 41, 44, 52, 80})
        EXPECT_EQ(statistics_of(stat_line("1048576", "512", fields)), memory("1.00", "2.00"))
            << fields;
    EXPECT_EQ(statistics_of(stat_line("1048576", "512", 2000)), memory("1.00", "2.00"))
        << "longer than what is read";
}

// Bytes and pages are 32-bit numbers here, as they were when the line was shorter.
TEST(PrintStatistics, PrintsLargeSizesModulo32Bits) {
    ASSERT_EQ(OSAPI::get_page_size(), 4096);
    EXPECT_EQ(statistics_of(stat_line("4294967295", "1", 52)), memory("4096.00", "0.00"));
    EXPECT_EQ(statistics_of(stat_line("4294967296", "1", 52)), memory("0.00", "0.00"));
    EXPECT_EQ(statistics_of(stat_line("5368709120", "256", 52)), memory("1024.00", "1.00"));
    EXPECT_EQ(statistics_of(stat_line("21990233604096", "4294967552", 52)), // 20 TB and 1 MB
              memory("1.00", "1.00"));
    // Pages that fit are printed in full: 16 TB less a page.
    EXPECT_EQ(statistics_of(stat_line("1048576", "4294967295", 52)), memory("1.00", "16777216.00"));
}

TEST(PrintStatistics, TakesTheOtherNumbersOfLargeProcesses) {
    std::string line = "4711 (velmora) R";
    for (int field = 4; field <= 52; field++)
        line += field == 23 || field == 24 ? " 1048576" : " 18446744073709551615";
    EXPECT_EQ(statistics_of(line + "\n"), memory("1.00", "4096.00"));
}

TEST(PrintStatistics, ThrowsForALineThatIsTooShort) {
    const std::string cut = stat_line("1", "1", 35);
    const std::string texts[] = {
        "",
        "\n",
        "no number",
        stat_line("1", "1", 34),
        stat_line("1", "1", 3),
        stat_line("many", "1", 52),
        stat_line("1", "1", 52, "(two words)"), // a name with a space
    };
    const int before = open_descriptors();
    for (const std::string& text : texts) {
        std::string message;
        EXPECT_EQ(stdout_of([&] {
                      SystemCalls calls;
                      calls.answer("read", 1, long(text.size()), 0, text);
                      message = message_without_line_of([] { OSAPI::print_statistics(); });
                  }),
                  "");
        EXPECT_EQ(message, "error reading /proc/self/stat" + in_statistics) << text;
        EXPECT_EQ(open_descriptors(), before);
    }
}

TEST(PrintStatistics, ReadsNamesOfAnyLength) {
    EXPECT_EQ(statistics_of(stat_line("1048576", "256", 52, std::string(3000, 'n'))),
              memory("1.00", "1.00"));
    std::string message;
    SystemCalls calls;
    calls.answer("read", 1, 4096, 0, std::string(4096, 'n'));
    EXPECT_EQ(message_without_line_of([] { OSAPI::print_statistics(); }),
              "error reading /proc/self/stat" + in_statistics);
    calls.answer("read", 1, 4096, 0, "1 " + std::string(4094, 'n'));
    EXPECT_EQ(message_without_line_of([] { OSAPI::print_statistics(); }),
              "error reading /proc/self/stat" + in_statistics);
}

TEST(PrintStatistics, ReadsOnceAndReportsWhatFails) {
    expect_reported({
        {"open", 1, EMFILE, [] { OSAPI::print_statistics(); },
         "opening file \"/proc/self/stat\": Too many open files" +
             in("OSAPI::fd_t OSAPI::open(const char*, int)")},
        {"fcntl", 2, EIO, [] { OSAPI::print_statistics(); },
         "fcntl: Input/output error" + in("void OSAPI::close_on_exec(fd_t)")},
        {"read", 1, EIO, [] { OSAPI::print_statistics(); },
         "read: Input/output error" + in("sword OSAPI::read_short(int, char*, uword)")},
    });
}

// ---- ScopedFILE ------------------------------------------------------------------------------

TEST(ScopedFILE, LeavesADescriptorThatItCannotTakeToItsCaller) {
    expect_reported(
        {{"fdopen", 1, ENOMEM,
          [] {
              const OSAPI::FileDescriptor fd(some_descriptor());
              OSAPI::ScopedFILE stream(fd.fd, "name", "r");
          },
          "fdopen(\"name\", \"r\")" +
              in("OSAPI::ScopedFILE::ScopedFILE(OSAPI::fd_t, const char*, const char*)")}});
}

TEST(ScopedFILE, IgnoresAFailedClose) {
    const int before = open_descriptors();
    SystemCalls calls;
    calls.fail("fclose", EIO);
    EXPECT_NO_THROW(OSAPI::ScopedFILE(::open("/dev/null", O_WRONLY), "null", "w"));
    EXPECT_EQ(calls.count("fclose"), 1);
    EXPECT_EQ(open_descriptors(), before);
}

// ---- Clocks ----------------------------------------------------------------------------------

TEST(Microsecs, AreWholeAfter2106) {
    const timeval now = {5000000000, 7};
    SystemCalls calls;
    calls.answer("gettimeofday", 1, 0, 0,
                 std::string(reinterpret_cast<const char*>(&now), sizeof now));
    EXPECT_EQ(OSAPI::microsecs(), 5000000000000007u);
}

// 5,000,000,000 seconds after 1970 began it is 08:53 of this day in Greenwich.
TEST(GetDate, KnowsTheDaysAfter2038) {
    EXPECT_EQ(status_of_child([] {
                  setenv("TZ", "UTC0", 1);
                  SystemCalls calls;
                  calls.answer("time", 1, 5000000000, 0);
                  const OSAPI::Date date = OSAPI::get_date();
                  return date.year == 2128 && date.month == 6 && date.day == 11;
              }),
              0);
}

} // namespace
