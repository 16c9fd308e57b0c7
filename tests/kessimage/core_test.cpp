// SPDX-License-Identifier: BSD-3-Clause

// Pixel memory, its trace, and numbered errors.

#include "kessimage/core.h"

#include "tests/core/observed.h"
#include "tests/kessimage/hexadecimal.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <type_traits>

namespace {

// Traces while it lives.
class Traced {
public:
    Traced() { Kess::TRACE_ALLOCATIONS = 1; }
    ~Traced() { Kess::TRACE_ALLOCATIONS = 0; }
};

const char* const texts[] = {
    "OK",
    "unknown error",
    "error opening file",
    "error stat()ing file",
    "error allocating memory",
    "error reading from file",
    "file is too short",
    "unknown file format",
    "invalid file",
    "operation cannot be performed on this image format",
    "error writing to file",
    "unimplemented image format translation",
};

} // namespace

// ---- Pixel memory ----------------------------------------------------------------------------

TEST(PixelMemory, IsNotTracedAtStart) {
    EXPECT_EQ(Kess::TRACE_ALLOCATIONS, 0);
    EXPECT_TRUE((std::is_same<decltype(Kess::TRACE_ALLOCATIONS), int>::value));
}

TEST(PixelMemory, IsThereToTheLastByte) {
    EXPECT_EQ(stderr_of([] {
                  char* block = Kess::malloc_pixels(1000);
                  ASSERT_NE(block, nullptr);
                  std::memset(block, 0xab, 1000);
                  Kess::free_pixels(block, 1000);
              }),
              "");
}

TEST(PixelMemory, TraceIsOneLineForEach) {
    const Traced traced;
    char* block = nullptr;
    const std::string making = stderr_of([&] { block = Kess::malloc_pixels(123456); });
    const std::string address = hexadecimal(block);
    const std::string freeing = stderr_of([&] { Kess::free_pixels(block, 123456); });
    EXPECT_EQ(making, "libkessimage: malloc_pixels(123456) = " + address + "\n");
    EXPECT_EQ(freeing, "libkessimage: free_pixels(" + address + ", 123456)\n");
}

TEST(PixelMemory, TracePrintsTheSizeThatItIsGiven) {
    char* block = Kess::malloc_pixels(10);
    const Traced traced;
    const std::string address = hexadecimal(block);
    EXPECT_EQ(stderr_of([&] { Kess::free_pixels(block, 18446744073709551615ul); }),
              "libkessimage: free_pixels(" + address + ", 18446744073709551615)\n");
}

TEST(PixelMemory, AnyFlagButZeroTraces) {
    for (int flag : {1, -1, 256}) {
        Kess::TRACE_ALLOCATIONS = flag;
        char* block = nullptr;
        EXPECT_NE(stderr_of([&] { block = Kess::malloc_pixels(1); }), "");
        Kess::TRACE_ALLOCATIONS = 0;
        Kess::free_pixels(block, 1);
    }
}

// The flags that the system keeps for the mapping that holds `address`, each between blanks.
static std::string mapping_flags(const char* address) {
    std::ifstream maps("/proc/self/smaps");
    const unsigned long wanted = reinterpret_cast<unsigned long>(address);
    bool is_here = false;
    for (std::string line; std::getline(maps, line);) {
        unsigned long first, end;
        if (std::sscanf(line.c_str(), "%lx-%lx ", &first, &end) == 2)
            is_here = first <= wanted && wanted < end;
        else if (is_here && line.rfind("VmFlags:", 0) == 0)
            return line.substr(8) + " ";
    }
    return "";
}

// Freed memory belongs to the host: nothing that was asked of the system for pixels may hold for
// what the host puts there ("hg": advised to take large pages, "nh": not to).
TEST(PixelMemory, CarriesNoAdviceThatOutlivesIt) {
    for (unsigned long size : {9ul << 20, 80ul << 20}) {
        char* const block = Kess::malloc_pixels(size);
        const std::string flags = mapping_flags(block + (4 << 20));
        Kess::free_pixels(block, size);
        if (flags.empty())
            GTEST_SKIP() << "no flags in /proc/self/smaps";
        EXPECT_EQ(flags.find(" hg "), std::string::npos) << size << flags;
        EXPECT_EQ(flags.find(" nh "), std::string::npos) << size << flags;
    }
}

// ---- Errors ----------------------------------------------------------------------------------

TEST(Error, IsAnXceptionThatHoldsOneInt) {
    EXPECT_TRUE((std::is_base_of<Xception, Kess::Error>::value));
    EXPECT_EQ(sizeof(Kess::Error), 2 * sizeof(void*));
    const Kess::Error error(7);
    EXPECT_EQ(error.code, 7);
    EXPECT_EQ(reinterpret_cast<const char*>(&error.code) - reinterpret_cast<const char*>(&error),
              8);
}

TEST(Error, EveryCodeHasItsText) {
    for (int code = 0; code <= 11; code++)
        EXPECT_STREQ(Kess::Error(code).strerror(), texts[code]) << code;
}

TEST(Error, PrintsItsText) {
    for (int code = 0; code <= 11; code++)
        EXPECT_EQ(stderr_of([&] { Kess::Error(code).print(); }),
                  std::string("libkessimage error: ") + texts[code] + "\n");
}

TEST(Error, IsCaughtAndPrintedAsAnXception) {
    EXPECT_EQ(stderr_of([] {
                  try {
                      throw Kess::Error(4);
                  } catch (Xception& x) {
                      x.print();
                  }
              }),
              "libkessimage error: error allocating memory\n");
}

TEST(Error, VirtualTableHoldsTheDestructorThenPrint) {
    const Kess::Error error(6);
    void* const* slots;
    std::memcpy(&slots, static_cast<const void*>(&error), sizeof slots);
    typedef void (*Print)(const Xception*);
    EXPECT_EQ(stderr_of([&] { reinterpret_cast<Print>(slots[2])(&error); }),
              "libkessimage error: file is too short\n");
}
