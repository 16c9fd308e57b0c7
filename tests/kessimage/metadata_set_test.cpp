// SPDX-License-Identifier: BSD-3-Clause

// Sets of metadata: getting, setting, patching and showing.

#include "kessimage/image.h"

#include "tests/core/captured.h"
#include "tests/core/observed.h"
#include "tests/kessimage/metadata_tools.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <initializer_list>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

typedef Kess::ImageSpec Spec;

namespace {

const std::string in_update_meta =
    " in <s64 Kess::ImageSpec::MetaData::update_meta(const char*, const char*, float)> "
    "(metadata:LINE)";

// A value of a kind that the library does not know.
class OtherInfo : public Kess::MetaInfo {
public:
    const char* type_str() const override { return "other"; }
    int type() const override { return -1; }
    MetaInfo* copy() const override { return new OtherInfo; }
    String stringify() const override { return "x"; }
};

void add_other(MetaData& set, const char* name) {
    set.insert(new MetaData::Entry(InString::intern(name), Kess::MetaInfoRef(new OtherInfo)));
}

MetaData one_of_each() {
    MetaData set;
    set.set_meta("float", "gain", 1.5f);
    set.set_meta("string", "label", String("two words"));
    set.set_meta("m44f", "camera", counting_matrix(1, 0.25f));
    return set;
}

// Everything that a set holds, in its order.
std::string contents_of(const MetaData& set) {
    std::string all;
    for (const Visits::Visit& v : visits_of(set).seen) {
        all += v.type + ' ' + v.name + ' ' + std::to_string(v.number) + " [" + v.text + "] at " +
               std::to_string(v.file_position);
        if (v.type == "m44f")
            for (float e : v.matrix.e)
                all += ' ' + std::to_string(e);
        all += '\n';
    }
    return all;
}

// The message up to its location, and whether the location is of the source `metadata`.
std::string text_thrown_by(const std::function<void()>& action) {
    const std::string message = message_without_line_of(action);
    const std::size_t location = message.find(" in <");
    const std::string end = "> (metadata:LINE)";
    if (location == std::string::npos || message.size() < end.size() ||
        message.compare(message.size() - end.size(), end.size(), end) != 0)
        return message + " (no location in metadata)";
    return message.substr(0, location);
}

} // namespace

// ---- What it is made of ----------------------------------------------------------------------

TEST(MetaData, IsAMapOfFourBuckets) {
    EXPECT_TRUE((std::is_base_of<PtrMap<InString, Kess::MetaInfoRef>, MetaData>::value));
    EXPECT_EQ(MetaData().buckets(), 4u);
    EXPECT_TRUE(MetaData().empty());
    EXPECT_EQ(sizeof(MetaData), sizeof(void*));
}

TEST(MetaData, EntriesHoldLinksNameAndHandle) {
    MetaData set;
    set.set_meta("float", "gain", 1.5f);
    MetaData::Entry* entry = set.lookup(InString::intern("gain"));
    ASSERT_NE(entry, nullptr);
    const char* base = reinterpret_cast<const char*>(entry);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry->key) - base, 16);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry->value) - base, 24);
    EXPECT_EQ(sizeof *entry, 32u);
    EXPECT_EQ(entry->key, InString::intern("gain"));
    EXPECT_EQ(entry->value->type(), 0);
}

TEST(MetaData, ShowsTagsByTheBucketOfTheirNames) {
    MetaData set;
    std::vector<std::string> names;
    for (int i = 0; i < 40; i++) {
        names.push_back("n" + std::to_string(i * i));
        set.set_meta("float", names.back().c_str(), float(i));
    }
    EXPECT_EQ(visits_of(set).names(), in_map_order(names));
    const MetaData copy(set);
    EXPECT_EQ(copy.buckets(), 4u);
    EXPECT_EQ(visits_of(copy).names(), in_map_order(names));
}

// ---- Getting ---------------------------------------------------------------------------------

TEST(GetMeta, GivesWhatWasSet) {
    const MetaData set = one_of_each();
    float number = 0;
    String text;
    EXPECT_EQ(set.get_meta("float", "gain", number), 0);
    EXPECT_EQ(number, 1.5f);
    EXPECT_EQ(set.get_meta("string", "label", text), 0);
    EXPECT_STREQ(text.str, "two words");
    text.str[0] = 'T'; // a copy
    String again;
    set.get_meta("string", "label", again);
    EXPECT_STREQ(again.str, "two words");
}

