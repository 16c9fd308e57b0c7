// SPDX-License-Identifier: BSD-3-Clause

// Catalogue files as a busy or failing system gives them: whole, or an error.
#include "catalog/source_file.h"

#include "tests/catalog/failures.h"
#include "tests/catalog/gzip.h"
#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace velmora {

// The lines, or what is said.
static std::string read_of(const std::string& path) {
    std::string text;
    const std::string error = catalog_error_of([&] {
        SourceFile file(path);
        for (std::string_view line; file.next_line(line);)
            text.append(line).append("\n");
    });
    return error == "no error" ? text : error;
}

static const std::string text = "0123456789\nabcdefghij\n";

TEST(SourceFileFailure, AShortOrInterruptedReadIsNoEnd) {
    const ScratchFolder folder;
    for (const std::string& bytes : {text, gzip(text), gzip(text) + std::string(20, '\0')}) {
        const std::string path = folder.write("stars.csv", bytes);
        for (std::size_t most = 1; most <= bytes.size() + 1; most++) {
            SystemCalls calls;
            calls.shorten("read", most);
            calls.fail("read", EINTR, 2);
            EXPECT_EQ(read_of(path), text) << most;
        }
    }
}

TEST(SourceFileFailure, AFailingReadIsReported) {
    const ScratchFolder folder;
    for (const std::string& bytes : {text, gzip(text)}) {
        const std::string path = folder.write("stars.csv", bytes);
        for (int nth = 1; nth <= int(bytes.size() / 5) + 1; nth++) {
            SystemCalls calls;
            calls.shorten("read", 5);
            calls.fail("read", EIO, nth);
            const std::string said = read_of(path);
            EXPECT_EQ(said.substr(0, said.find(" after line ")),
                      path + ": reading: Input/output error")
                << nth;
        }
    }
}

} // namespace velmora
