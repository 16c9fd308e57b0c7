// SPDX-License-Identifier: BSD-3-Clause

// Interned texts, compared by address, and hash maps keyed by pointers.
//
// Shapes:    every list is circular and doubly linked; a head points at itself when empty, and
//            insertion is at the tail. A map's bucket count never changes.
//
//                intern table                       record
//                [0]   head <-> record <-> head     | next | prev | data | hash | text |
//                ...                                `data` of a record is the record itself
//                [255] head <-> node <-> head       node: | next | prev | data -> record |
//
// Ownership: interned records live until cleanup() or the process's end. At its end they are freed,
//            though not their texts, after every static object that interned one is destroyed;
//            interning after that starts with an empty table. A VoidPtrMap's entries belong to its
//            user, a PtrMap's to the map.
// Errors:    std::bad_alloc, and StrXception "out of memory" from gensym. Texts are copied as
//            String copies them, unchecked.
// Threads:   the intern table is process-wide and not synchronised; a map belongs to one thread at
//            a time.
#pragma once

#include "core/string.h"
#include "core/types.h"

#include <cstring>

// A link of a list, or its head.
struct ListLink {
    ListLink* next;
    ListLink* prev;
};

struct InternRecord;

// An element of an intern list: a record, or a node that refers to one.
struct InternNode : ListLink {
    InternRecord* data;
};

struct InternRecord : InternNode {
    u32 hash; // of the text
    String text;
};

static_assert(sizeof(InternNode) == 3 * sizeof(void*) && sizeof(InternRecord) == 5 * sizeof(void*),
              "links, record, hash and text");

// A text that exists once: two are equal exactly when they are the same record.
class InString {
public:
    InternRecord* record; // null after default construction

    InString() : record(nullptr) {}
    explicit InString(InternRecord* record) : record(record) {}

    const String& text() const; // empty without a record

    bool operator==(const InString& other) const { return record == other.record; }
    bool operator!=(const InString& other) const { return record != other.record; }

    // The record of `text`, created on first use.
    static InString intern(const String& text);
    static InString intern(const char* text);

    // A new record with the text G0, G1, …, which intern() never returns.
    static InString gensym();

    // Prints the texts of each bucket to standard output, one line per bucket.
    static void dump();

    // Frees every record; all InStrings dangle afterwards. Nodes created by make_permanent are
    // unlinked but not freed.
    static void cleanup();
};

static_assert(sizeof(InString) == sizeof(void*), "a name is one pointer");

// A lookup that adds nothing to the table unless it is made permanent.
class TempInString {
public:
    bool owned; // the record belongs to this object and is not in the table
    InternRecord* record;

    explicit TempInString(const String& text);
    TempInString(const TempInString&) = delete;
    TempInString& operator=(const TempInString&) = delete;
    ~TempInString();

    // Adds the record to the table if it is not there.
    InString make_permanent();
};

// A hash table whose entries carry their own links (an intrusive one). It owns none of them.
class VoidPtrMap {
public:
    // Users derive from it, or lay out their values after the key.
    struct [[gnu::may_alias]] Entry : ListLink {
        void* key;
    };

    class ForEachFunc {
    public:
        virtual int void_call(Entry* entry) = 0; // non-zero ends the walk
        virtual ~ForEachFunc();
    };

    // The bucket count is the smallest power of two >= max(n, 1).
    explicit VoidPtrMap(int n);
    VoidPtrMap(const VoidPtrMap&) = delete;
    VoidPtrMap& operator=(const VoidPtrMap&) = delete;
    ~VoidPtrMap();

    // Keys need not be unique; of equal ones, the first inserted is found and removed first.
    void insert(u32 hash, Entry* entry);
    Entry* lookup(u32 hash, void* key) const; // null when not found
    Entry* remove(u32 hash, void* key);       // to be freed by the caller; null when not found

    void clear(); // unlinks every entry and frees nothing
    bool empty() const;
    u32 buckets() const;

    // Call `f` on every entry, bucket by bucket, until it returns non-zero. `f` may unlink or free
    // the entry it is called with.
    void for_each(ForEachFunc& f);
    void for_each_const(ForEachFunc& f) const;

    // As for_each, for the entries of one key.
    void for_each_value(u32 hash, void* key, ForEachFunc& f);

protected:
    void swap(VoidPtrMap& other);

private:
    struct Header {
        u32 bits; // log2 of the bucket count
        u32 mask; // bucket count - 1
        ListLink* buckets;
    };
    Header* header;
};

