// SPDX-License-Identifier: BSD-3-Clause

// The one-line text form of metadata: "KESSMETA1", then " type:name=value" for each value.
#define XSOURCE "metadata"

#include "core/xception.h"
#include "kessimage/image.h"

#include <cstdio>
#include <cstring>

namespace Kess {

typedef ImageSpec::MetaData MetaData;
using velmora::text_of;

static const char introduction[] = "KESSMETA1";
static const uword introduction_length = sizeof introduction - 1;

// ---- Writing ---------------------------------------------------------------------------------

namespace {

// Appends " type:name=value" to a line for each entry.
class Writing : public MetaData::ForEachFunc {
public:
    Writing(String& line, const char* function) : line(line), function(function) {}

    int operator()(MetaData::Entry* entry) override {
        line += ' ';
        const char* name = text_of(entry->key.text());
        if (strpbrk(name, " ="))
            XTHROW_AT(function, __LINE__, "can't handle quoting yet");
        line += entry->value->type_str();
        line += ':';
        line += name;
        line += '=';
        line += entry->value->stringify();
        return 0;
    }

private:
    String& line;
    const char* function;
};

} // namespace

String MetaData::stringify() const {
    String line(introduction);
    Writing writing(line, __PRETTY_FUNCTION__);
    for_each_const(writing);
    return line;
}

// ---- Reading ---------------------------------------------------------------------------------

bool MetaData::string_valid(const char* text) {
    return strncmp(text, introduction, introduction_length) == 0;
}

// Returns the characters from `p` to the first of `ends` or the text's end, and moves `p` there.
static String take_until(const char*& p, const char* ends) {
    const uword length = strcspn(p, ends);
    const String taken(p, unsigned(length));
    p += length;
    return taken;
}

// Returns a quoted text without its escapes; moves `p` from after the opening quote to after the
// closing one.
static String take_quoted(const char*& p, const char* name, const char* function) {
    String value;
    for (; *p != '"'; p++) {
        if (*p == '\\' && !*++p)
            XTHROW_AT(function, __LINE__, "unterminated \\ in metadata %s", name);
        if (!*p)
            XTHROW_AT(function, __LINE__, "unterminated quoted string in metadata %s", name);
        value += *p;
    }
    p++;
    return value;
}

// Reads sixteen numbers, row by row; text after them is ignored.
static Matrix4<float> matrix_of(const char* text, const char* name, const char* function) {
    Matrix4<float> m;
    float* e = m.e;
    const int read = sscanf(text, "%f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f", &e[0], &e[1],
                            &e[2], &e[3], &e[4], &e[5], &e[6], &e[7], &e[8], &e[9], &e[10], &e[11],
                            &e[12], &e[13], &e[14], &e[15]);
    if (read != 16)
        XTHROW_AT(function, __LINE__, "error reading m44f metadata '%s'", name);
    return m;
}

// A name may be empty; a String's text is then null, which text_of makes "".
static void set_from_text(MetaData& set, const String& type, const String& name,
                          const String& value, const char* function) {
    if (type == "float")
        set.set_meta("float", text_of(name), float(value.atof()));
    else if (type == "string")
        set.set_meta("string", text_of(name), value);
    else if (type == "m44f")
        set.set_meta("m44f", text_of(name), matrix_of(text_of(value), text_of(name), function));
    else
        XTHROW_AT(function, __LINE__, "unhandled type '%s'", text_of(type));
}

void MetaData::from_string(const char* text) {
    const char* const function = __PRETTY_FUNCTION__;
    if (!string_valid(text))
        XTHROW("invalid metadata string");

    const char* p = text + introduction_length;
    while (*p) {
        XASSERT(*p == ' ');
        p++;

        // type:
        const String type = take_until(p, ":");
        XASSERT(*p == ':');
        p++;

        // name=, without which the text was cut
        const String name = take_until(p, "=");
        if (!*p) {
            Xception::warning(function, "image metadata appears to be truncated");
            return;
        }
        XASSERT(*p == '=');
        p++;

        // value, quoted or up to the next space
        if (!*p)
            XTHROW("metadata %s is missing value", text_of(name));
        String value;
        if (*p == '"')
            value = take_quoted(++p, text_of(name), function);
        else
            value = take_until(p, " ");
        set_from_text(*this, type, name, value, function);
    }
}

} // namespace Kess
