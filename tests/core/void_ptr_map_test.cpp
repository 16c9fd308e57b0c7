// SPDX-License-Identifier: BSD-3-Clause

// The untyped hash map: buckets, order, duplicates and walks.

#include "core/instring.h"

#include "tests/core/heap_watch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace {

typedef VoidPtrMap::Entry Entry;

// Walks a map with any function, and remembers which entries it was called on.
class Walk : public VoidPtrMap::ForEachFunc {
public:
    explicit Walk(std::function<int(Entry*)> action = [](Entry*) { return 0; })
        : action(std::move(action)) {}

    int void_call(Entry* entry) override {
        seen.push_back(entry);
        return action(entry);
    }

    std::vector<Entry*> seen;

private:
    std::function<int(Entry*)> action;
};

typedef std::vector<Entry*> Entries;

Entries walked(VoidPtrMap& map) {
    Walk walk;
    map.for_each(walk);
    return walk.seen;
}

int keys[8]; // to point at

Entry entry_of(int key) {
    Entry entry;
    entry.next = entry.prev = nullptr;
    entry.key = &keys[key];
    return entry;
}

} // namespace

// ---- What it is made of ----------------------------------------------------------------------

TEST(VoidPtrMap, IsAPointerToItsHeader) {
    struct Header {
        u32 bits, mask;
        ListLink* buckets;
    } const* header;
    VoidPtrMap map(5);
    ASSERT_EQ(sizeof map, sizeof header);
    std::memcpy(&header, reinterpret_cast<const char*>(&map), sizeof header);
    EXPECT_EQ(header->bits, 3u);
    EXPECT_EQ(header->mask, 7u);
    for (int i = 0; i < 8; i++) {
        EXPECT_EQ(header->buckets[i].next, &header->buckets[i]);
        EXPECT_EQ(header->buckets[i].prev, &header->buckets[i]);
    }

    Entry a = entry_of(0), b = entry_of(1);
    map.insert(6, &a);
    map.insert(6, &b);
    ListLink* const head = &header->buckets[6];
    EXPECT_EQ(head->next, &a);
    EXPECT_EQ(a.next, &b);
    EXPECT_EQ(b.next, head);
    EXPECT_EQ(head->prev, &b);
    EXPECT_EQ(b.prev, &a);
    EXPECT_EQ(a.prev, head);
}

TEST(VoidPtrMap, EntriesStartWithLinksAndKey) {
    Entry entry = entry_of(0);
    const char* base = reinterpret_cast<const char*>(&entry);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry.next) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry.prev) - base, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry.key) - base, 16);
    EXPECT_EQ(sizeof entry, 24u);
    EXPECT_TRUE((std::is_same<decltype(entry.key), void*>::value));
}

TEST(VoidPtrMap, HasTheSmallestPowerOfTwoOfBucketsThatIsNotBelow) {
    const struct {
        int n;
        u32 buckets;
    } cases[] = {
        {std::numeric_limits<int>::min(), 1},
        {-1, 1},
        {0, 1},
        {1, 1},
        {2, 2},
        {3, 4},
        {4, 4},
        {5, 8},
        {8, 8},
        {9, 16},
        {16, 16},
        {17, 32},
        {1000, 1024},
        {65536, 65536},
        {65537, 131072},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VoidPtrMap(c.n).buckets(), c.buckets) << c.n;
}

TEST(VoidPtrMap, NeverGrows) {
    VoidPtrMap map(2);
    std::vector<Entry> entries(1000, entry_of(0));
    for (u32 i = 0; i < 1000; i++)
        map.insert(i, &entries[i]);
    EXPECT_EQ(map.buckets(), 2u);
    EXPECT_EQ(walked(map).size(), 1000u);
}

TEST(VoidPtrMap, FreesItsHeaderAndBucketsButNoEntry) {
    auto entry = std::make_unique<Entry>(entry_of(0));
    HeapWatch watch;
    {
        VoidPtrMap map(16);
        map.insert(3, entry.get());
    }
    watch.stop();
    EXPECT_EQ(watch.live(), 0);
    EXPECT_EQ(watch.older_freed(), 0);
    EXPECT_EQ(entry->key, &keys[0]);
}

TEST(VoidPtrMap, HoldsNothingWhenItCannotBeMade) {
    int refused = 0;
    for (int n = 1;; n++) {
        HeapWatch watch;
        watch.refuse(n);
        bool made = true;
        try {
            VoidPtrMap map(16);
        } catch (std::bad_alloc&) {
            made = false;
        }
        watch.stop();
        EXPECT_EQ(watch.live(), 0) << n;
        if (made)
            break;
        refused = n;
    }
    EXPECT_EQ(refused, 2); // the header and the buckets
}

