// SPDX-License-Identifier: BSD-3-Clause

// A catalogue file read as lines of text, plain or compressed with gzip, whatever its name.
//
// Shapes:    a line ends in LF or CRLF and has at most `longest_line` bytes before that; the last
//            one may end with the file. Nothing is read twice, so pipes can be read too.
// Errors:    throws CatalogError for an error in the file, StrXception when it cannot be opened.
// Threads:   one object belongs to one thread at a time.
#pragma once

#include "catalog/unpacked_file.h"
#include "core/types.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

class SourceFile {
public:
    static constexpr uword longest_line = 4096; // bytes

    explicit SourceFile(const std::string& path);

    // The first bytes, unpacked, at most `longest_line` of them, from which the kind of file can be
    // recognised. Consumes nothing. REQUIRES: no line has been taken.
    std::string_view head();

    // Takes the next line, without its end, into `line`, which is valid until the next call; false
    // after the last line.
    bool next_line(std::string_view& line);

    // Throw a CatalogError about the file, and about the line that was taken last.
    [[noreturn]] void fail(const std::string& why) const;
    [[noreturn]] void fail_line(const std::string& why) const;

private:
    std::string path;
    UnpackedFile file;
    std::vector<char> buffer;
    uword begin, end; // the bytes of `buffer` that are not taken yet
    u64 line_number;  // of the line taken last, counted from 1

    std::string_view unread() const;
    bool fill();
    uword find_line_end();
};

} // namespace velmora
