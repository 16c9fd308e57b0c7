// SPDX-License-Identifier: BSD-3-Clause

// Images and metadata when memory runs out: each request for memory is refused in turn. What the
// library checks ends in an exception and leaves everything as it was; what a String asks for to
// copy or append a text is not checked, and ends the process.

#include "kessimage/image.h"

#include "tests/core/heap_watch.h"
#include "tests/core/observed.h"
#include "tests/kessimage/metadata_tools.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

typedef Kess::Image Image;
typedef Kess::ImageSpec Spec;

namespace {

const uword pixel_bytes = 4 * 321;    // asked for by nothing else
const std::size_t format_bytes = 100; // what formatting a text starts with

Spec some_spec() {
    Spec spec(321, 4, Spec::G_U8);
    spec.set_meta("float", "gain", 1.5f);
    spec.set_meta("string", "label", String("a \"b"));
    spec.set_meta("m44f", "camera", counting_matrix(1, 0.25f));
    return spec;
}

std::string contents_of(const Spec& spec) {
    std::string all = std::to_string(spec.width) + 'x' + std::to_string(spec.height) + ' ' +
                      std::to_string(spec.stride) + ' ' + std::to_string(spec.format) +
                      (spec.meta ? " with" : " without");
    for (const Visits::Visit& v : visits_of(spec).seen) {
        all += ' ' + v.type + ' ' + v.name + ' ' + std::to_string(v.number) + v.text + '@' +
               std::to_string(v.file_position);
        for (float e : v.matrix.e)
            all += ' ' + std::to_string(e);
    }
    return all;
}

// An action on a spec that has three tags, or on one that has none.
struct Scenario {
    const char* name;
    bool without_metadata;
    std::function<void(Spec&)> action;
};

const String text("text"), long_text("a longer text"), line("KESSMETA1 float:a=1 string:b=\"x y\"");
const Matrix4<float> matrix = counting_matrix(3, 1);

// Every name has its record from the start: what a name's first use leaves in the table is no leak.
const bool names_interned = [] {
    for (const char* name : {"gain", "label", "camera", "new", "a", "b"})
        InString::intern(name);
    return true;
}();

const std::vector<Scenario> scenarios = {
    {"set_meta of a new float", false, [](Spec& s) { s.set_meta("float", "new", 1.0f); }},
    {"set_meta of a new string", false, [](Spec& s) { s.set_meta("string", "new", text); }},
    {"set_meta of a new matrix", false, [](Spec& s) { s.set_meta("m44f", "new", matrix); }},
    {"a first float", true, [](Spec& s) { s.set_meta("float", "new", 1.0f); }},
    {"a first string", true, [](Spec& s) { s.set_meta("string", "new", text); }},
    {"a first matrix", true, [](Spec& s) { s.set_meta("m44f", "new", matrix); }},
    {"overwriting a float", false, [](Spec& s) { s.set_meta("float", "gain", 2.0f); }},
    {"overwriting a string", false, [](Spec& s) { s.set_meta("string", "label", long_text); }},
    {"overwriting a matrix", false, [](Spec& s) { s.set_meta("m44f", "camera", matrix); }},
    {"stringify", false, [](Spec& s) { s.meta->stringify(); }},
    {"from_string", false, [](Spec&) { MetaData().from_string(line.str); }},
    {"copying", false, [](Spec& s) { Spec copy(s); }},
    {"copying without metadata", true, [](Spec& s) { Spec copy(s); }},
    {"an image", false, [](Spec& s) { Image image(s); }},
    {"an image without metadata", true, [](Spec& s) { Image image(s); }},
};

Spec spec_for(const Scenario& scenario) {
    return scenario.without_metadata ? Spec(321, 4, Spec::G_U8) : some_spec();
}

std::vector<HeapWatch::Request> requests_of(const Scenario& scenario) {
    Spec spec = spec_for(scenario);
    HeapWatch watch;
    scenario.action(spec);
    watch.stop();
    std::vector<HeapWatch::Request> requests;
    for (int i = 0; i < watch.requests(); i++)
        requests.push_back(watch.request(i));
    return requests;
}

// What a refused request becomes: std::bad_alloc, a message, or nothing that anyone checks.
std::string expected_end(const HeapWatch::Request& request) {
    if (request.way == HeapWatch::NEW)
        return "std::bad_alloc";
    if (request.way == HeapWatch::MALLOC && request.bytes == pixel_bytes)
        return "out of memory in <char* Kess::malloc_pixels(uword)> (core:LINE)";
    if (request.way == HeapWatch::MALLOC && request.bytes == format_bytes)
        return "out of memory in <my_vsnprintf> (string:LINE)";
    return "unchecked";
}

// How the signature of a function that is local to its file is spelled is the compiler's affair.
std::string without_local_signature(const std::string& message) {
    const std::size_t open = message.find('<'), close = message.rfind('>');
    if (message.find("my_vsnprintf(") == std::string::npos || close == std::string::npos)
        return message;
    return message.substr(0, open) + "<my_vsnprintf>" + message.substr(close + 1);
}

// How `action` ends when its `n`th request is refused. `blocks` is how many it leaves.
template <class Action>
std::string end_of(Action action, int n, int& blocks) {
    std::string end;
    HeapWatch watch;
    watch.refuse(n);
    try {
        action();
        watch.stop();
        end = "done";
    } catch (StrXception& x) {
        watch.stop();
        end = without_local_signature(message_without_line_of([&x] { throw StrXception(x); }));
    } catch (std::bad_alloc&) {
        watch.stop();
        end = "std::bad_alloc";
    }
    blocks = watch.live() + watch.older_freed();
    return end;
}

} // namespace

