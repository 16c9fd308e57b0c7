// SPDX-License-Identifier: BSD-3-Clause

// Interned texts: one record per text, what the table and its lists look like, and lookups that
// leave no trace.

#include "core/instring.h"

#include "core/xception.h"
#include "tests/core/captured.h"
#include "tests/core/heap_watch.h"
#include "tests/core/observed.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

namespace {

// A table without texts, whatever ran before in this process.
class InStrings : public testing::Test {
protected:
    InStrings() { InString::cleanup(); }
    ~InStrings() override { InString::cleanup(); }
};

typedef InStrings InStringTable;
typedef InStrings Gensym;
typedef InStrings TempInStrings;
typedef InStrings InStringCleanup;
typedef InStrings InStringWithoutMemory;

// What dump() prints of a table that holds these texts, by bucket.
std::string dump_of(const std::map<int, std::string>& texts) {
    std::string dump;
    for (int i = 0; i < 256; i++) {
        const auto found = texts.find(i);
        dump += "chain " + std::to_string(i) + ": " + (found == texts.end() ? "" : found->second);
        dump += "\n";
    }
    return dump;
}

std::string dump() {
    return stdout_of([] { InString::dump(); });
}

std::string text_of(const InString& name) {
    return name.text().str ? name.text().str : "(null)";
}

template <class Base, class Member>
long offset_of(const Base& base, const Member& member) {
    return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&base);
}

} // namespace

// ---- The records -----------------------------------------------------------------------------

TEST(InString, IsAPointerToARecord) {
    EXPECT_EQ(sizeof(InString), sizeof(void*));
    EXPECT_TRUE((std::is_same<decltype(InString::record), InternRecord*>::value));
    EXPECT_EQ(InString().record, nullptr);
    EXPECT_EQ(InString(), InString());
}

TEST(InString, RecordsHaveTheirFieldsInOrder) {
    InternRecord record;
    EXPECT_EQ(offset_of(record, record.next), 0);
    EXPECT_EQ(offset_of(record, record.prev), 8);
    EXPECT_EQ(offset_of(record, record.data), 16);
    EXPECT_EQ(offset_of(record, record.hash), 24);
    EXPECT_EQ(offset_of(record, record.text), 32);
    EXPECT_EQ(sizeof record, 40u);
    EXPECT_TRUE((std::is_same<decltype(record.hash), u32>::value));
    EXPECT_TRUE((std::is_same<decltype(record.text), String>::value));
}

TEST(TempInString, HoldsWhetherItOwnsAndTheRecord) {
    const TempInString temp("any");
    EXPECT_EQ(offset_of(temp, temp.owned), 0);
    EXPECT_EQ(offset_of(temp, temp.record), 8);
    EXPECT_EQ(sizeof temp, 16u);
    EXPECT_TRUE((std::is_same<decltype(TempInString::owned), bool>::value));
}

TEST_F(InStrings, ATextHasOneRecord) {
    const InString a = InString::intern("a"), again = InString::intern("a");
    const InString through_string = InString::intern(String("a"));
    EXPECT_EQ(a.record, again.record);
    EXPECT_EQ(a.record, through_string.record);
    EXPECT_TRUE(a == again);
    EXPECT_FALSE(a != again);
}

TEST_F(InStrings, DifferentTextsHaveDifferentRecords) {
    const InString a = InString::intern("a"), b = InString::intern("A");
    EXPECT_NE(a.record, b.record);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
}

TEST_F(InStrings, ARecordKeepsACopyOfTheText) {
    String text("name");
    const InString name = InString::intern(text);
    EXPECT_NE(name.record->text.str, text.str);
    text.str[0] = 'g';
    EXPECT_EQ(text_of(name), "name");
    EXPECT_EQ(&name.text(), &name.record->text);
}

// ((97 >> 4) + (97 << 4)) * 11, and for a byte taken as -1: (-1 + -16) * 11 modulo 2^32.
TEST_F(InStrings, ARecordKeepsTheHashOfItsText) {
    EXPECT_EQ(InString::intern("a").record->hash, 17138u);
    EXPECT_EQ(InString::intern("\xff").record->hash, 4294967296u - 187u);
    EXPECT_EQ(InString::intern("").record->hash, 0u);
}

TEST_F(InStrings, ARecordIsItsOwnListNode) {
    const InString name = InString::intern("a");
    EXPECT_EQ(name.record->data, name.record);
}