TEST(GetMeta, OfAMissingTagIs1AndTouchesNothing) {
    const MetaData set = one_of_each();
    float number = 7;
    String text("kept");
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(set.get_meta("float", "missing", number), 1);
                  EXPECT_EQ(set.get_meta("string", "missing", text), 1);
                  EXPECT_EQ(set.get_meta("no type", "missing", number), 1);
              }),
              "");
    EXPECT_EQ(number, 7);
    EXPECT_STREQ(text.str, "kept");
}

TEST(GetMeta, InternsTheNameItLooksFor) {
    const MetaData set;
    float number;
    String name("looked for"); // until it is a name that was never looked for
    while (!TempInString(name).owned)
        name += '.';
    set.get_meta("float", name.str, number);
    EXPECT_FALSE(TempInString(name).owned);
}

TEST(GetMeta, OfAnotherTypeWarnsAndIs2AndTouchesNothing) {
    const MetaData set = one_of_each();
    float number = 7;
    String text("kept");
    EXPECT_EQ(
        stderr_of([&] { EXPECT_EQ(set.get_meta("string", "gain", text), 2); }),
        "warning: metadata type mismatch; wanted string got float in "
        "<int Kess::ImageSpec::MetaData::get_meta(const char*, const char*, String&) const>\n");
    EXPECT_EQ(
        stderr_of([&] { EXPECT_EQ(set.get_meta("float", "label", number), 2); }),
        "warning: metadata type mismatch; wanted float got string in "
        "<int Kess::ImageSpec::MetaData::get_meta(const char*, const char*, float&) const>\n");
    EXPECT_EQ(
        stderr_of([&] { EXPECT_EQ(set.get_meta("float", "camera", number), 2); }),
        "warning: metadata type mismatch; wanted float got m44f in "
        "<int Kess::ImageSpec::MetaData::get_meta(const char*, const char*, float&) const>\n");
    EXPECT_EQ(number, 7);
    EXPECT_STREQ(text.str, "kept");
}

TEST(GetMeta, OnASpecWarnsAsItsSetDoes) {
    Spec spec(4, 2, Spec::G_U8);
    spec.set_meta("float", "x", 1.0f);
    String text("kept");
    EXPECT_EQ(
        stderr_of([&] { EXPECT_EQ(spec.get_meta("string", "x", text), 2); }),
        "warning: metadata type mismatch; wanted string got float in "
        "<int Kess::ImageSpec::MetaData::get_meta(const char*, const char*, String&) const>\n");
    EXPECT_STREQ(text.str, "kept");
}

// ---- Setting ---------------------------------------------------------------------------------

TEST(SetMeta, OverwritesAValueOfTheSameType) {
    MetaData set = one_of_each();
    const Kess::MetaInfo* place = set.lookup(InString::intern("gain"))->value.info;
    set.set_meta("float", "gain", 2.5f);
    set.set_meta("string", "label", String("other"));
    set.set_meta("m44f", "camera", counting_matrix(5, 1));
    const Visits visits = visits_of(set);
    EXPECT_EQ(visits.seen.size(), 3u);
    EXPECT_EQ(visits.of("gain").number, 2.5f);
    EXPECT_EQ(visits.of("label").text, "other");
    EXPECT_TRUE(same_bits(visits.of("camera").matrix, counting_matrix(5, 1)));
    EXPECT_EQ(set.lookup(InString::intern("gain"))->value.info, place); // in place
}

TEST(SetMeta, TakesCopiesOfTexts) {
    MetaData set;
    String name("name"), value("value");
    set.set_meta("string", name.str, value);
    name.str[0] = value.str[0] = 'x';
    EXPECT_EQ(visits_of(set).of("name").text, "value");
}

TEST(SetMeta, TakesEmptyNamesAndTexts) {
    MetaData set;
    set.set_meta("string", "", String());
    const Visits visits = visits_of(set);
    ASSERT_EQ(visits.seen.size(), 1u);
    EXPECT_EQ(visits.seen[0].name, "");
    EXPECT_EQ(visits.seen[0].text, "");
    String text("x");
    EXPECT_EQ(set.get_meta("string", "", text), 0);
    EXPECT_EQ(text.len(), 0u);
}

TEST(SetMeta, OfANewTagAssertsThatTheTypeIsTheValues) {
    MetaData set = one_of_each();
    const std::string before = contents_of(set);
    EXPECT_EQ(assertion_of([&] { set.set_meta("string", "new", 1.0f); }),
              "'!strcmp(type, ret->type_str())' in <Kess::MetaInfo* "
              "Kess::new_MetaInfo(const char*, const T&) [with T = float]> (metadata:LINE)");
    EXPECT_EQ(assertion_of([&] { set.set_meta("float", "new", String("x")); }),
              "'!strcmp(type, ret->type_str())' in <Kess::MetaInfo* "
              "Kess::new_MetaInfo(const char*, const T&) [with T = String]> (metadata:LINE)");
    EXPECT_EQ(contents_of(set), before);
}