// ---- Every request in turn -------------------------------------------------------------------

TEST(WithoutMemory, WhatIsCheckedThrowsLeavesNothingAllocatedAndChangesNothing) {
    ASSERT_TRUE(names_interned);
    for (const Scenario& scenario : scenarios) {
        const std::vector<HeapWatch::Request> requests = requests_of(scenario);
        for (std::size_t i = 0; i < requests.size(); i++) {
            const std::string expected = expected_end(requests[i]);
            if (expected == "unchecked")
                continue;
            Spec spec = spec_for(scenario);
            const std::string before = contents_of(spec);
            int blocks = 0;
            EXPECT_EQ(end_of([&] { scenario.action(spec); }, int(i) + 1, blocks), expected)
                << scenario.name << ", request " << i + 1;
            EXPECT_EQ(blocks, 0) << scenario.name << ", request " << i + 1;
            EXPECT_EQ(contents_of(spec), before) << scenario.name << ", request " << i + 1;
        }
    }
}

TEST(WithoutMemoryDeathTest, WhatAStringCopiesOrAppendsEndsTheProcess) {
    for (const Scenario& scenario : scenarios) {
        const std::vector<HeapWatch::Request> requests = requests_of(scenario);
        int died = 0;
        for (std::size_t i = 0; i < requests.size() && died < 4; i++) { // four of each will do
            if (expected_end(requests[i]) != "unchecked")
                continue;
            died++;
            Spec spec = spec_for(scenario);
            EXPECT_DEATH(
                {
                    HeapWatch watch;
                    watch.refuse(int(i) + 1);
                    scenario.action(spec);
                },
                "")
                << scenario.name << ", request " << i + 1;
        }
    }
}

