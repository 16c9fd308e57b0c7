// SPDX-License-Identifier: BSD-3-Clause

// The typed hash map: keys by their bits, values by value, and the three functors.

#include "core/instring.h"

#include "tests/core/heap_watch.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

// A handle of a pointer's size.
struct Key {
    const char* pointer;
};

Key key(uword bits) {
    return {reinterpret_cast<const char*>(bits)};
}

// A value that counts itself, and of which a copy can be made to fail.
class Value {
public:
    static int alive;
    static int compared;
    static int until_failure; // 0 when none will fail

    int number;

    Value(int number) : number(number) { alive++; }
    Value(const Value& other) : number(other.number) {
        if (until_failure && --until_failure == 0)
            throw std::runtime_error("no copy");
        alive++;
    }
    Value& operator=(const Value&) = delete;
    ~Value() { alive--; }

    bool operator==(const Value& other) const {
        compared++;
        return number == other.number;
    }
};

int Value::alive = 0;
int Value::compared = 0;
int Value::until_failure = 0;

typedef PtrMap<Key, Value> Map;
typedef std::vector<std::pair<uword, int>> Contents;

class Listing : public Map::ForEachFunc {
public:
    explicit Listing(std::size_t most = 1000) : most(most) {}

    int operator()(Map::Entry* entry) override {
        seen.emplace_back(reinterpret_cast<uword>(entry->key.pointer), entry->value.number);
        return seen.size() == most;
    }

    Contents seen;

private:
    std::size_t most;
};

Contents contents(const Map& map) {
    Listing listing;
    map.for_each_const(listing);
    return listing.seen;
}

void insert(Map& map, uword k, int number) {
    map.insert(new Map::Entry(key(k), number));
}

} // namespace

// ---- What it is made of ----------------------------------------------------------------------

TEST(PtrMap, IsAVoidPtrMapWithLargerEntries) {
    EXPECT_TRUE((std::is_base_of<VoidPtrMap, Map>::value));
    EXPECT_EQ(sizeof(Map), sizeof(VoidPtrMap));
    EXPECT_TRUE((std::is_same<StringMap<int>, PtrMap<InString, int>>::value));

    Map::Entry entry(key(0x10), 5);
    const char* base = reinterpret_cast<const char*>(&entry);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry.next) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry.prev) - base, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry.key) - base, 16);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry.value) - base, 24);
}

TEST(PtrMap, FunctorsAreTypedForEachFuncs) {
    EXPECT_TRUE((std::is_base_of<VoidPtrMap::ForEachFunc, Map::ForEachFunc>::value));
    EXPECT_TRUE((std::is_base_of<Map::ForEachFunc, Map::Deleter>::value));
    EXPECT_TRUE((std::is_base_of<Map::ForEachFunc, Map::Copier>::value));
    EXPECT_TRUE((std::is_base_of<Map::ForEachFunc, Map::Equaler>::value));
    EXPECT_TRUE(std::is_abstract<Map::ForEachFunc>::value);
}

TEST(PtrMap, VoidCallForwardsToTheTypedCall) {
    Map map(1);
    insert(map, 0x10, 7);
    Listing one(1);
    VoidPtrMap::ForEachFunc& untyped = one;
    const VoidPtrMap& base = map;
    VoidPtrMap::Entry* entry = base.lookup(1, reinterpret_cast<void*>(0x10));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(untyped.void_call(entry), 1);
    EXPECT_EQ(one.seen, (Contents{{0x10, 7}}));
}

// ---- Keys ------------------------------------------------------------------------------------

// The hash is the pointer shifted right by 4: its lowest digit in base 16 is dropped.
TEST(PtrMap, BucketsAreTheKeysSecondHexadecimalDigit) {
    Map map(16);
    for (uword k : {0x30u, 0x1fu, 0xfff02u, 0x12u, 0xabc0u, 0x10u, 0x01u})
        insert(map, k, 0);
    EXPECT_EQ(
        contents(map),
        (Contents{
            {0xfff02, 0}, {0x01, 0}, {0x1f, 0}, {0x12, 0}, {0x10, 0}, {0x30, 0}, {0xabc0, 0}}));
}

TEST(PtrMap, EntriesStandUnderThePointerShiftedByFour) {
    for (uword k : {0x10ul, 0x7f1234567890ul, 0xfffffffffffffff8ul, 0x1000000000ul, 8ul}) {
        for (int size : {1, 4, 256, 65536}) {
            Map map(size);
            insert(map, k, 3);
            VoidPtrMap& base = map;
            void* pointer = reinterpret_cast<void*>(k);
            EXPECT_NE(base.lookup(u32((k >> 4) & 0xffffffff), pointer), nullptr) << k;
            EXPECT_EQ(base.lookup(u32(k >> 4) + 1, pointer) != nullptr, size == 1) << k;
        }
    }
}

