// A catalogue file read as lines of text, packed with gzip or plain: its first bytes tell which.
//
// Shapes:    a line ends in LF or CRLF and has at most `longest_line` bytes before that; the last
//            one may end with the file. Pipes can be read too: nothing is read twice.
// Errors:    throws CatalogError for what is wrong in the file, StrXception when the system does
//            not open it.
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

    // The first bytes, unpacked, at most `longest_line` of them: what kind of file it is can be
    // seen there. To be asked before the first line is taken; takes nothing.
    std::string_view head();

    // Takes the next line, without its end; false behind the last. `line` is valid until the next
    // call.
    bool next_line(std::string_view& line);

    // Throws a CatalogError about the file, or about the line that was taken last.
    [[noreturn]] void fail(const std::string& why) const;
    [[noreturn]] void fail_line(const std::string& why) const;

private:
    std::string path;
    UnpackedFile file;
    std::vector<char> buffer;
    uword begin, end; // of the bytes in `buffer` that no line has taken
    u64 line_number;  // of the line that was taken last, the first being 1

    std::string_view unread() const;
    bool fill();
    uword find_line_end();
};

} // namespace velmora
