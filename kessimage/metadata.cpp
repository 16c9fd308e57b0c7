// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "metadata"

#include "kessimage/metadata.h"

#include "core/xception.h"

#include <cstring>
#include <memory>
#include <utility>

namespace Kess {

MetaInfo::~MetaInfo() {}

MetaInfoRef& MetaInfoRef::operator=(const MetaInfoRef& other) {
    MetaInfoRef copy(other);
    std::swap(info, copy.info);
    return *this;
}

// ---- What differs between the types ----------------------------------------------------------

// type(), type_str() and stringify() by overloading, so that TypedInfo<T> is one template.

// The results of type().
enum { FLOAT_TYPE = 0, STRING_TYPE = 1, M44F_TYPE = 2 };

// The results of type_str(), which the text form and the visitors show.
static const char* name_of_type(const float&) {
    return "float";
}
static const char* name_of_type(const String&) {
    return "string";
}
static const char* name_of_type(const Matrix4<float>&) {
    return "m44f";
}

static int code_of_type(const float&) {
    return FLOAT_TYPE;
}
static int code_of_type(const String&) {
    return STRING_TYPE;
}
static int code_of_type(const Matrix4<float>&) {
    return M44F_TYPE;
}

static String text_of(const float& value) {
    return String::fmt("%g", double(value));
}

// A text with spaces is quoted. Quotes are escaped but backslashes are not, so a quoted text with a
// backslash does not read back as it was.
static String text_of(const String& value) {
    if (value.find(' ') == u32(-1))
        return value;
    String quoted("\"");
    for (const char* p = value.str; *p; p++) {
        if (*p == '"')
            quoted += '\\';
        quoted += *p;
    }
    quoted += '"';
    return quoted;
}

// Nine decimals are ten significant digits: enough to read every float back exactly.
static String text_of(const Matrix4<float>& value) {
    String quoted("\"");
    for (int i = 0; i < 16; i++)
        quoted += String::fmt(i == 0 ? "%.9e" : " %.9e", double(value.e[i]));
    quoted += '"';
    return quoted;
}

template <class T>
const char* TypedInfo<T>::type_str() const {
    return name_of_type(value);
}

template <class T>
int TypedInfo<T>::type() const {
    return code_of_type(value);
}

template <class T>
MetaInfo* TypedInfo<T>::copy() const {
    return new TypedInfo(value);
}

template <class T>
String TypedInfo<T>::stringify() const {
    return text_of(value);
}

template class TypedInfo<float>;
template class TypedInfo<String>;
template class TypedInfo<Matrix4<float>>;

// ---- Making and comparing --------------------------------------------------------------------

template <class T>
MetaInfo* new_MetaInfo(const char* type, const T& value) {
    // Owned until the assertion has passed, and freed if it fails.
    std::unique_ptr<MetaInfo> ret(new TypedInfo<T>(value));
    XASSERT(!strcmp(type, ret->type_str()));
    return ret.release();
}

template MetaInfo* new_MetaInfo(const char*, const float&);
template MetaInfo* new_MetaInfo(const char*, const String&);
template MetaInfo* new_MetaInfo(const char*, const Matrix4<float>&);

// REQUIRES: type() says that `info` is a TypedInfo<T>.
template <class T>
static const T& value_of(const MetaInfo& info) {
    return static_cast<const TypedInfo<T>&>(info).value;
}

// Compares numbers, not bytes: -0 equals 0, and a NaN equals nothing.
static bool same_elements(const Matrix4<float>& a, const Matrix4<float>& b) {
    for (int i = 0; i < 16; i++)
        if (!(a.e[i] == b.e[i]))
            return false;
    return true;
}

bool operator==(const MetaInfo& a, const MetaInfo& b) {
    // Values of different types are unequal, whatever they hold.
    if (a.type() != b.type())
        return false;
    switch (a.type()) {
    case FLOAT_TYPE:
        return value_of<float>(a) == value_of<float>(b);
    case STRING_TYPE:
        return value_of<String>(a) == value_of<String>(b);
    case M44F_TYPE:
        return same_elements(value_of<Matrix4<float>>(a), value_of<Matrix4<float>>(b));
    default:
        XTHROW("unhandled type '%s'", a.type_str());
    }
}

bool operator!=(const MetaInfo& a, const MetaInfo& b) {
    return !(a == b);
}

} // namespace Kess