TEST(PtrMap, KeysAreEqualWhenTheirPointersAre) {
    Map map(4);
    insert(map, 0x10, 1);
    insert(map, 0x11, 2); // of the same hash
    EXPECT_EQ(map.lookup(key(0x10))->value.number, 1);
    EXPECT_EQ(map.lookup(key(0x11))->value.number, 2);
    EXPECT_EQ(map.lookup(key(0x12)), nullptr);
}

TEST(StringMap, FindsValuesByInternedName) {
    StringMap<int> map(4);
    for (int i = 0; i < 100; i++)
        map.insert(new StringMap<int>::Entry(InString::intern(std::to_string(i).c_str()), i));
    for (int i = 0; i < 100; i++) {
        const StringMap<int>::Entry* found =
            map.lookup(InString::intern(std::to_string(i).c_str()));
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->value, i);
    }
    EXPECT_EQ(map.lookup(InString::intern("100")), nullptr);
}

// ---- Putting in, finding, taking out ---------------------------------------------------------

TEST(PtrMap, KeepsEqualKeysAndTakesTheFirst) {
    Map map(4);
    insert(map, 0x10, 1);
    insert(map, 0x10, 2);
    EXPECT_EQ(map.lookup(key(0x10))->value.number, 1);
    Map::Entry* first = map.remove(key(0x10));
    EXPECT_EQ(first->value.number, 1);
    delete first;
    EXPECT_EQ(map.lookup(key(0x10))->value.number, 2);
    EXPECT_EQ(map.remove(key(0x20)), nullptr);
    EXPECT_EQ(contents(map), (Contents{{0x10, 2}}));
}

TEST(PtrMap, WalksTheValuesOfOneKey) {
    Map map(1);
    insert(map, 0x10, 1);
    insert(map, 0x20, 2);
    insert(map, 0x10, 3);
    Listing all, one(1);
    map.for_each_value(key(0x10), all);
    map.for_each_value(key(0x10), one);
    EXPECT_EQ(all.seen, (Contents{{0x10, 1}, {0x10, 3}}));
    EXPECT_EQ(one.seen, (Contents{{0x10, 1}}));
}

TEST(PtrMap, AWalkStopsWhereItsFunctorSays) {
    Map map(4);
    for (int i = 0; i < 8; i++)
        insert(map, uword(i) << 4, i);
    Listing three(3);
    map.for_each(three);
    EXPECT_EQ(three.seen, (Contents{{0x00, 0}, {0x40, 4}, {0x10, 1}}));
}

TEST(PtrMap, ClearingFreesNothing) {
    Map map(4);
    auto* entry = new Map::Entry(key(0x10), 1);
    map.insert(entry);
    map.clear();
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(entry->value.number, 1);
    delete entry;
}

TEST(PtrMap, FreesItsEntriesWhenItGoes) {
    const int before = Value::alive;
    HeapWatch watch;
    {
        Map map(4);
        for (int i = 0; i < 20; i++)
            insert(map, uword(i) << 4, i);
        EXPECT_EQ(Value::alive, before + 20);
    }
    watch.stop();
    EXPECT_EQ(Value::alive, before);
    EXPECT_EQ(watch.live(), 0);
}

// ---- The functors ----------------------------------------------------------------------------

TEST(PtrMapDeleter, DestroysTheValueAndFreesTheEntry) {
    const int before = Value::alive;
    HeapWatch watch;
    Map::Deleter deleter;
    const int result = deleter(new Map::Entry(key(0x10), 1));
    watch.stop();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Value::alive, before);
    EXPECT_EQ(watch.live(), 0);
}

TEST(PtrMapCopier, InsertsACopyIntoItsTarget) {
    Map target(2);
    Map::Copier copier(target);
    Map::Entry entry(key(0x30), 5);
    EXPECT_EQ(copier(&entry), 0);
    EXPECT_EQ(copier(&entry), 0);
    EXPECT_EQ(contents(target), (Contents{{0x30, 5}, {0x30, 5}}));
    EXPECT_NE(target.lookup(key(0x30)), &entry);
    insert(target, 0x20, 1); // of bucket 0, before the others in bucket 1
    EXPECT_EQ(contents(target), (Contents{{0x20, 1}, {0x30, 5}, {0x30, 5}}));
}

TEST(PtrMapEqualer, StopsAtTheFirstEntryThatTheOtherMapLacks) {
    Map other(2);
    insert(other, 0x10, 5);
    Map::Equaler equaler(other);
    EXPECT_TRUE(equaler.result);
    Map::Entry equal(key(0x10), 5), unequal(key(0x10), 6), missing(key(0x20), 5);
    EXPECT_EQ(equaler(&equal), 0);
    EXPECT_TRUE(equaler.result);
    EXPECT_EQ(equaler(&unequal), 1);
    EXPECT_FALSE(equaler.result);
    EXPECT_EQ(equaler(&equal), 0);
    EXPECT_FALSE(equaler.result) << "an equal entry makes up for no other";

    Map::Equaler another(other);
    EXPECT_EQ(another(&missing), 1);
    EXPECT_FALSE(another.result);
}

