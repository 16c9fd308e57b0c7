// SPDX-License-Identifier: BSD-3-Clause

// Pictures and packed catalogues when memory runs out anywhere, in the libraries too: there is a
// failure, or there are the same bytes as ever. Never fewer.
#include "catalog/source_file.h"
#include "tools/pictures/exr_file.h"
#include "tools/pictures/png_file.h"

#include "tests/scratch_folder.h"
#include "tests/tools/process_heap.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>
#include <zlib.h>

using namespace velmora;

namespace {

const int width = 24, height = 83; // more than five times the sixteen rows that are packed at once

// Every float its own, as far as halves reach.
std::vector<float> noise() {
    std::mt19937 random(1);
    std::vector<float> pixels(4 * std::size_t(width) * std::size_t(height));
    for (float& value : pixels)
        value = float(random() % 60000) / 7;
    return pixels;
}

// What was asked of the heap, and what failures said.
struct Seen {
    int requests = 0;
    std::set<std::string> failures;
};

// What the work gives; "" when it throws, which adds to `failures`.
std::string result_of(const std::function<std::string()>& work, int first, int more,
                      std::set<std::string>& failures) {
    ProcessHeap heap;
    heap.refuse(first, more);
    try {
        return work();
    } catch (const std::exception& failure) {
        heap.refuse(0);
        failures.insert(failure.what());
        return "";
    }
}

// Refuses every request in turn, once by itself and once with all that follow.
Seen expect_all_or_nothing(const std::function<std::string()>& work) {
    work(); // what libraries set up once is no part of it
    Seen seen;
    std::string whole;
    {
        ProcessHeap heap;
        whole = work();
        seen.requests = heap.requests();
    }
    EXPECT_NE(whole, "");
    for (const int more : {0, 1000000})
        for (int n = 1; n <= seen.requests; n++) {
            const std::string result = result_of(work, n, more, seen.failures);
            EXPECT_TRUE(result == "" || result == whole)
                << (more ? "every request from " : "request ") << n << " of " << seen.requests
                << ": " << result.size() << " of " << whole.size() << " bytes";
        }
    return seen;
}

} // namespace

TEST(PictureWithoutMemory, IsAWholeExrOrNone) {
    const std::vector<float> pixels = noise();
    ExrMetadata metadata;
    metadata.software = "a name that is longer than a string holds by itself";
    metadata.attributes = {{"velmora/gain", 1.5}, {"velmora/label", std::string("some text")}};
    for (const bool half : {false, true}) {
        const Seen seen = expect_all_or_nothing([&] {
            u64 clamped = 0;
            return encode_exr(FloatPicture{width, height, pixels.data()}, metadata, half, clamped);
        });
        EXPECT_GT(seen.requests, 100) << "the library's own are among them";
        EXPECT_EQ(
            seen.failures.count("EXR picture: rows are missing: the compressor may lack memory"),
            1u);
    }
}

TEST(PictureWithoutMemory, IsAWholePngOrNone) {
    const std::vector<float> pixels = noise();
    const Seen seen = expect_all_or_nothing([&] {
        return encode_png(FloatPicture{width, height, pixels.data()}, 0);
    });
    EXPECT_GT(seen.requests, 5) << "the library's own are among them";
}

TEST(PackedCatalogueWithoutMemory, IsReadWholeOrNotAtAll) {
    const ScratchFolder folder;
    const std::string path = folder.file("lines.gz");
    gzFile packed = gzopen(path.c_str(), "wb");
    for (int i = 0; i < 9000; i++)
        gzprintf(packed, "line %d of a catalogue\n", i);
    ASSERT_EQ(gzclose(packed), Z_OK);

    const Seen seen = expect_all_or_nothing([&] {
        SourceFile file(path);
        std::string text;
        for (std::string_view line; file.next_line(line);)
            text.append(line).append("\n");
        return text;
    });
    EXPECT_GT(seen.requests, 5) << "the library's own are among them";
}