TEST(SetMeta, OfAnotherTypeThrowsAndTheOldValueStays) {
    MetaData set = one_of_each();
    const std::string before = contents_of(set);
    EXPECT_EQ(text_thrown_by([&] { set.set_meta("string", "gain", String("x")); }),
              "metadata tag 'gain' already present but with type 'float' not 'string'");
    EXPECT_EQ(text_thrown_by([&] { set.set_meta("m44f", "label", counting_matrix(0, 1)); }),
              "metadata tag 'label' already present but with type 'string' not 'm44f'");
    EXPECT_EQ(text_thrown_by([&] { set.set_meta("float", "camera", 1.0f); }),
              "metadata tag 'camera' already present but with type 'm44f' not 'float'");
    EXPECT_EQ(text_thrown_by([&] { set.set_meta("half", "gain", 1.0f); }),
              "metadata tag 'gain' already present but with type 'float' not 'half'");
    EXPECT_EQ(contents_of(set), before);
}

TEST(SetMeta, OfAWrittenTagThrowsAndTheOldValueStays) {
    const std::string message = "no updates allowed after writing to file, use update_meta";
    for (s64 position : {s64(1), s64(-1), s64(1) << 40, std::numeric_limits<s64>::min()}) {
        MetaData set = one_of_each();
        write_all_at(set, position);
        const std::string before = contents_of(set);
        EXPECT_EQ(text_thrown_by([&] { set.set_meta("float", "gain", 2.0f); }), message);
        EXPECT_EQ(text_thrown_by([&] { set.set_meta("string", "label", String("x")); }), message);
        EXPECT_EQ(text_thrown_by([&] { set.set_meta("m44f", "camera", counting_matrix(0, 1)); }),
                  message);
        EXPECT_EQ(contents_of(set), before);
    }
}

TEST(SetMeta, ComplainsOfTheTypeBeforeTheFile) {
    MetaData set = one_of_each();
    write_all_at(set, 1000);
    EXPECT_EQ(text_thrown_by([&] { set.set_meta("string", "gain", String("x")); }),
              "metadata tag 'gain' already present but with type 'float' not 'string'");
}

TEST(SetMeta, OfATagWhosePositionWentBackToZeroOverwrites) {
    MetaData set = one_of_each();
    write_all_at(set, 1000);
    write_all_at(set, 0);
    set.set_meta("float", "gain", 2.0f);
    EXPECT_EQ(visits_of(set).of("gain").number, 2.0f);
}

// A message names the function that its reader called.
TEST(SetMeta, NamesItselfInItsMessages) {
    const std::string start =
        " in <void Kess::ImageSpec::MetaData::set_meta(const char*, const char*, ";
    MetaData set = one_of_each();
    const auto set_float = [&set] { set.set_meta("float", "gain", 2.0f); };
    const auto set_text = [&set] { set.set_meta("string", "gain", String("x")); };
    const auto set_matrix = [&set] { set.set_meta("m44f", "camera", counting_matrix(0, 1)); };

    EXPECT_EQ(message_without_line_of(set_text),
              "metadata tag 'gain' already present but with type 'float' not 'string'" + start +
                  "const String&)> (metadata:LINE)");
    write_all_at(set, 1000);
    const std::string written = "no updates allowed after writing to file, use update_meta" + start;
    EXPECT_EQ(message_without_line_of(set_float), written + "float)> (metadata:LINE)");
    EXPECT_EQ(message_without_line_of(set_matrix),
              written + "const Matrix4<float>&)> (metadata:LINE)");
}

// The type's name fits the tag but not the value: overwriting would write beside it.
TEST(SetMeta, OfAValueThatItsTypeDoesNotNameChangesNothing) {
    MetaData set = one_of_each();
    const std::string before = contents_of(set);
    EXPECT_THROW(set.set_meta("float", "gain", String("x")), Xception);
    EXPECT_THROW(set.set_meta("float", "gain", counting_matrix(0, 1)), Xception);
    EXPECT_THROW(set.set_meta("string", "label", 1.0f), Xception);
    EXPECT_EQ(contents_of(set), before);
}

// ---- Patching what is in a file --------------------------------------------------------------