// What each asks for: the counts are those of the objects that it makes.
TEST(WithoutMemory, EveryObjectIsAskedForByNew) {
    const auto news_of = [](int scenario) {
        int news = 0;
        for (const HeapWatch::Request& request : requests_of(scenarios[std::size_t(scenario)]))
            news += request.way == HeapWatch::NEW;
        return news;
    };
    EXPECT_EQ(news_of(0), 3);      // the value, its clone and the entry
    EXPECT_EQ(news_of(3), 3 + 3);  // and the set, its header and its buckets
    EXPECT_EQ(news_of(6), 0);      // in place
    EXPECT_EQ(news_of(9), 0);      // only text
    EXPECT_EQ(news_of(11), 3 + 6); // three entries with their values
    EXPECT_EQ(news_of(12), 0);
    EXPECT_EQ(news_of(13), 9);
}

// ---- Names that were never interned ----------------------------------------------------------

TEST(WithoutMemory, ANewNamesRecordIsAllThatStays) {
    static int names = 0;
    const auto new_name = [] { return String::fmt("never used %d", ++names); };

    std::vector<HeapWatch::Way> ways;
    {
        MetaData set;
        const String name = new_name();
        HeapWatch watch;
        set.set_meta("float", name.str, 1.0f);
        watch.stop();
        for (int i = 0; i < watch.requests(); i++)
            ways.push_back(watch.request(i).way);
    }
    std::vector<int> left_over;
    for (std::size_t i = 0; i < ways.size(); i++) {
        if (ways[i] != HeapWatch::NEW)
            continue;
        MetaData set;
        const String name = new_name();
        int blocks = 0;
        EXPECT_EQ(end_of([&] { set.set_meta("float", name.str, 1.0f); }, int(i) + 1, blocks),
                  "std::bad_alloc");
        EXPECT_TRUE(set.empty());
        EXPECT_EQ(TempInString(name).owned, blocks == 0);
        left_over.push_back(blocks);
    }
    // The record itself, then value, clone and entry, when the table holds the record and its text.
    EXPECT_EQ(left_over, (std::vector<int>{0, 2, 2, 2}));
}

// ---- Copies over what is there ---------------------------------------------------------------

TEST(WithoutMemory, AssignmentLeavesTheTarget) {
    const Spec source = some_spec();
    int refused = 0;
    for (int n = 1; n <= 40; n++) {
        Spec target(7, 8, 9, Spec::CINEON);
        target.set_meta("float", "gain", 5.0f);
        const std::string before = contents_of(target);
        {
            Spec probe(target);
            HeapWatch watch;
            probe = source;
            watch.stop();
            if (n > watch.requests())
                break;
            if (watch.request(n - 1).way != HeapWatch::NEW)
                continue;
        }
        int blocks = 0;
        EXPECT_EQ(end_of([&] { target = source; }, n, blocks), "std::bad_alloc");
        EXPECT_EQ(blocks, 0);
        EXPECT_EQ(contents_of(target), before);
        refused++;
    }
    EXPECT_EQ(refused, 9);
}

TEST(WithoutMemory, FromStringKeepsTheItemsBefore) {
    const char* const two = "KESSMETA1 float:a=1 m44f:b=\"1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\"";
    std::vector<HeapWatch::Request> requests;
    {
        MetaData set;
        HeapWatch watch;
        set.from_string(two);
        watch.stop();
        for (int i = 0; i < watch.requests(); i++)
            requests.push_back(watch.request(i));
    }
    std::vector<std::size_t> sizes;
    for (std::size_t i = 0; i < requests.size(); i++) {
        if (requests[i].way != HeapWatch::NEW)
            continue;
        MetaData set;
        int blocks = 0;
        EXPECT_EQ(end_of([&] { set.from_string(two); }, int(i) + 1, blocks), "std::bad_alloc");
        const std::vector<std::string> names = visits_of(set).names();
        sizes.push_back(names.size());
        EXPECT_EQ(blocks, 2 * int(names.size())); // an entry and its value
        EXPECT_TRUE(names.empty() || names == std::vector<std::string>{"a"});
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{0, 0, 0, 1, 1, 1}));
}

// ---- Pixels ----------------------------------------------------------------------------------

