// SPDX-License-Identifier: BSD-3-Clause
#include "core/instring.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

// ---- Lists -----------------------------------------------------------------------------------

// A head's `prev` is the last link, so appending needs no walk.
static void append_link(ListLink& head, ListLink* link) {
    link->next = &head;
    link->prev = head.prev;
    head.prev->next = link;
    head.prev = link;
}

static void unlink_all(ListLink& head) {
    head.next = head.prev = &head;
}

static void remove_link(ListLink* link) {
    link->prev->next = link->next;
    link->next->prev = link->prev;
}

// ---- The intern table ------------------------------------------------------------------------

namespace {

const u32 bucket_count = 256;

// Initialised at compile time, so that it can be used before any code has run; without a
// destructor, so that it can be used until the last exit handler has run.
struct InternTable {
    ListLink buckets[bucket_count];
    ListLink gensyms;

    constexpr InternTable() : buckets(), gensyms{&gensyms, &gensyms} {
        for (ListLink& head : buckets)
            head.next = head.prev = &head;
    }
};

InternTable table;

unsigned gensym_count = 0;

} // namespace

// The bucket count is a power of two: the hash's low bits are the bucket's number.
static ListLink& bucket_of(u32 hash) {
    return table.buckets[hash & (bucket_count - 1)];
}

// ---- The end of the process ------------------------------------------------------------------

// Frees the nodes but not the texts, to which code that runs later may still hold pointers. The
// list is emptied for a host that interns from an exit handler of its own.
static void free_nodes(ListLink& list) {
    for (ListLink* link = list.next; link != &list;) {
        InternNode* const node = static_cast<InternNode*>(link);
        link = link->next;
        ::operator delete(node);
    }
    unlink_all(list);
}

static void free_gensyms() {
    free_nodes(table.gensyms);
}

static void free_buckets() {
    for (u32 i = bucket_count; i-- > 0;)
        free_nodes(table.buckets[i]);
}

// Registers the exit handlers, once. Handlers run in the reverse order of registration, so these
// run after the destructor of every static object that interned a text: the initialiser's priority
// is before all default ones, and an object that is made even earlier registers them by interning.
// The gensyms go first, then the buckets. If registration fails, the memory is left to the system.
[[gnu::constructor(101)]] static void free_table_at_exit() {
    static bool registered = false;
    if (registered)
        return;
    registered = true;
    (void)std::atexit(free_buckets);
    (void)std::atexit(free_gensyms);
}

// ---- Records ---------------------------------------------------------------------------------

static void keep(ListLink& list, InternNode* node) {
    free_table_at_exit();
    append_link(list, node);
}

// Compares hashes' buckets first, then texts: null when the table has no such record.
static InternRecord* find_record(const String& text, u32 hash) {
    const ListLink& bucket = bucket_of(hash);
    for (ListLink* link = bucket.next; link != &bucket; link = link->next) {
        InternRecord* record = static_cast<InternNode*>(link)->data;
        if (record->text == text)
            return record;
    }
    return nullptr;
}

// A new record that is in no list yet; its `data` leads to itself.
static InternRecord* new_record(const String& text, u32 hash) {
    InternRecord* record = new InternRecord;
    record->data = record;
    record->hash = hash;
    record->text = text;
    return record;
}

// The next link is read before its record, of which it may be part, is freed.
static void free_records(ListLink& list) {
    for (ListLink* link = list.next; link != &list;) {
        InternRecord* record = static_cast<InternNode*>(link)->data;
        link = link->next;
        delete record;
    }
    unlink_all(list);
}

const String& InString::text() const {
    static const String none;
    return record ? record->text : none;
}

InString InString::intern(const String& text) {
    const u32 hash = text.hash();
    InternRecord* record = find_record(text, hash);
    if (!record) {
        record = new_record(text, hash);
        keep(bucket_of(hash), record);
    }
    return InString(record);
}

InString InString::intern(const char* text) {
    return intern(String(text));
}

InString InString::gensym() {
    const String text = String::fmt("G%d", int(gensym_count++));
    InternRecord* record = new_record(text, text.hash());
    keep(table.gensyms, record);
    return InString(record);
}