TEST(UpdateMeta, ChangesAWrittenFloatAndReturnsItsPosition) {
    MetaData set = one_of_each();
    write_all_at(set, s64(1) << 40);
    EXPECT_EQ(set.update_meta("float", "gain", 2.5f), s64(1) << 40);
    EXPECT_EQ(visits_of(set).of("gain").number, 2.5f);
    EXPECT_EQ(visits_of(set).of("gain").file_position, s64(1) << 40);
    EXPECT_EQ(set.update_meta("float", "gain", 3.5f), s64(1) << 40);
    EXPECT_EQ(visits_of(set).of("gain").number, 3.5f);
    EXPECT_EQ(text_thrown_by([&] { set.set_meta("float", "gain", 4.5f); }),
              "no updates allowed after writing to file, use update_meta");
}

TEST(UpdateMeta, OfAMissingTagThrows) {
    MetaData set = one_of_each();
    EXPECT_EQ(message_without_line_of([&] { set.update_meta("float", "missing", 1.0f); }),
              "metadata tag 'missing' does not exist" + in_update_meta);
    EXPECT_EQ(message_without_line_of([&] { MetaData().update_meta("string", "x", 1.0f); }),
              "metadata tag 'x' does not exist" + in_update_meta);
    EXPECT_EQ(visits_of(set).seen.size(), 3u);
}

TEST(UpdateMeta, OfATagThatWasNeverWrittenThrows) {
    MetaData set = one_of_each();
    const std::string before = contents_of(set);
    EXPECT_EQ(message_without_line_of([&] { set.update_meta("float", "gain", 2.0f); }),
              "metadata tag 'gain' was never written to file" + in_update_meta);
    EXPECT_EQ(contents_of(set), before);
}

TEST(UpdateMeta, ComplainsOfTheFileBeforeTheType) {
    MetaData set = one_of_each();
    EXPECT_EQ(message_without_line_of([&] { set.update_meta("float", "label", 2.0f); }),
              "metadata tag 'label' was never written to file" + in_update_meta);
    write_all_at(set, 1000);
    const std::string before = contents_of(set);
    EXPECT_EQ(message_without_line_of([&] { set.update_meta("float", "label", 2.0f); }),
              "metadata tag 'label' already present but with type 'string' not 'float'" +
                  in_update_meta);
    EXPECT_EQ(message_without_line_of([&] { set.update_meta("string", "gain", 2.0f); }),
              "metadata tag 'gain' already present but with type 'float' not 'string'" +
                  in_update_meta);
    EXPECT_EQ(contents_of(set), before);
}

TEST(UpdateMeta, OfATextNamedAsSuchChangesNothing) {
    MetaData set = one_of_each();
    write_all_at(set, 1000);
    const std::string before = contents_of(set);
    EXPECT_THROW(set.update_meta("string", "label", 2.0f), Xception);
    EXPECT_EQ(contents_of(set), before);
}

// ---- Copies start again ----------------------------------------------------------------------

TEST(MetaData, CopiesMayBeSetAgain) {
    MetaData set = one_of_each();
    write_all_at(set, 1000);
    MetaData copy(set);
    copy.set_meta("float", "gain", 2.0f);
    EXPECT_EQ(visits_of(copy).of("gain").number, 2.0f);
    EXPECT_EQ(visits_of(set).of("gain").number, 1.5f);
    EXPECT_EQ(text_thrown_by([&] { copy.update_meta("float", "gain", 3.0f); }),
              "metadata tag 'gain' was never written to file");
}

// ---- Showing ---------------------------------------------------------------------------------

TEST(ForEachMeta, ShowsEachTypeWithItsNameValueAndPosition) {
    MetaData set = one_of_each();
    const Visits visits = visits_of(set);
    EXPECT_EQ(visits.names(), in_map_order({"gain", "label", "camera"}));
    EXPECT_EQ(visits.of("gain").type, "float");
    EXPECT_EQ(visits.of("gain").number, 1.5f);
    EXPECT_EQ(visits.of("label").type, "string");
    EXPECT_EQ(visits.of("label").text, "two words");
    EXPECT_EQ(visits.of("camera").type, "m44f");
    EXPECT_TRUE(same_bits(visits.of("camera").matrix, counting_matrix(1, 0.25f)));
    for (const Visits::Visit& visit : visits.seen)
        EXPECT_EQ(visit.file_position, 0);
    write_all_at(set, 77);
    for (const Visits::Visit& visit : visits_of(set).seen)
        EXPECT_EQ(visit.file_position, 77);
}

TEST(ForEachMeta, EndsAtTheFirstVisitThatIsNotZero) {
    const MetaData set = one_of_each();
    const std::vector<std::string> all = in_map_order({"gain", "label", "camera"});
    for (int result : {1, -1}) {
        Visits visits;
        visits.result = result;
        set.for_each_meta(visits);
        EXPECT_EQ(visits.names(), std::vector<std::string>{all[0]});
    }
}

