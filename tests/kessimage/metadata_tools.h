// SPDX-License-Identifier: BSD-3-Clause

// Names, matrices and visits for the tests of metadata.
#pragma once

#include "kessimage/image.h"

#include <algorithm>
#include <string>
#include <vector>

typedef Kess::ImageSpec::MetaData MetaData;

// A tag's name in a text of ours; empty texts may be null.
inline std::string text_of(const String& s) {
    return s.str ? s.str : "";
}

// The order in which a set of four buckets walks names that were set in the given order.
inline std::vector<std::string> in_map_order(std::vector<std::string> names) {
    const auto bucket = [](const std::string& name) {
        return reinterpret_cast<uword>(InString::intern(name.c_str()).record) / 16 % 4;
    };
    std::stable_sort(names.begin(), names.end(), [&](const std::string& a, const std::string& b) {
        return bucket(a) < bucket(b);
    });
    return names;
}

// `first`, and what adding `step` to it again and again gives.
inline Matrix4<float> counting_matrix(float first, float step) {
    Matrix4<float> m;
    for (int i = 0; i < 16; i++)
        m.e[i] = first + step * float(i);
    return m;
}

inline bool same_bits(const Matrix4<float>& a, const Matrix4<float>& b) {
    return std::equal(a.e, a.e + 16, b.e);
}

// Writes every visit down, and does with the file position what a test asks for.
class Visits : public Kess::ImageSpec::MetaVisitor {
public:
    struct Visit {
        std::string type, name;
        float number;
        std::string text;
        Matrix4<float> matrix;
        s64 file_position;
    };

    std::vector<Visit> seen;
    int result = 0;       // what each visit gives
    s64 new_position = 0; // recorded for every value, unless 0
    bool to_zero = false; // records 0 for every value

    int visit_float(const char* type, const char* name, const float& value,
                    s64& file_position) override {
        seen.push_back({type, name, value, "", {}, file_position});
        return record(file_position);
    }
    int visit_String(const char* type, const char* name, const String& value,
                     s64& file_position) override {
        seen.push_back({type, name, 0, text_of(value), {}, file_position});
        return record(file_position);
    }
    int visit_m44f(const char* type, const char* name, const Matrix4<float>& value,
                   s64& file_position) override {
        seen.push_back({type, name, 0, "", value, file_position});
        return record(file_position);
    }

    // The visit of that name, or an empty one.
    Visit of(const std::string& name) const {
        for (const Visit& visit : seen)
            if (visit.name == name)
                return visit;
        return {"(none)", "", 0, "", {}, -1};
    }

    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const Visit& visit : seen)
            all.push_back(visit.name);
        return all;
    }

private:
    int record(s64& file_position) {
        if (new_position || to_zero)
            file_position = new_position;
        return result;
    }
};

template <class Set>
Visits visits_of(const Set& set) {
    Visits visits;
    set.for_each_meta(visits);
    return visits;
}

// Records that every value of `set` was written at `position`.
template <class Set>
void write_all_at(Set& set, s64 position) {
    Visits visits;
    visits.new_position = position;
    visits.to_zero = position == 0;
    set.for_each_meta(visits);
}
