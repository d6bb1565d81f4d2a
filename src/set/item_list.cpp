// item_list.cpp - see item_list.h.

#include "set/item_list.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

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

Key KeyOf(const ItemNode* node)
{
    return {node->data, node->length};
}

bool Equals(const ItemNode* node, Key key)
{
    return node->length == key.length && Compare(node->data, key.bytes, key.length) == 0;
}

bool BeginsWith(const ItemNode* node, Key key)
{
    return node->length >= key.length && Compare(node->data, key.bytes, key.length) == 0;
}

}  // namespace

// The nodes in byte order of their blobs, a shorter blob before what it begins; equal ones stay in the order in which
// they were added. So the first node that isn't below a key is the first-added equal one, or else one that begins with
// the key, or there is none.
//
// Blocks of pointers: a tree's nodes would take five times the memory, and more of it is touched on the way to a blob.
struct ItemList::Index {
    using Block = std::vector<ItemNode*>;
    static constexpr std::size_t BlockNodes = 512;

    struct Place {
        std::vector<Block>::iterator block;
        Block::iterator node;  // only where there is a block
    };

    std::vector<Block> blocks;  // none of them empty

    Place FirstNotBelow(Key key);
    void Insert(ItemNode* added);
    void Erase(Place place);
};

ItemList::Index::Place ItemList::Index::FirstNotBelow(Key key)
{
    const auto below = [key](const ItemNode* node) { return BlobLess(KeyOf(node), key); };
    const auto block = std::ranges::partition_point(blocks, [&](const Block& each) { return below(each.back()); });
    return {block, block == blocks.end() ? Block::iterator() : std::ranges::partition_point(*block, below)};
}

// Behind its equals.
void ItemList::Index::Insert(ItemNode* added)
{
    if (blocks.empty()) {
        blocks.push_back({added});
        return;
    }
    const auto notAbove = [added](const ItemNode* node) { return !BlobLess(KeyOf(added), KeyOf(node)); };
    auto block = std::ranges::partition_point(blocks, [&](const Block& each) { return notAbove(each.back()); });
    if (block == blocks.end())
        --block;
    if (block->size() >= BlockNodes) {
        const auto middle = block->begin() + BlockNodes / 2;
        Block upper(middle, block->end());
        block->erase(middle, block->end());
        block->shrink_to_fit();
        block = blocks.insert(block + 1, std::move(upper));
        if (!notAbove(block->front()))
            --block;
    }
    block->insert(std::ranges::partition_point(*block, notAbove), added);
}

void ItemList::Index::Erase(Place place)
{
    place.block->erase(place.node);
    if (place.block->empty())
        blocks.erase(place.block);
}

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
        const Index::Place place = sorted->FirstNotBelow(wanted);
        return place.block != sorted->blocks.end() && BeginsWith(*place.node, wanted);
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
            made->Insert(node);
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
        index->Insert(added);
    } catch (const std::bad_alloc&) {
        index.reset();  // an index that lacks an entry would be worse than none
    }
}

// The first-added node that equals the key, no longer in the index.
ItemNode* ItemList::TakeFirstEqual(const void* key, DWORD bytes)
{
    const Key wanted = {static_cast<const BYTE*>(key), bytes};
    if (Index* sorted = GetIndex()) {
        const Index::Place place = sorted->FirstNotBelow(wanted);
        if (place.block == sorted->blocks.end() || !Equals(*place.node, wanted))
            return nullptr;
        ItemNode* node = *place.node;
        sorted->Erase(place);
        return node;
    }
    ItemNode* node = head;
    while (node && node->data && !Equals(node, wanted))
        node = node->next;
    return node && node->data ? node : nullptr;
}