TEST_F(InStrings, TheEmptyTextHasOneRecordToo) {
    const InString empty = InString::intern("");
    EXPECT_EQ(empty, InString::intern(String()));
    EXPECT_EQ(empty, InString::intern(static_cast<const char*>(nullptr)));
    EXPECT_EQ(empty.record->text.str, nullptr);
}

TEST(InString, WithoutARecordHasTheEmptyText) {
    EXPECT_EQ(InString().text().str, nullptr);
}

// ---- The table -------------------------------------------------------------------------------

// One-letter texts: a 17138, b 17314, c 17490, d 17666; modulo 256: 242, 162, 82, 2. The byte 0xff
// gives -187, so 69. Both aa and bf end in bucket 88: 132 * 1558 and 121 * 1574 + 11 * 1638.
TEST_F(InStringTable, DumpPrintsEveryBucketFromHeadToTail) {
    EXPECT_EQ(dump(), dump_of({}));
    for (const char* text : {"a", "b", "bf", "c", "d", "\xff", "aa", "a"})
        InString::intern(text);
    EXPECT_EQ(
        dump(),
        dump_of({{242, " a"}, {162, " b"}, {82, " c"}, {2, " d"}, {69, " \xff"}, {88, " bf aa"}}));
}

TEST_F(InStringTable, DumpPrintsTheEmptyTextAsNothing) {
    InString::intern("");
    EXPECT_EQ(dump(), dump_of({{0, " "}}));
}

// 11 * (11 * 1558 + 1734) = 11 * (11 * 1574 + 1558): al and ba have the same hash.
TEST_F(InStringTable, TextsOfEqualHashAreDistinguished) {
    const InString al = InString::intern("al"), ba = InString::intern("ba");
    EXPECT_EQ(al.record->hash, 207592u);
    EXPECT_EQ(ba.record->hash, 207592u);
    EXPECT_NE(al, ba);
    EXPECT_EQ(InString::intern("al"), al);
    EXPECT_EQ(InString::intern("ba"), ba);
    EXPECT_EQ(dump(), dump_of({{207592 % 256, " al ba"}}));
}

TEST_F(InStringTable, ListsAreCircularAndGrowAtTheTail) {
    InternRecord* first = InString::intern("aa").record;
    ListLink* head = first->next;
    EXPECT_EQ(head->next, first);
    EXPECT_EQ(head->prev, first);
    EXPECT_EQ(first->prev, head);

    InternRecord* second = InString::intern("bf").record;
    EXPECT_EQ(head->next, first);
    EXPECT_EQ(first->next, second);
    EXPECT_EQ(second->next, head);
    EXPECT_EQ(head->prev, second);
    EXPECT_EQ(second->prev, first);
    EXPECT_EQ(first->prev, head);
}

TEST_F(InStringTable, HeadsStandInAnArrayOfLinkPairs) {
    const char* bucket_242 = reinterpret_cast<char*>(InString::intern("a").record->next);
    const char* bucket_162 = reinterpret_cast<char*>(InString::intern("b").record->next);
    const char* bucket_2 = reinterpret_cast<char*>(InString::intern("d").record->next);
    EXPECT_EQ(bucket_242 - bucket_162, 80 * 16);
    EXPECT_EQ(bucket_162 - bucket_2, 160 * 16);
}

TEST_F(InStringTable, ManyTextsAreAllFoundAgain) {
    std::vector<InString> names;
    for (int i = 0; i < 5000; i++)
        names.push_back(InString::intern(("name " + std::to_string(i)).c_str()));
    for (int i = 0; i < 5000; i++)
        ASSERT_EQ(InString::intern(("name " + std::to_string(i)).c_str()), names[i]) << i;
}

// ---- Unique names ----------------------------------------------------------------------------

TEST_F(Gensym, TextsCountUp) {
    const std::string first = text_of(InString::gensym());
    ASSERT_EQ(first[0], 'G');
    const int n = atoi(first.c_str() + 1);
    EXPECT_EQ(first, "G" + std::to_string(n));
    EXPECT_EQ(text_of(InString::gensym()), "G" + std::to_string(n + 1));
    EXPECT_EQ(text_of(InString::gensym()), "G" + std::to_string(n + 2));
}

