// SPDX-License-Identifier: BSD-3-Clause

// Messages to the user, on standard error.
//
// Errors:    none: what cannot be written is lost.
// Threads:   any; a line of up to 4 KiB is written in one piece.
#pragma once

#include <initializer_list>
#include <string_view>

namespace velmora {

// Writes one line to standard error, over a progress line if there is one: "velmora: " and the
// pieces, made printable. This is where every message leaves the program, so nothing in one can
// move the cursor or begin a line of its own. Allocates nothing.
void say(std::initializer_list<std::string_view> pieces);
inline void say(std::string_view line) {
    say({line});
}

} // namespace velmora