// The typed map, which owns its entries. K is a handle of a pointer's size that is compared by its
// bits, such as InString.
//
//     StringMap<int> ages(4);                               // the number of buckets
//     ages.insert(new StringMap<int>::Entry(name, 7));
//     if (auto* entry = ages.lookup(name)) entry->value++;
//     delete ages.remove(name);                             // null when there is none
template <class K, class V>
class PtrMap : public VoidPtrMap {
public:
    struct Entry : ListLink {
        K key;
        V value;

        Entry(K key, const V& value) : ListLink(), key(key), value(value) {}
    };

    class ForEachFunc : public VoidPtrMap::ForEachFunc {
    public:
        int void_call(VoidPtrMap::Entry* entry) override { return (*this)(typed(entry)); }
        virtual int operator()(Entry* entry) = 0;
    };

    // Frees each entry.
    class Deleter : public ForEachFunc {
    public:
        int operator()(Entry* entry) override {
            delete entry;
            return 0;
        }
    };

    // Inserts a copy of each entry into `target`.
    class Copier : public ForEachFunc {
    public:
        explicit Copier(PtrMap& target) : target(target) {}
        int operator()(Entry* entry) override {
            target.insert(new Entry(entry->key, entry->value));
            return 0;
        }

    private:
        PtrMap& target;
    };

    // `result` is whether each entry's key has an equal value in `other`; the walk ends at the
    // first that has not. Once false, `result` stays false, even when the functor is used again.
    class Equaler : public ForEachFunc {
    public:
        bool result;

        explicit Equaler(const PtrMap& other) : result(true), other(other) {}
        int operator()(Entry* entry) override {
            const Entry* found = other.lookup(entry->key);
            if (found && found->value == entry->value)
                return 0;
            result = false;
            return 1;
        }

    private:
        const PtrMap& other;
    };

    explicit PtrMap(int n) : VoidPtrMap(n) {}
    PtrMap(const PtrMap& other);
    PtrMap& operator=(const PtrMap& other);
    ~PtrMap();

    void insert(Entry* entry) { VoidPtrMap::insert(hash(entry->key), untyped(entry)); }
    Entry* lookup(K key) const { return typed(VoidPtrMap::lookup(hash(key), bits(key))); }
    Entry* remove(K key) { return typed(VoidPtrMap::remove(hash(key), bits(key))); }
    void for_each_value(K key, ForEachFunc& f) {
        VoidPtrMap::for_each_value(hash(key), bits(key), f);
    }

private:
    static_assert(sizeof(K) == sizeof(void*), "a key has the size of a pointer");

    static void* bits(const K& key) {
        void* pointer;
        std::memcpy(&pointer, static_cast<const void*>(&key), sizeof pointer);
        return pointer;
    }
    // Records are aligned to 16 bytes, so the lowest four bits carry no information.
    static u32 hash(const K& key) { return u32(reinterpret_cast<uword>(bits(key)) >> 4); }

    static Entry* typed(VoidPtrMap::Entry* entry) {
        return static_cast<Entry*>(static_cast<ListLink*>(entry));
    }
    static VoidPtrMap::Entry* untyped(Entry* entry) {
        return static_cast<VoidPtrMap::Entry*>(static_cast<ListLink*>(entry));
    }
};

template <class V>
using StringMap = PtrMap<InString, V>;

// Whether every entry of `a` has an equal one in `b`; `b` may have more.
template <class K, class V>
bool operator==(const PtrMap<K, V>& a, const PtrMap<K, V>& b) {
    typename PtrMap<K, V>::Equaler equaler(b);
    a.for_each_const(equaler);
    return equaler.result;
}

template <class K, class V>
bool operator!=(const PtrMap<K, V>& a, const PtrMap<K, V>& b) {
    return !(a == b);
}

template <class K, class V>
PtrMap<K, V>::PtrMap(const PtrMap& other) : PtrMap(int(other.buckets())) {
    Copier copier(*this);
    other.for_each_const(copier);
}

template <class K, class V>
PtrMap<K, V>& PtrMap<K, V>::operator=(const PtrMap& other) {
    PtrMap copy(other);
    swap(copy);
    return *this;
}

template <class K, class V>
PtrMap<K, V>::~PtrMap() {
    Deleter deleter;
    for_each(deleter);
}
