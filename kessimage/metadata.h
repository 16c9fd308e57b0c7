// SPDX-License-Identifier: BSD-3-Clause

// Single values of image metadata, each with its type: floats, texts and matrices.
//
//     class                      type()  type_str()  value
//     TypedInfo<float>           0       "float"     one float
//     TypedInfo<String>          1       "string"    a text
//     TypedInfo<Matrix4<float>>  2       "m44f"      sixteen floats, row by row
//
// Ownership: a MetaInfoRef owns its value; copying it clones the value.
// Errors:    comparing values of any other type throws StrXception "unhandled type '…'". Without
//            memory: std::bad_alloc for values, StrXception "out of memory" when stringify formats
//            numbers; copying and appending Strings is not checked.
// Threads:   a value belongs to one thread at a time.
#pragma once

#include "core/newmatrix.h"
#include "core/string.h"
#include "core/types.h"

namespace Kess {

class MetaInfo {
public:
    // The value's offset in the file it was written to, in bytes; 0 when it was not written.
    s64 file_position;

    MetaInfo() : file_position(0) {}
    MetaInfo(const MetaInfo&) = delete;
    MetaInfo& operator=(const MetaInfo&) = delete;

    virtual const char* type_str() const = 0;
    virtual int type() const = 0;

    // A new equal value with file_position 0, owned by the caller.
    virtual MetaInfo* copy() const = 0;

    // The value's text in the one-line form, see docs/metadata-text.md.
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

// Compare types and values, not file positions. A NaN equals nothing.
bool operator==(const MetaInfo& a, const MetaInfo& b);
bool operator!=(const MetaInfo& a, const MetaInfo& b);

// A new value, owned by the caller. Asserts that `type` is the name of T's type.
template <class T>
MetaInfo* new_MetaInfo(const char* type, const T& value);

// An owning handle of one value, never null.
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
