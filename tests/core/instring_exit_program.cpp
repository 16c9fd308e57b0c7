// SPDX-License-Identifier: BSD-3-Clause

// Interns names in every way there is and ends, see instring_lifecycle_test.cpp.

#include "tests/core/instring_exit_log.h"

#include <cstdlib>
#include <initializer_list>

static void tell_of_exit() {
    tell("%s%s\n", "exit handler of main");
}

int main() {
    watch_name(InString::intern("b"), "b");

    for (const char* label : {"first gensym", "second gensym"}) {
        const InString name = InString::gensym();
        watch_name(name, label);
        tell("%s is %s\n", label, name.text().str);
    }

    TempInString temp("c");
    watch_name(InString(temp.record), "the record of c");
    temp.make_permanent();
    watch_block(newest_block(), "the node of c");

    atexit(tell_of_exit);
    static const NamedObject local("local static of main", "p");
    return 0;
}