TEST_F(Gensym, IsNeverFoundByIntern) {
    const InString sym = InString::gensym();
    const InString same_text = InString::intern(sym.text());
    EXPECT_NE(sym, same_text);
    EXPECT_EQ(text_of(sym), text_of(same_text));
    EXPECT_EQ(sym.record->hash, same_text.record->hash);
    EXPECT_EQ(sym.record->data, sym.record);
}

TEST_F(Gensym, HasAListOfItsOwn) {
    InternRecord* first = InString::gensym().record;
    InternRecord* second = InString::gensym().record;
    ListLink* head = first->prev;
    EXPECT_EQ(first->next, second);
    EXPECT_EQ(second->prev, first);
    EXPECT_EQ(second->next, head);
    EXPECT_EQ(head->next, first);
    EXPECT_EQ(head->prev, second);
    EXPECT_EQ(dump(), dump_of({}));
}

// ---- Lookups that leave no trace -------------------------------------------------------------

TEST_F(TempInStrings, OfAKnownTextIsItsRecord) {
    const InString known = InString::intern("a");
    TempInString temp("a");
    EXPECT_FALSE(temp.owned);
    EXPECT_EQ(temp.record, known.record);
    EXPECT_EQ(temp.make_permanent(), known);
    EXPECT_EQ(dump(), dump_of({{242, " a"}}));
}

TEST_F(TempInStrings, OfANewTextHasARecordThatIsInNoList) {
    const String text("a");
    const TempInString temp(text);
    EXPECT_TRUE(temp.owned);
    EXPECT_EQ(temp.record->hash, 17138u);
    EXPECT_STREQ(temp.record->text.str, "a");
    EXPECT_NE(temp.record->text.str, text.str);
    EXPECT_EQ(dump(), dump_of({}));
}

TEST_F(TempInStrings, DestroyedLeaveTheTableUnchanged) {
    InString::intern("aa");
    const String text("bf"); // of the same bucket
    HeapWatch watch;
    { const TempInString temp(text); }
    watch.stop();
    EXPECT_EQ(watch.requests(), 2); // the record and its text
    EXPECT_EQ(watch.live(), 0);
    EXPECT_EQ(dump(), dump_of({{88, " aa"}}));
}

TEST_F(TempInStrings, MadePermanentGetAListNodeOfThreePointers) {
    InternRecord* neighbour = InString::intern("aa").record;
    TempInString temp("bf");
    InternRecord* record = temp.record;

    HeapWatch watch;
    const InString made = temp.make_permanent();
    watch.stop();
    ASSERT_EQ(watch.requests(), 1);
    EXPECT_EQ(watch.request(0).way, HeapWatch::NEW);
    EXPECT_EQ(watch.request(0).bytes, 3 * sizeof(void*));

    EXPECT_FALSE(temp.owned);
    EXPECT_EQ(made.record, record);
    EXPECT_EQ(temp.record, record);

    // The bucket holds the node, and the node leads to the record.
    ListLink* head = neighbour->prev;
    InternNode* node = static_cast<InternNode*>(neighbour->next);
    EXPECT_NE(node, record);
    EXPECT_EQ(node->data, record);
    EXPECT_EQ(node->prev, neighbour);
    EXPECT_EQ(node->next, head);
    EXPECT_EQ(head->prev, node);
    EXPECT_EQ(dump(), dump_of({{88, " aa bf"}}));
}

TEST_F(TempInStrings, MadePermanentAreFoundByEverybodyAndOutliveTheLookup) {
    InString made;
    {
        TempInString temp("a");
        made = temp.make_permanent();
    }
    EXPECT_EQ(text_of(made), "a");
    EXPECT_EQ(InString::intern("a"), made);
    EXPECT_EQ(TempInString("a").record, made.record);
    EXPECT_FALSE(TempInString("a").owned);
}

TEST_F(TempInStrings, AreMadePermanentOnce) {
    TempInString temp("a");
    const InString made = temp.make_permanent();
    HeapWatch watch;
    EXPECT_EQ(temp.make_permanent().record, made.record);
    watch.stop();
    EXPECT_EQ(watch.requests(), 0);
    EXPECT_EQ(dump(), dump_of({{242, " a"}}));
}

// Making permanent does not look the text up again: it is then in the table twice, the first wins.
TEST_F(TempInStrings, MadePermanentAfterAnEqualTextStayUnfound) {
    TempInString temp("a");
    const InString meanwhile = InString::intern("a");
    EXPECT_NE(temp.make_permanent(), meanwhile);
    EXPECT_EQ(dump(), dump_of({{242, " a a"}}));
    EXPECT_EQ(InString::intern("a"), meanwhile);
}

