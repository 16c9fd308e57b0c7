// SPDX-License-Identifier: BSD-3-Clause

// One of two sources whose static objects intern names, at the earliest priority that a program may
// use and at the ordinary one.

#include "tests/core/instring_exit_log.h"

namespace {

// Interns a further name when all other objects are gone.
struct LastToGo {
    ~LastToGo() {
        watch_name(InString::intern("z"), "z");
        tell("%s interns %s\n", "last object", "z");
    }
};

[[gnu::init_priority(102)]] LastToGo last_to_go;
[[gnu::init_priority(102)]] NamedObject early("early object of the first source", "aa");
NamedObject ordinary("object of the first source", "bf");

} // namespace