// ---- Copies ----------------------------------------------------------------------------------

TEST(PtrMap, CopiesHaveTheSameBucketsAndOrder) {
    Map map(16);
    for (uword k : {0x30u, 0x31u, 0x10u, 0xf0u, 0x32u, 0x30u})
        insert(map, k, int(k));
    const Map copy(map);
    EXPECT_EQ(copy.buckets(), 16u);
    EXPECT_EQ(contents(copy), contents(map));
    EXPECT_EQ(contents(copy).size(), 6u);
}

TEST(PtrMap, CopiesShareNothing) {
    Map map(4);
    insert(map, 0x10, 1);
    Map copy(map);
    copy.lookup(key(0x10))->value.number = 2;
    delete map.remove(key(0x10));
    EXPECT_EQ(contents(copy), (Contents{{0x10, 2}}));
}

TEST(PtrMap, AssignmentReplacesBucketsAndEntries) {
    const int before = Value::alive;
    {
        Map map(4), target(32);
        insert(map, 0x10, 1);
        insert(target, 0x20, 2);
        insert(target, 0x30, 3);
        target = map;
        EXPECT_EQ(target.buckets(), 4u);
        EXPECT_EQ(contents(target), (Contents{{0x10, 1}}));
        EXPECT_EQ(contents(map), (Contents{{0x10, 1}}));
        EXPECT_EQ(Value::alive, before + 2);
    }
    EXPECT_EQ(Value::alive, before);
}

TEST(PtrMap, MayBeAssignedToItself) {
    Map map(4);
    insert(map, 0x10, 1);
    insert(map, 0x20, 2);
    const Map& same = map;
    map = same;
    EXPECT_EQ(contents(map), (Contents{{0x10, 1}, {0x20, 2}}));
}

TEST(PtrMap, ACopyThatFailsLeavesNothingAllocated) {
    Map map(4), target(4);
    for (int i = 0; i < 5; i++)
        insert(map, uword(i) << 4, i);
    insert(target, 0x10, 9);
    const int before = Value::alive;
    for (int n = 1; n <= 5; n++) {
        HeapWatch watch;
        Value::until_failure = n;
        EXPECT_THROW(Map copy(map), std::runtime_error);
        Value::until_failure = n;
        EXPECT_THROW(target = map, std::runtime_error);
        watch.stop();
        EXPECT_EQ(Value::until_failure, 0);
        EXPECT_EQ(Value::alive, before);
        EXPECT_EQ(watch.live(), 0);
        EXPECT_EQ(contents(target), (Contents{{0x10, 9}}));
    }
}

TEST(PtrMap, ACopyWithoutMemoryLeavesNothingAllocated) {
    Map map(4);
    for (int i = 0; i < 3; i++)
        insert(map, uword(i) << 4, i);
    int refused = 0;
    for (int n = 1;; n++) {
        HeapWatch watch;
        watch.refuse(n);
        bool made = true;
        try {
            Map copy(map);
        } catch (std::bad_alloc&) {
            made = false;
        }
        watch.stop();
        EXPECT_EQ(watch.live(), 0) << n;
        if (made)
            break;
        refused = n;
    }
    EXPECT_EQ(refused, 5); // header, buckets and three entries
}

// ---- Equality --------------------------------------------------------------------------------

TEST(PtrMap, EqualityLooksAtTheLeftMapsEntriesOnly) {
    Map a(4), b(16);
    EXPECT_TRUE(a == b);
    insert(b, 0x10, 1);
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(b == a);
    EXPECT_FALSE(a != b);
    EXPECT_TRUE(b != a);
    insert(a, 0x10, 1);
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(b == a);
    insert(a, 0x20, 2);
    insert(b, 0x20, 3);
    EXPECT_FALSE(a == b);
    EXPECT_FALSE(b == a);
}

TEST(PtrMap, EqualityStopsAtTheFirstMiss) {
    Map a(4), b(4);
    for (int i = 0; i < 8; i++) {
        insert(a, uword(i) << 4, i);
        insert(b, uword(i) << 4, i == 1 ? 99 : i); // third in order, after 0 and 4
    }
    Value::compared = 0;
    EXPECT_FALSE(a == b);
    EXPECT_EQ(Value::compared, 3);
    delete b.remove(key(0x40)); // second in order now is not compared at all
    Value::compared = 0;
    EXPECT_FALSE(a == b);
    EXPECT_EQ(Value::compared, 1);
}

// Each entry is compared with the first of its key, so a second one of another value never fits.
TEST(PtrMap, WithUnequalValuesUnderOneKeyIsUnequalToItself) {
    Map map(4);
    insert(map, 0x10, 1);
    insert(map, 0x10, 1);
    EXPECT_TRUE(map == map);
    insert(map, 0x10, 2);
    EXPECT_FALSE(map == map);
}