TEST(WithoutMemory, PixelsAreTracedUpToTheRefusal) {
    const Spec spec(321, 4, Spec::G_U8);
    std::string message;
    EXPECT_EQ(stderr_of([&] {
                  Kess::TRACE_ALLOCATIONS = 1;
                  int blocks = 0;
                  message = end_of([&] { Image image(spec); }, 1, blocks);
                  Kess::TRACE_ALLOCATIONS = 0;
                  EXPECT_EQ(blocks, 0);
              }),
              "libkessimage: malloc_pixels(1284)");
    EXPECT_EQ(message, "out of memory in <char* Kess::malloc_pixels(uword)> (core:LINE)");
}

// The flag is read again after the allocation.
TEST(WithoutMemory, ATraceSwitchedOffMeanwhileEndsThere) {
    char* block = nullptr;
    EXPECT_EQ(stderr_of([&] {
                  Kess::TRACE_ALLOCATIONS = 1;
                  HeapWatch watch;
                  watch.call([] { Kess::TRACE_ALLOCATIONS = 0; });
                  block = Kess::malloc_pixels(1284);
              }),
              "libkessimage: malloc_pixels(1284)");
    Kess::free_pixels(block, 1284);
}

TEST(WithoutMemory, ATraceSwitchedOnMeanwhileStartsThere) {
    char* block = nullptr;
    const std::string trace = stderr_of([&] {
        HeapWatch watch;
        watch.call([] { Kess::TRACE_ALLOCATIONS = 1; });
        block = Kess::malloc_pixels(1284);
        Kess::TRACE_ALLOCATIONS = 0;
    });
    EXPECT_EQ(trace.substr(0, 5), " = 0x");
    Kess::free_pixels(block, 1284);
}

TEST(WithoutMemory, AnImageHoldsOneBlockOfPixels) {
    const Spec spec(321, 4, Spec::G_U8);
    HeapWatch watch;
    const void* data;
    {
        Image image(spec);
        data = image.data;
        EXPECT_EQ(watch.live(), 1);
    }
    watch.stop();
    ASSERT_EQ(watch.requests(), 1);
    EXPECT_EQ(watch.request(0).bytes, pixel_bytes);
    ASSERT_EQ(watch.freed(), 1);
    EXPECT_EQ(watch.freed(0), data);
    EXPECT_EQ(watch.live(), 0);
}

TEST(WithoutMemory, ARefusedImageAsksForNoPixels) {
    const Spec narrow(321, 4, 320, Spec::G_U8), invalid(321, 4, 321, Spec::INVALID_FORMAT);
    const Spec unassigned(321, 4, 321, Spec::PixelFormat(2));
    for (const Spec* spec : {&narrow, &invalid, &unassigned}) {
        HeapWatch watch;
        bool thrown = false;
        try {
            Image image(*spec);
        } catch (Xception&) {
            thrown = true;
        }
        watch.stop();
        EXPECT_TRUE(thrown);
        for (int i = 0; i < watch.requests(); i++)
            EXPECT_NE(watch.request(i).bytes, pixel_bytes);
        EXPECT_EQ(watch.live(), 0);
    }
}

// ---- Values ----------------------------------------------------------------------------------

TEST(WithoutMemory, NewMetaInfoHoldsNothingWhenItsAssertionFails) {
    HeapWatch watch;
    bool thrown = false;
    try {
        Kess::new_MetaInfo("float", text);
    } catch (AssertXception&) {
        thrown = true;
    }
    watch.stop();
    EXPECT_TRUE(thrown);
    EXPECT_EQ(watch.live(), 0);
}

TEST(WithoutMemory, ADestroyedSpecHoldsNothing) {
    HeapWatch watch;
    {
        Spec spec = some_spec();
        Spec copy(spec), assigned;
        assigned = spec;
        assigned = copy;
    }
    watch.stop();
    EXPECT_EQ(watch.live(), 0);
    EXPECT_EQ(watch.older_freed(), 0);
}
