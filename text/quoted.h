// SPDX-License-Identifier: BSD-3-Clause

// Text from outside (a file's content, a path, an argument) made fit to be part of a message.
//
// On a terminal such text could move the cursor, recolour or erase what is there, pretend to be a
// line of its own, or reverse the reading order of its surroundings. Each byte of what could do so
// becomes \xHH:
//
//     bytes that are not UTF-8        overlong forms, surrogates and cut characters among them
//     controls                        U+0000..U+001F, U+007F..U+009F
//     ends of lines and paragraphs    U+2028, U+2029
//     what changes the direction      U+061C, U+200E, U+200F, U+202A..U+202E, U+2066..U+2069
//     what is invisible               U+200B, U+2060..U+2065, U+206A..U+206F, U+FEFF,
//                                     U+FFF9..U+FFFB, U+E0000..U+E007F
//
// Shapes:    everything else stays, so the result is one line of printable UTF-8. A backslash stays
//            too: the text can be shown safely but not recovered, and making a message printable a
//            second time changes nothing.
// Errors:    std::bad_alloc, except from take_printable.
// Threads:   pure functions.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

std::string printable(std::string_view text);

// The printable text in single quotes. Of more than `most` bytes, the whole characters that fit are
// shown, followed by "...".
//
// Not named `quoted`: for a std::string, <iomanip>'s function of that name would be found instead.
std::string in_quotes(std::string_view text, std::size_t most = 40);

// `most` for names that must be recognised in full.
const std::size_t in_full = std::string_view::npos;

// For messages when there may be no memory: moves as much of `text` as fits, printable, into the
// `room` bytes at `out` and returns how many were written. With a room of 4 or more, it makes
// progress until `text` is empty.
std::size_t take_printable(std::string_view& text, char* out, std::size_t room);

} // namespace velmora
