// SPDX-License-Identifier: BSD-3-Clause

// Sets of named values: looking them up, setting, updating and visiting them.
#define XSOURCE "metadata"

#include "core/xception.h"
#include "kessimage/image.h"

#include <cstring>

namespace Kess {

typedef ImageSpec::MetaData MetaData;

ImageSpec::MetaVisitor::~MetaVisitor() {}

// The value of that name, or null.
static MetaInfo* find(const MetaData& set, const char* name) {
    const MetaData::Entry* entry = set.lookup(InString::intern(name));
    return entry ? entry->value.info : nullptr;
}

static bool has_type(const MetaInfo& info, const char* type) {
    return strcmp(info.type_str(), type) == 0;
}

// The value that `info` holds. Asserted, as a caller whose type name does not match its value's
// type would otherwise overwrite memory.
template <class T>
static T& value_in(MetaInfo& info) {
    auto* typed = dynamic_cast<TypedInfo<T>*>(&info);
    XASSERT(typed);
    return typed->value;
}

// ---- Getting ---------------------------------------------------------------------------------

template <class T>
static int get(const MetaData& set, const char* type, const char* name, T& value,
               const char* function) {
    // Missing, of another type, or found.
    MetaInfo* info = find(set, name);
    if (!info)
        return 1;
    if (!has_type(*info, type)) {
        Xception::warning(function, "metadata type mismatch; wanted %s got %s", type,
                          info->type_str());
        return 2;
    }
    value = value_in<T>(*info);
    return 0;
}

int MetaData::get_meta(const char* type, const char* name, float& value) const {
    return get(*this, type, name, value, __PRETTY_FUNCTION__);
}

int MetaData::get_meta(const char* type, const char* name, String& value) const {
    return get(*this, type, name, value, __PRETTY_FUNCTION__);
}

// ---- Setting ---------------------------------------------------------------------------------

template <class T>
static void add(MetaData& set, const char* type, const char* name, const T& value) {
    // The entry holds a clone of the value; the original is freed with `ref`, whatever throws.
    const MetaInfoRef ref(new_MetaInfo(type, value));
    set.insert(new MetaData::Entry(InString::intern(name), ref));
}

// Fails in the name of `function`, the public function that called it, as the others here do.
template <class T>
static void set_value(MetaData& set, const char* type, const char* name, const T& value,
                      const char* function) {
    MetaInfo* info = find(set, name);
    if (!info) {
        add(set, type, name, value);
        return;
    }
    if (!has_type(*info, type))
        XTHROW_AT(function, __LINE__,
                  "metadata tag '%s' already present but with type '%s' not '%s'", name,
                  info->type_str(), type);
    if (info->file_position != 0)
        XTHROW_AT(function, __LINE__, "no updates allowed after writing to file, use update_meta");

    // Everything that can refuse the value has passed: overwrite it in its place.
    value_in<T>(*info) = value;
}

void MetaData::set_meta(const char* type, const char* name, float value) {
    set_value(*this, type, name, value, __PRETTY_FUNCTION__);
}

void MetaData::set_meta(const char* type, const char* name, const String& value) {
    set_value(*this, type, name, value, __PRETTY_FUNCTION__);
}

void MetaData::set_meta(const char* type, const char* name, const Matrix4<float>& value) {
    set_value(*this, type, name, value, __PRETTY_FUNCTION__);
}

s64 MetaData::update_meta(const char* type, const char* name, float value) {
    MetaInfo* info = find(*this, name);
    if (!info)
        XTHROW("metadata tag '%s' does not exist", name);
    if (info->file_position == 0)
        XTHROW("metadata tag '%s' was never written to file", name);
    if (!has_type(*info, type))
        XTHROW("metadata tag '%s' already present but with type '%s' not '%s'", name,
               info->type_str(), type);
    value_in<float>(*info) = value;
    return info->file_position;
}

// ---- Visiting --------------------------------------------------------------------------------

namespace {

// Calls the visitor's function for each entry's type.
class Visiting : public MetaData::ForEachFunc {
public:
    Visiting(ImageSpec::MetaVisitor& visitor, const char* function)
        : visitor(visitor), function(function) {}

    int operator()(MetaData::Entry* entry) override {
        MetaInfo& info = *entry->value;
        const char* type = info.type_str();
        const char* name = velmora::text_of(entry->key.text());
        switch (info.type()) {
        case 0:
            return visitor.visit_float(type, name, value_in<float>(info), info.file_position);
        case 1:
            return visitor.visit_String(type, name, value_in<String>(info), info.file_position);
        case 2:
            return visitor.visit_m44f(type, name, value_in<Matrix4<float>>(info),
                                      info.file_position);
        default:
            XTHROW_AT(function, __LINE__, "unhandled type '%s'", type);
        }
    }

private:
    ImageSpec::MetaVisitor& visitor;
    const char* function;
};

} // namespace

void MetaData::for_each_meta(MetaVisitor& visitor) const {
    Visiting visiting(visitor, __PRETTY_FUNCTION__);
    for_each_const(visiting);
}

} // namespace Kess