TEST(ForEachMeta, GivesANameWithoutTextAsTheEmptyText) {
    MetaData set;
    set.insert(new MetaData::Entry(InString::intern(""),
                                   Kess::MetaInfoRef(Kess::new_MetaInfo("float", 1.0f))));
    ASSERT_EQ(visits_of(set).seen.size(), 1u);
    EXPECT_EQ(visits_of(set).seen[0].name, "");
}

TEST(ForEachMeta, OfAnUnknownTypeThrows) {
    MetaData set;
    add_other(set, "x");
    EXPECT_EQ(message_without_line_of([&] { visits_of(set); }),
              "unhandled type 'other' in <void Kess::ImageSpec::MetaData::for_each_meta("
              "Kess::ImageSpec::MetaVisitor&) const> (metadata:LINE)");
}

TEST(MetaVisitor, VirtualTableHoldsFloatStringMatrixDestructor) {
    class Watched : public Visits {
    public:
        explicit Watched(bool& gone) : gone(gone) {}
        ~Watched() override { gone = true; }

    private:
        bool& gone;
    };
    bool gone = false;
    Spec::MetaVisitor* visitor = new Watched(gone);
    const Visits& visits = *static_cast<Watched*>(visitor);
    void* const* slots;
    std::memcpy(&slots, static_cast<const void*>(visitor), sizeof slots);
    typedef int (*VisitFloat)(Spec::MetaVisitor*, const char*, const char*, const float&, s64&);
    typedef int (*VisitString)(Spec::MetaVisitor*, const char*, const char*, const String&, s64&);
    typedef int (*VisitMatrix)(Spec::MetaVisitor*, const char*, const char*, const Matrix4<float>&,
                               s64&);
    typedef void (*Destroy)(Spec::MetaVisitor*);

    s64 position = 5;
    reinterpret_cast<VisitFloat>(slots[0])(visitor, "f", "a", 1.5f, position);
    reinterpret_cast<VisitString>(slots[1])(visitor, "s", "b", String("x"), position);
    reinterpret_cast<VisitMatrix>(slots[2])(visitor, "m", "c", counting_matrix(0, 1), position);
    ASSERT_EQ(visits.seen.size(), 3u);
    EXPECT_EQ(visits.of("a").number, 1.5f);
    EXPECT_EQ(visits.of("b").text, "x");
    EXPECT_TRUE(same_bits(visits.of("c").matrix, counting_matrix(0, 1)));
    EXPECT_EQ(visits.of("c").file_position, 5);
    reinterpret_cast<Destroy>(slots[4])(visitor); // slot 3 destroys, slot 4 destroys and frees
    EXPECT_TRUE(gone);
    EXPECT_TRUE(std::is_abstract<Spec::MetaVisitor>::value);
}

// ---- Equality --------------------------------------------------------------------------------

TEST(MetaData, EqualityLooksAtTheLeftSideOnly) {
    const MetaData fewer = one_of_each();
    MetaData more = one_of_each();
    EXPECT_TRUE(fewer == more);
    EXPECT_TRUE(more == fewer);
    more.set_meta("float", "more", 1.0f);
    EXPECT_TRUE(fewer == more);
    EXPECT_FALSE(more == fewer);
    EXPECT_TRUE(MetaData() == more);
    EXPECT_FALSE(more == MetaData());
}

TEST(MetaData, EqualityComparesTypesAndValuesButNotPositions) {
    const MetaData set = one_of_each();
    MetaData other = one_of_each();
    write_all_at(other, 1000);
    EXPECT_TRUE(set == other);

    MetaData changed = one_of_each();
    changed.set_meta("float", "gain", 1.25f);
    EXPECT_FALSE(set == changed);
    MetaData retyped;
    retyped.set_meta("string", "gain", String("1.5"));
    MetaData number;
    number.set_meta("float", "gain", 1.5f);
    EXPECT_FALSE(number == retyped);
    EXPECT_FALSE(retyped == number);
}

TEST(MetaData, WithANaNIsUnequalToItself) {
    MetaData set;
    set.set_meta("float", "gain", std::numeric_limits<float>::quiet_NaN());
    EXPECT_FALSE(set == set);
}

TEST(MetaData, WithUnknownTypesCannotBeCompared) {
    MetaData set;
    add_other(set, "x");
    EXPECT_EQ(message_without_line_of([&] { (void)(set == set); }),
              "unhandled type 'other' in <bool Kess::operator==(const MetaInfo&, const MetaInfo&)> "
              "(metadata:LINE)");
    EXPECT_FALSE(set == one_of_each());
}
