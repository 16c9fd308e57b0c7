// SPDX-License-Identifier: BSD-3-Clause

// Any bytes read as metadata text: only failures that the text form knows, and a set that can be
// written and read again, see docs/metadata-text.md.
#include "core/xception.h"
#include "fuzz/law.h"
#include "kessimage/image.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

using velmora::require;
typedef Kess::ImageSpec::MetaData MetaData;

static bool starts_with(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

static bool is_known_refusal(std::string_view message) {
    const struct {
        const char *start, *inside;
    } known[] = {
        {"invalid metadata string", " in <"},
        {"metadata ", " is missing value in <"},
        {"unterminated \\ in metadata ", " in <"},
        {"unterminated quoted string in metadata ", " in <"},
        {"error reading m44f metadata '", "' in <"},
        {"unhandled type '", "' in <"},
        {"metadata tag '", "' already present but with type '"},
    };
    for (const auto& refusal : known)
        if (starts_with(message, refusal.start) &&
            message.find(refusal.inside) != std::string_view::npos)
            return true;
    return false;
}

// Adds the text's tags to `set`; false when it is refused, as it then must be.
static bool read_text(MetaData& set, const char* text) {
    try {
        set.from_string(text);
        return true;
    } catch (const StrXception& refusal) {
        require(is_known_refusal(velmora::text_of(refusal.message)), "a refused text is told why");
    } catch (const AssertXception& refusal) {
        require(!strcmp(refusal.expr, "*p == ' '") || !strcmp(refusal.expr, "*p == ':'"),
                "a text fails an assertion at a blank or a colon only");
    }
    return false;
}

namespace {

// What decides how much of a set its text keeps.
class Survey : public Kess::ImageSpec::MetaVisitor {
public:
    bool blank_in_name = false; // cannot be written
    bool unsafe_string = false; // is written, but reads as something else
    bool empty_at_end = false;  // is written, but cannot be read
    bool nan = false;           // never equal to itself
    bool more_than_six = false; // a float with more than the six digits that are written
    bool reads_back() const { return !unsafe_string && !empty_at_end; }
    bool keeps_values() const { return !nan && !more_than_six; }

    explicit Survey(const MetaData& set) { set.for_each_meta(*this); }

    int visit_float(const char*, const char* name, const float& value, s64&) override {
        visit_name(name);
        nan |= value != value;
        const String six_digits = String::fmt("%g", double(value));
        more_than_six |= float(strtod(six_digits.str, nullptr)) != value;
        return 0;
    }

    int visit_String(const char*, const char* name, const String& value, s64&) override {
        visit_name(name);
        const char* text = velmora::text_of(value);
        unsafe_string |= strchr(text, ' ') ? strchr(text, '\\') != nullptr : *text == '"';
        empty_at_end = !*text;
        return 0;
    }

    int visit_m44f(const char*, const char* name, const Matrix4<float>& value, s64&) override {
        visit_name(name);
        for (const float element : value.e)
            nan |= element != element;
        return 0;
    }

private:
    void visit_name(const char* name) {
        blank_in_name |= strchr(name, ' ') != nullptr;
        empty_at_end = false;
    }
};

} // namespace

// Writes `set`; false when it is refused.
static bool write_text(const MetaData& set, String& line) {
    try {
        line = set.stringify();
        return true;
    } catch (const StrXception& refusal) {
        require(starts_with(velmora::text_of(refusal.message), "can't handle quoting yet in <"),
                "a set that cannot be written is told why");
        return false;
    }
}

static void check_writing(const MetaData& set) {
    const Survey survey(set);
    String line;
    const bool written = write_text(set, line);
    require(written == !survey.blank_in_name, "a set is written unless a name holds a blank");
    if (!written)
        return;
    require(MetaData::string_valid(velmora::text_of(line)), "what is written starts like metadata");

    MetaData again;
    const bool read = read_text(again, velmora::text_of(line));
    if (!survey.reads_back())
        return;
    String line_again;
    require(read, "what is written reads back");
    require(write_text(again, line_again) && line_again == line,
            "what was read back is written as it was");
    require((set == again) == survey.keeps_values(),
            "values come back but for a float's digits behind the sixth");
}

static void check_reading_twice(const MetaData& set, const char* text, bool read) {
    MetaData twice(set);
    require(read_text(twice, text) == read, "a text is refused or not whatever it set before");
    require(Survey(set).nan || (set == twice && twice == set),
            "reading a text twice sets what reading it once does");
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<char> bytes(size + 1);
    std::copy(data, data + size, bytes.begin());
    const char* const text = bytes.data(); // ends at the first NUL
    {
        MetaData set;
        const bool read = read_text(set, text);
        const bool valid = starts_with(text, "KESSMETA1");
        require(MetaData::string_valid(text) == valid, "valid texts start like metadata");
        require(valid || (!read && set.empty()), "other texts are refused and set nothing");
        // Tags set before a refusal remain, and are a set like any other.
        check_writing(set);
        check_reading_twice(set, text, read);
    }
    // The names of this input are no longer needed, and the table would grow without limit.
    InString::cleanup();
    return 0;
}