void InString::dump() {
    for (u32 i = 0; i < bucket_count; i++) {
        printf("chain %u: ", i);
        const ListLink& bucket = table.buckets[i];
        for (const ListLink* link = bucket.next; link != &bucket; link = link->next)
            printf(" %s", velmora::text_of(static_cast<const InternNode*>(link)->data->text));
        printf("\n");
    }
}

void InString::cleanup() {
    for (ListLink& bucket : table.buckets)
        free_records(bucket);
    free_records(table.gensyms);
}

// Look the text up; only a new record is owned, and freed unless it is made permanent.
TempInString::TempInString(const String& text) {
    const u32 hash = text.hash();
    record = find_record(text, hash);
    owned = !record;
    if (owned)
        record = new_record(text, hash);
}

TempInString::~TempInString() {
    if (owned)
        delete record;
}

// The table gets a node that refers to the record, whose own links stay unused.
InString TempInString::make_permanent() {
    if (owned) {
        InternNode* node = new InternNode;
        node->data = record;
        keep(bucket_of(record->hash), node);
        owned = false;
    }
    return InString(record);
}

// ---- VoidPtrMap ------------------------------------------------------------------------------

VoidPtrMap::ForEachFunc::~ForEachFunc() {}

VoidPtrMap::VoidPtrMap(int n) {
    // The smallest power of two that holds `n` buckets.
    u32 bits = 0;
    while (n > 1 && (u32(1) << bits) < u32(n))
        bits++;

    // All buckets empty, and freed again if the header cannot be allocated.
    const u32 count = u32(1) << bits;
    ListLink* heads = new ListLink[count];
    for (u32 i = 0; i < count; i++)
        unlink_all(heads[i]);
    try {
        header = new Header{bits, count - 1, heads};
    } catch (...) {
        delete[] heads;
        throw;
    }
}

VoidPtrMap::~VoidPtrMap() {
    delete[] header->buckets;
    delete header;
}

void VoidPtrMap::insert(u32 hash, Entry* entry) {
    append_link(header->buckets[hash & header->mask], entry);
}

VoidPtrMap::Entry* VoidPtrMap::lookup(u32 hash, void* key) const {
    ListLink& head = header->buckets[hash & header->mask];
    for (ListLink* link = head.next; link != &head; link = link->next) {
        Entry* entry = static_cast<Entry*>(link);
        if (entry->key == key)
            return entry;
    }
    return nullptr;
}

VoidPtrMap::Entry* VoidPtrMap::remove(u32 hash, void* key) {
    Entry* entry = lookup(hash, key);
    if (entry)
        remove_link(entry);
    return entry;
}

void VoidPtrMap::clear() {
    for (u32 i = 0; i < buckets(); i++)
        unlink_all(header->buckets[i]);
}

bool VoidPtrMap::empty() const {
    for (u32 i = 0; i < buckets(); i++)
        if (header->buckets[i].next != &header->buckets[i])
            return false;
    return true;
}

u32 VoidPtrMap::buckets() const {
    return header->mask + 1;
}

void VoidPtrMap::for_each(ForEachFunc& f) {
    for_each_const(f);
}

void VoidPtrMap::for_each_const(ForEachFunc& f) const {
    // Bucket by bucket, each in order of insertion.
    for (u32 i = 0; i < buckets(); i++) {
        ListLink& head = header->buckets[i];
        for (ListLink* link = head.next; link != &head;) {
            ListLink* const next = link->next; // before `f`, which may free the entry
            if (f.void_call(static_cast<Entry*>(link)))
                return;
            link = next;
        }
    }
}

void VoidPtrMap::for_each_value(u32 hash, void* key, ForEachFunc& f) {
    ListLink& head = header->buckets[hash & header->mask];
    for (ListLink* link = head.next; link != &head;) {
        ListLink* const next = link->next; // before `f`, which may free the entry
        Entry* entry = static_cast<Entry*>(link);
        if (entry->key == key && f.void_call(entry))
            return;
        link = next;
    }
}

void VoidPtrMap::swap(VoidPtrMap& other) {
    std::swap(header, other.header);
}
