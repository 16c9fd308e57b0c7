// SPDX-License-Identifier: BSD-3-Clause

// A plug-in with the library inside, see instring_late_host.cpp.

#include "core/instring.h"

// Interns two texts, once and for good, and makes a name of its own. Gives whether the table then
// holds them, and prints it.
extern "C" bool intern_names() {
    const InString name = InString::intern("a");
    TempInString("c").make_permanent();
    InString::gensym();
    InString::dump();
    return InString::intern("a") == name && name.text() == String("a") &&
           InString::intern("c").text() == String("c");
}
