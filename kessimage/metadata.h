// Single values of image metadata: floats, texts and matrices that know their type.
//
//     class                      type()  type_str()  value
//     TypedInfo<float>           0       "float"     one float
//     TypedInfo<String>          1       "string"    a text
//     TypedInfo<Matrix4<float>>  2       "m44f"      sixteen floats, row by row
//
// Ownership: a MetaInfoRef owns its value; copies clone it. No two handles share one.
// Errors:    comparing values of another kind throws StrXception "unhandled type '…'". Memory that
//            runs out is std::bad_alloc for values, StrXception "out of memory" where stringify
//            formats numbers, and unchecked where a String is copied or appended to.
// Threads:   a value belongs to one thread at a time.
#pragma once

#include "core/newmatrix.h"
#include "core/string.h"
#include "core/types.h"

namespace Kess {

class MetaInfo {
public:
    // Where in a file the value was written, in bytes from its start; 0 when it was not.
    s64 file_position;

    MetaInfo() : file_position(0) {}
    MetaInfo(const MetaInfo&) = delete;
    MetaInfo& operator=(const MetaInfo&) = delete;

    virtual const char* type_str() const = 0;
    virtual int type() const = 0;

    // A new value of the same type and contents, not written anywhere; the caller owns it.
    virtual MetaInfo* copy() const = 0;

    // The value's text in the metadata's one-line form.
    virtual String stringify() const = 0;

    virtual ~MetaInfo();
};

template <class T>
class TypedInfo : public MetaInfo {
public:
    T value;

    explicit TypedInfo(const T& value) : value(value) {}

    const char* type_str() const override;
    int type() const override;
    MetaInfo* copy() const override;
    String stringify() const override;
};

// Equal types and values; file positions do not count. A NaN is never equal.
bool operator==(const MetaInfo& a, const MetaInfo& b);
bool operator!=(const MetaInfo& a, const MetaInfo& b);

// A new value, owned by the caller. Asserts that `type` is the name of T's type.
template <class T>
MetaInfo* new_MetaInfo(const char* type, const T& value);

// Owns one value.
class MetaInfoRef {
public:
    MetaInfo* info;

    explicit MetaInfoRef(MetaInfo* info) : info(info) {} // takes ownership
    MetaInfoRef(const MetaInfoRef& other) : info(other.info->copy()) {}
    MetaInfoRef& operator=(const MetaInfoRef& other);
    ~MetaInfoRef() { delete info; }

    MetaInfo& operator*() const { return *info; }
    MetaInfo* operator->() const { return info; }
};

inline bool operator==(const MetaInfoRef& a, const MetaInfoRef& b) {
    return *a == *b;
}
inline bool operator!=(const MetaInfoRef& a, const MetaInfoRef& b) {
    return !(a == b);
}

extern template class TypedInfo<float>;
extern template class TypedInfo<String>;
extern template class TypedInfo<Matrix4<float>>;

} // namespace Kess