// ---- The end ---------------------------------------------------------------------------------

TEST_F(InStringCleanup, EmptiesEveryBucketThenTheGensyms) {
    const InString a = InString::intern("a"), b = InString::intern("b"), d = InString::intern("d");
    const InString aa = InString::intern("aa"), bf = InString::intern("bf");
    const InString g = InString::gensym(), h = InString::gensym();
    ListLink* const head = a.record->next;
    ListLink* const gensyms = g.record->prev;
    std::vector<const void*> expected;
    for (const InString& name : {d, aa, bf, b, a, g, h}) { // buckets 2, 88, 88, 162, 242
        expected.push_back(name.record->text.str);
        expected.push_back(name.record);
    }

    HeapWatch watch;
    InString::cleanup();
    watch.stop();
    std::vector<const void*> freed;
    for (int i = 0; i < watch.freed(); i++)
        freed.push_back(watch.freed(i));
    EXPECT_EQ(freed, expected);
    EXPECT_EQ(dump(), dump_of({}));
    EXPECT_EQ(head->next, head);
    EXPECT_EQ(head->prev, head);
    EXPECT_EQ(gensyms->next, gensyms);
    EXPECT_EQ(gensyms->prev, gensyms);
}

TEST_F(InStringCleanup, FreesPermanentRecordsButNotTheirNodes) {
    TempInString temp("a");
    temp.make_permanent();
    const char* text = temp.record->text.str;
    HeapWatch watch;
    InString::cleanup();
    watch.stop();
    ASSERT_EQ(watch.freed(), 2);
    EXPECT_EQ(watch.freed(0), text);
    EXPECT_EQ(watch.freed(1), temp.record);
    EXPECT_EQ(dump(), dump_of({}));
}

TEST_F(InStringCleanup, LeavesATableToStartAgainWith) {
    InString::intern("a");
    const int n = atoi(InString::gensym().text().str + 1);
    InString::cleanup();
    InString::cleanup();
    EXPECT_EQ(text_of(InString::intern("a")), "a");
    EXPECT_EQ(dump(), dump_of({{242, " a"}}));
    EXPECT_EQ(text_of(InString::gensym()), "G" + std::to_string(n + 1)); // the counter goes on
}

// ---- Without memory --------------------------------------------------------------------------

TEST_F(InStringWithoutMemory, InternLeavesTheTableAsItWas) {
    InString::intern("bf");
    const String text("aa");
    HeapWatch watch;
    watch.refuse(1); // the record
    EXPECT_THROW(InString::intern(text), std::bad_alloc);
    watch.stop();
    EXPECT_EQ(watch.live(), 0);
    EXPECT_EQ(dump(), dump_of({{88, " bf"}}));
}

TEST_F(InStringWithoutMemory, ALookupHoldsNothing) {
    const String text("aa");
    HeapWatch watch;
    watch.refuse(1);
    EXPECT_THROW(TempInString temp(text), std::bad_alloc);
    watch.stop();
    EXPECT_EQ(watch.live(), 0);
    EXPECT_EQ(dump(), dump_of({}));
}

TEST_F(InStringWithoutMemory, ALookupStaysOwnerOfWhatItCouldNotMakePermanent) {
    const String text("aa");
    HeapWatch watch;
    {
        TempInString temp(text);
        watch.refuse(1);
        EXPECT_THROW(temp.make_permanent(), std::bad_alloc);
        EXPECT_TRUE(temp.owned);
    }
    watch.stop();
    EXPECT_EQ(watch.live(), 0);
    EXPECT_EQ(dump(), dump_of({}));
}

// The name's text is formatted, so the first request that fails is reported as a formatted text's.
TEST_F(InStringWithoutMemory, GensymLinksNothing) {
    ListLink* const head = InString::gensym().record->prev;
    for (int n = 1; n <= 2; n++) {
        HeapWatch watch;
        watch.refuse(n);
        bool formatting = false, making = false;
        try {
            InString::gensym();
        } catch (StrXception& x) {
            formatting = String(x.message).find("out of memory in <") == 0;
        } catch (std::bad_alloc&) {
            making = true;
        }
        watch.stop();
        EXPECT_EQ(formatting, n == 1);
        EXPECT_EQ(making, n == 2);
        EXPECT_EQ(watch.live(), 0);
        EXPECT_EQ(head->next->next, head);
    }
}