// Slot 0 is the call, and the destructor follows it.
TEST(VoidPtrMap, FunctorsVirtualTableStartsWithTheCall) {
    class Destroyed : public Walk {
    public:
        explicit Destroyed(bool& gone) : gone(gone) {}
        ~Destroyed() override { gone = true; }

    private:
        bool& gone;
    };
    bool gone = false;
    Entry entry = entry_of(0);
    auto* walk = new Destroyed(gone);
    void* const* slots;
    std::memcpy(&slots, static_cast<const void*>(walk), sizeof slots);

    typedef int (*Call)(VoidPtrMap::ForEachFunc*, Entry*);
    typedef void (*Destroy)(VoidPtrMap::ForEachFunc*);
    EXPECT_EQ(reinterpret_cast<Call>(slots[0])(walk, &entry), 0);
    EXPECT_EQ(walk->seen, Entries{&entry});
    EXPECT_FALSE(gone);
    reinterpret_cast<Destroy>(slots[2])(walk); // slot 1 destroys, slot 2 destroys and frees
    EXPECT_TRUE(gone);
    EXPECT_TRUE(std::is_abstract<VoidPtrMap::ForEachFunc>::value);
}

// ---- Putting in, finding, taking out ---------------------------------------------------------

TEST(VoidPtrMap, FindsWhatWasPutIn) {
    VoidPtrMap map(4);
    Entry a = entry_of(0), b = entry_of(1), c = entry_of(2);
    map.insert(0, &a);
    map.insert(1, &b);
    map.insert(5, &c); // bucket 1 too
    EXPECT_EQ(map.lookup(0, &keys[0]), &a);
    EXPECT_EQ(map.lookup(1, &keys[1]), &b);
    EXPECT_EQ(map.lookup(5, &keys[2]), &c);
    EXPECT_EQ(map.lookup(0, &keys[3]), nullptr);
}

TEST(VoidPtrMap, LooksInTheBucketOfTheLowBitsOnly) {
    VoidPtrMap map(4);
    Entry a = entry_of(0);
    map.insert(0xfffffff2u, &a);
    EXPECT_EQ(map.lookup(2, &keys[0]), &a); // the rest of the hash is not kept
    EXPECT_EQ(map.lookup(6, &keys[0]), &a);
    EXPECT_EQ(map.lookup(3, &keys[0]), nullptr);
    EXPECT_EQ(map.remove(3, &keys[0]), nullptr);
}

TEST(VoidPtrMap, KeepsEqualKeysAndTakesTheFirst) {
    VoidPtrMap map(4);
    Entry first = entry_of(0), other = entry_of(1), second = entry_of(0);
    map.insert(1, &first);
    map.insert(1, &other);
    map.insert(1, &second);
    EXPECT_EQ(walked(map), (Entries{&first, &other, &second}));
    EXPECT_EQ(map.lookup(1, &keys[0]), &first);
    EXPECT_EQ(map.remove(1, &keys[0]), &first);
    EXPECT_EQ(walked(map), (Entries{&other, &second}));
    EXPECT_EQ(map.lookup(1, &keys[0]), &second);
    EXPECT_EQ(map.remove(1, &keys[0]), &second);
    EXPECT_EQ(map.lookup(1, &keys[0]), nullptr);
    EXPECT_EQ(map.remove(1, &keys[0]), nullptr);
    EXPECT_EQ(walked(map), (Entries{&other}));
}

TEST(VoidPtrMap, TakesOutFromAnyPlace) {
    for (int taken = 0; taken < 3; taken++) {
        VoidPtrMap map(1);
        Entry entries[] = {entry_of(0), entry_of(1), entry_of(2)};
        Entries expected;
        for (Entry& entry : entries)
            map.insert(7, &entry);
        for (int i = 0; i < 3; i++)
            if (i != taken)
                expected.push_back(&entries[i]);
        EXPECT_EQ(map.remove(7, &keys[taken]), &entries[taken]);
        EXPECT_EQ(walked(map), expected);

        map.insert(7, &entries[taken]); // at the tail now
        expected.push_back(&entries[taken]);
        EXPECT_EQ(walked(map), expected);
    }
}

TEST(VoidPtrMap, NullIsAKeyLikeAnyOther) {
    VoidPtrMap map(4);
    Entry a = entry_of(0);
    a.key = nullptr;
    EXPECT_EQ(map.lookup(0, nullptr), nullptr);
    map.insert(0, &a);
    EXPECT_EQ(map.lookup(0, nullptr), &a);
}

TEST(VoidPtrMap, IsEmptyWhenEveryBucketIs) {
    VoidPtrMap map(4);
    EXPECT_TRUE(map.empty());
    for (u32 bucket = 0; bucket < 4; bucket++) {
        Entry a = entry_of(0);
        map.insert(bucket, &a);
        EXPECT_FALSE(map.empty()) << bucket;
        map.remove(bucket, &keys[0]);
        EXPECT_TRUE(map.empty()) << bucket;
    }
}

