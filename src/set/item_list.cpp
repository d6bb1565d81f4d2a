// item_list.cpp - see item_list.h.

#include "item_list.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <set>

namespace {

struct Key {
    const BYTE* bytes;
    DWORD length;
};

// A key of no bytes may have no address either.
int Compare(const BYTE* left, const BYTE* right, DWORD bytes)
{
    return bytes == 0 ? 0 : std::memcmp(left, right, bytes);
}

bool BlobLess(Key left, Key right)
{
    const int order = Compare(left.bytes, right.bytes, std::min(left.length, right.length));
    return order != 0 ? order < 0 : left.length < right.length;
}

struct NodeLess {
    using is_transparent = void;
    static Key KeyOf(const ItemNode* node) { return {node->data, node->length}; }
    static Key KeyOf(Key key) { return key; }

    template <class Left, class Right>
    bool operator()(Left left, Right right) const
    {
        return BlobLess(KeyOf(left), KeyOf(right));
    }
};

bool Equals(const ItemNode* node, Key key)
{
    return node->length == key.length && Compare(node->data, key.bytes, key.length) == 0;
}

bool BeginsWith(const ItemNode* node, Key key)
{
    return node->length >= key.length && Compare(node->data, key.bytes, key.length) == 0;
}

}  // namespace

// In byte order, a shorter blob before what it begins; equal ones stay in the order in which they were added. So the
// first node that isn't below a key is the first-added equal one, or else one that begins with the key, or there is
// none.
struct ItemList::Index {
    std::multiset<ItemNode*, NodeLess> nodes;
};

ItemList::ItemList(DWORD tag) : id(tag)
{
    head = tail = new (std::nothrow) ItemNode;
}

ItemList::~ItemList()
{
    while (head) {
        ItemNode* next = head->next;
        delete[] head->data;
        delete head;
        head = next;
    }
}

BOOL ItemList::Add(const void* blob, DWORD bytes)
{
    if (!tail)
        return FALSE;
    BYTE* copy = new (std::nothrow) BYTE[bytes];
    ItemNode* sentinel = new (std::nothrow) ItemNode;
    if (!copy || !sentinel) {
        delete[] copy;
        delete sentinel;
        return FALSE;
    }
    ItemNode* added = tail;
    std::copy_n(static_cast<const BYTE*>(blob), bytes, copy);
    added->data = copy;
    added->length = bytes;
    added->next = sentinel;
    sentinel->prev = added;
    tail = sentinel;
    count++;
    PutIntoIndex(added);
    return TRUE;
}

BOOL ItemList::Contains(const void* key, DWORD bytes)
{
    const Key wanted = {static_cast<const BYTE*>(key), bytes};
    if (Index* sorted = GetIndex()) {
        const auto place = sorted->nodes.lower_bound(wanted);
        return place != sorted->nodes.end() && BeginsWith(*place, wanted);
    }
    const ItemNode* node = head;
    while (node && node->data && !BeginsWith(node, wanted))
        node = node->next;
    return node && node->data;
}

BOOL ItemList::Remove(const void* key, DWORD bytes)
{
    ItemNode* node = TakeFirstEqual(key, bytes);
    if (!node)
        return FALSE;
    node->next->prev = node->prev;  // every entry has a next: the sentinel at least
    (node->prev ? node->prev->next : head) = node->next;
    if (cursor == node)
        cursor = nullptr;  // a walk that was broken off must not go on from a dead node
    delete[] node->data;
    delete node;
    count--;
    return TRUE;
}

BOOL ItemList::IsEmpty() const
{
    return !head || !head->data;
}

DWORD ItemList::Count() const
{
    return count;
}

BOOL ItemList::First(void* buffer, DWORD* length)
{
    cursor = head;
    return DeliverCursor(buffer, length);
}

BOOL ItemList::Next(void* buffer, DWORD* length)
{
    if (cursor && cursor->data)
        cursor = cursor->next;
    return DeliverCursor(buffer, length);
}

BOOL ItemList::DeliverCursor(void* buffer, DWORD* length) const
{
    if (!cursor || !cursor->data)
        return FALSE;
    std::memcpy(buffer, cursor->data, cursor->length);
    *length = cursor->length;
    return TRUE;
}

// Null without memory for it: then a search walks the list.
ItemList::Index* ItemList::GetIndex()
{
    if (index)
        return index.get();
    try {
        auto made = std::make_unique<Index>();
        for (ItemNode* node = head; node && node->data; node = node->next)
            made->nodes.insert(node);
        index = std::move(made);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    return index.get();
}

void ItemList::PutIntoIndex(ItemNode* added)
{
    if (!index)
        return;
    try {
        index->nodes.insert(added);
    } catch (const std::bad_alloc&) {
        index.reset();  // an index that lacks an entry would be worse than none
    }
}

// The first-added node that equals the key, no longer in the index.
ItemNode* ItemList::TakeFirstEqual(const void* key, DWORD bytes)
{
    const Key wanted = {static_cast<const BYTE*>(key), bytes};
    if (Index* sorted = GetIndex()) {
        const auto place = sorted->nodes.lower_bound(wanted);
        if (place == sorted->nodes.end() || !Equals(*place, wanted))
            return nullptr;
        ItemNode* node = *place;
        sorted->nodes.erase(place);
        return node;
    }
    ItemNode* node = head;
    while (node && node->data && !Equals(node, wanted))
        node = node->next;
    return node && node->data ? node : nullptr;
}
