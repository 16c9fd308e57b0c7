// SPDX-License-Identifier: BSD-3-Clause

// Reading texts while memory is short either succeeds as a whole or throws.
#include "host/script/chan.h"
#include "host/script/script.h"
#include "tests/failing_memory.h"

#include <gtest/gtest.h>

#include <new>

using namespace velmora;
using namespace velmora::host;

namespace {

// Runs `read` once for each allocation, which fails; "" or the text that it gave without an error.
template <class Read>
std::string wrong_without_memory(Read read) {
    for (int nth = 1; nth < 100000; nth++) {
        std::string got;
        bool told = false, failed = false;
        try {
            const FailingMemory memory(nth);
            const std::size_t count = read();
            failed = FailingMemory::has_failed();
            got = std::to_string(count) + " read";
        } catch (const std::bad_alloc&) {
            told = true;
        } catch (const std::exception& error) {
            got = error.what();
            failed = true;
        }
        if (!told && failed)
            return got + " when request " + std::to_string(nth) + " failed";
        if (!told)
            return nth > 10 ? "" : "too few requests";
    }
    return "no end";
}

} // namespace

TEST(TextMemory, ACameraIsReadWholeOrNotAtAll) {
    std::string text;
    for (int frame = 1; frame <= 30; frame++)
        text += std::to_string(frame) + std::string(std::size_t(frame), ' ') +
                "1.25 2.5 3.75 10.5 20.5 30.5\n";
    EXPECT_EQ(wrong_without_memory([&] { return Chan::parse(text, "shot.chan").frames().size(); }),
              "");
}

TEST(TextMemory, AScriptIsReadWholeOrNotAtAll) {
    std::string text;
    for (int node = 1; node <= 5; node++)
        text += "Blur" + std::to_string(node) + " {\n name a_node_with_a_long_name_" +
                std::to_string(node) + "\n label \"a text that no short buffer holds\"\n}\n";
    EXPECT_EQ(wrong_without_memory([&] { return Script::parse(text, "shot.nk").nodes.size(); }),
              "");
}
