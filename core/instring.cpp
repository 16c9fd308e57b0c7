#include "core/instring.h"

#include <cstdio>
#include <new>
#include <utility>

// ---- Lists -----------------------------------------------------------------------------------

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

static const char* text_of(const String& text) {
    return text.str ? text.str : "";
}

namespace {

// A list of intern nodes. At the process's end its nodes are freed; the texts stay, since code that
// runs later still may hold them.
struct InternList : ListLink {
    constexpr InternList() : ListLink{this, this} {}
    ~InternList() {
        for (ListLink* link = next; link != this;) {
            InternNode* node = static_cast<InternNode*>(link);
            link = link->next;
            ::operator delete(node);
        }
        unlink_all(*this);
    }
};

const u32 bucket_count = 256;

// Both stand before any initialiser of default priority runs, whatever the order of linking, and
// their exit handlers run after everything that those made is gone: first the gensyms', which was
// made last, then the buckets', from the last bucket to the first.
[[gnu::init_priority(101)]] InternList buckets[bucket_count];
[[gnu::init_priority(101)]] InternList gensyms;

unsigned gensym_count = 0;

} // namespace

static InternList& bucket_of(u32 hash) {
    return buckets[hash & (bucket_count - 1)];
}

static InternRecord* find_record(const String& text, u32 hash) {
    const InternList& bucket = bucket_of(hash);
    for (ListLink* link = bucket.next; link != &bucket; link = link->next) {
        InternRecord* record = static_cast<InternNode*>(link)->data;
        if (record->text == text)
            return record;
    }
    return nullptr;
}

// A record that no list holds yet.
static InternRecord* new_record(const String& text, u32 hash) {
    InternRecord* record = new InternRecord;
    record->data = record;
    record->hash = hash;
    record->text = text;
    return record;
}

static void free_records(InternList& list) {
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
        append_link(bucket_of(hash), record);
    }
    return InString(record);
}

InString InString::intern(const char* text) {
    return intern(String(text));
}

InString InString::gensym() {
    const String text = String::fmt("G%d", int(gensym_count++));
    InternRecord* record = new_record(text, text.hash());
    append_link(gensyms, record);
    return InString(record);
}

void InString::dump() {
    for (u32 i = 0; i < bucket_count; i++) {
        printf("chain %u: ", i);
        for (const ListLink* link = buckets[i].next; link != &buckets[i]; link = link->next)
            printf(" %s", text_of(static_cast<const InternNode*>(link)->data->text));
        printf("\n");
    }
}

void InString::cleanup() {
    for (InternList& bucket : buckets)
        free_records(bucket);
    free_records(gensyms);
}

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

InString TempInString::make_permanent() {
    if (owned) {
        InternNode* node = new InternNode;
        node->data = record;
        append_link(bucket_of(record->hash), node);
        owned = false;
    }
    return InString(record);
}

// ---- VoidPtrMap ------------------------------------------------------------------------------

VoidPtrMap::ForEachFunc::~ForEachFunc() {}

VoidPtrMap::VoidPtrMap(int n) {
    u32 bits = 0;
    while (n > 1 && (u32(1) << bits) < u32(n))
        bits++;
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
        ListLink* const next = link->next;
        Entry* entry = static_cast<Entry*>(link);
        if (entry->key == key && f.void_call(entry))
            return;
        link = next;
    }
}

void VoidPtrMap::swap(VoidPtrMap& other) {
    std::swap(header, other.header);
}