TEST(VoidPtrMap, ClearingUnlinksAllAndFreesNothing) {
    VoidPtrMap map(4);
    std::vector<std::unique_ptr<Entry>> entries;
    for (int i = 0; i < 8; i++) {
        entries.push_back(std::make_unique<Entry>(entry_of(i)));
        map.insert(u32(i), entries.back().get());
    }
    HeapWatch watch;
    map.clear();
    watch.stop();
    EXPECT_EQ(watch.freed(), 0);
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.buckets(), 4u);
    EXPECT_TRUE(walked(map).empty());
    EXPECT_EQ(map.lookup(3, &keys[3]), nullptr);

    map.insert(3, entries[3].get());
    EXPECT_EQ(walked(map), Entries{entries[3].get()});
}

// ---- Walks -----------------------------------------------------------------------------------

TEST(VoidPtrMap, WalksBucketsInOrderAndEachFromItsHead) {
    VoidPtrMap map(4);
    Entry entries[8];
    for (int i = 0; i < 8; i++)
        entries[i] = entry_of(i);
    const u32 hashes[] = {3, 1, 0, 7, 5, 2, 4, 11};
    for (int i = 0; i < 8; i++)
        map.insert(hashes[i], &entries[i]);
    const Entries expected = {&entries[2], &entries[6], &entries[1], &entries[4],
                              &entries[5], &entries[0], &entries[3], &entries[7]};
    EXPECT_EQ(walked(map), expected);
    Walk walk;
    const VoidPtrMap& constant = map;
    constant.for_each_const(walk);
    EXPECT_EQ(walk.seen, expected);
}

TEST(VoidPtrMap, AnythingButZeroEndsTheWholeWalk) {
    VoidPtrMap map(4);
    Entry entries[4];
    for (int i = 0; i < 4; i++) {
        entries[i] = entry_of(i);
        map.insert(u32(i / 2), &entries[i]);
    }
    for (int result : {1, -1, 256, std::numeric_limits<int>::min()}) {
        for (int last = 0; last < 4; last++) {
            const auto stop = [&](Entry* entry) { return entry == &entries[last] ? result : 0; };
            Entries expected;
            for (int i = 0; i <= last; i++)
                expected.push_back(&entries[i]);
            Walk walk(stop), constant(stop);
            map.for_each(walk);
            map.for_each_const(constant);
            EXPECT_EQ(walk.seen, expected) << result;
            EXPECT_EQ(constant.seen, expected) << result;
        }
    }
}

TEST(VoidPtrMap, AWalkMayFreeItsEntries) {
    VoidPtrMap map(2);
    for (int i = 0; i < 8; i++)
        map.insert(u32(i), new Entry(entry_of(i)));
    Walk walk([](Entry* entry) {
        std::memset(static_cast<void*>(entry), 0xff, sizeof *entry);
        delete entry;
        return 0;
    });
    map.for_each(walk);
    EXPECT_EQ(walk.seen.size(), 8u);
    map.clear();
}

TEST(VoidPtrMap, AWalkMayTakeOutItsEntries) {
    VoidPtrMap map(2);
    for (int i = 0; i < 8; i++)
        map.insert(u32(i), new Entry(entry_of(i)));
    Walk walk([&map](Entry* entry) {
        const u32 hash = u32(static_cast<int*>(entry->key) - keys);
        if (hash % 3 != 0)
            delete map.remove(hash, entry->key);
        return 0;
    });
    map.for_each(walk);
    EXPECT_EQ(walk.seen.size(), 8u);

    std::vector<void*> left;
    for (Entry* entry : walked(map))
        left.push_back(entry->key);
    EXPECT_EQ(left, (std::vector<void*>{&keys[0], &keys[6], &keys[3]}));
    Walk freeing([](Entry* entry) {
        delete entry;
        return 0;
    });
    map.for_each(freeing);
}

TEST(VoidPtrMap, WalksTheEntriesOfOneKey) {
    VoidPtrMap map(2);
    Entry first = entry_of(0), other = entry_of(1), second = entry_of(0);
    Entry elsewhere = entry_of(0); // the same key under another bucket's hash
    map.insert(2, &first);
    map.insert(2, &other);
    map.insert(2, &second);
    map.insert(1, &elsewhere);

    Walk all;
    map.for_each_value(4, &keys[0], all); // bucket 0, like 2
    EXPECT_EQ(all.seen, (Entries{&first, &second}));
    Walk one([](Entry*) { return -1; });
    map.for_each_value(2, &keys[0], one);
    EXPECT_EQ(one.seen, (Entries{&first}));
    Walk none;
    map.for_each_value(2, &keys[2], none);
    EXPECT_TRUE(none.seen.empty());
}

TEST(VoidPtrMap, AWalkOfOneKeyMayFreeItsEntries) {
    VoidPtrMap map(1);
    for (int i = 0; i < 8; i++)
        map.insert(0, new Entry(entry_of(i % 2)));
    Walk freeing([&map](Entry* entry) {
        EXPECT_EQ(map.remove(0, entry->key), entry);
        delete entry;
        return 0;
    });
    map.for_each_value(0, &keys[0], freeing);
    EXPECT_EQ(freeing.seen.size(), 4u);
    EXPECT_EQ(walked(map).size(), 4u);
    map.for_each_value(0, &keys[1], freeing);
    EXPECT_TRUE(map.empty());
}
