// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/source_file.h"
#include "catalog/catalog_error.h"
#include "osapi/osapi.h"

#include <cstring>

namespace velmora {

static const uword buffer_size = 1 << 16;
static_assert(buffer_size > SourceFile::longest_line + 2, "a whole line and its end fit");

SourceFile::SourceFile(const std::string& path)
    : path(path), file(path), buffer(buffer_size), begin(0), end(0), line_number(0) {
    if (OSAPI::is_directory(path.c_str()))
        fail("is a directory, not a file");
}

void SourceFile::fail(const std::string& why) const {
    throw CatalogError(path, why);
}

void SourceFile::fail_line(const std::string& why) const {
    throw CatalogError(path + ", line " + std::to_string(line_number), why);
}

std::string_view SourceFile::unread() const {
    return std::string_view(buffer.data() + begin, end - begin);
}

// Reads more bytes after the unread ones, which move to the front; false at the end of the file.
bool SourceFile::fill() {
    memmove(buffer.data(), buffer.data() + begin, end - begin);
    end -= begin;
    begin = 0;

    // An error is one about the file, with the last line that came out whole.
    try {
        const uword count = file.read(buffer.data() + end, buffer.size() - end);
        end += count;
        return count > 0;
    } catch (const UnpackError& error) {
        fail(error.what() +
             (line_number ? " after line " + std::to_string(line_number) : std::string()));
    }
}

std::string_view SourceFile::head() {
    while (unread().size() < longest_line && fill()) {
    }
    return unread().substr(0, longest_line);
}

// The offset, among the unread bytes, of the next line's LF or of the end of the file; an offset
// beyond the longest line when the line is too long.
uword SourceFile::find_line_end() {
    // Search only what was not searched before, and read more until there is a line.
    uword searched = 0;
    for (;;) {
        const uword found = unread().find('\n', searched);
        if (found != std::string_view::npos)
            return found;
        searched = unread().size();
        if (searched > longest_line + 1 || !fill())
            return searched;
    }
}

bool SourceFile::next_line(std::string_view& line) {
    const uword length = find_line_end();
    if (unread().empty())
        return false;
    line_number++;

    // The line without CR and LF.
    std::string_view taken = unread().substr(0, length);
    if (!taken.empty() && taken.back() == '\r')
        taken.remove_suffix(1);
    if (taken.size() > longest_line)
        fail_line("longer than " + std::to_string(longest_line) + " bytes");
    if (taken.find('\0') != std::string_view::npos)
        fail_line("holds a NUL byte");

    // Consume its end with it, if it has one.
    line = taken;
    begin = length < unread().size() ? begin + length + 1 : end;
    return true;
}

} // namespace velmora
