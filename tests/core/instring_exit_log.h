// SPDX-License-Identifier: BSD-3-Clause

// What a small program prints about its interned names on standard output: what its static objects
// still read while they are destroyed, and in which order the table's blocks are freed after them.
#pragma once

#include "core/instring.h"

void tell(const char* format, const char* a, const char* b = "");

// From here on, freeing `block` is printed as "freed <label>".
void watch_block(const void* block, const char* label);

// Watches the record of `name` and its text.
void watch_name(const InString& name, const char* label);

// The block that operator new made last.
const void* newest_block();

// Interns a text while it is made, and reads it while it is destroyed.
class NamedObject {
public:
    NamedObject(const char* who, const char* text);
    NamedObject(const NamedObject&) = delete;
    NamedObject& operator=(const NamedObject&) = delete;
    ~NamedObject();

private:
    const char* who;
    const char* text;
    InString name;
};
