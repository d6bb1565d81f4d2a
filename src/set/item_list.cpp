// The list is doubly linked and ends with a sentinel, an empty node that the next Add fills. While the user marks a
// folder, each file is searched for in the list before it is added. An index makes these searches fast. The first
// search makes the index, and from then on Add and Remove update it. If there is no memory for the index, a search
// compares the nodes one after the other.
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

// Compares like memcmp, but accepts null pointers for 0 bytes. A key of 0 bytes may have a null pointer, and memcmp
// must not get one.
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

// The nodes, sorted by the bytes of their blobs. A blob comes before longer blobs that begin with it. Equal blobs are
// in the order in which they were added. A search for a key tests only the first node that isn't below the key. If the
// blob of this node doesn't begin with the key, no blob of the list does. If several blobs equal the key, this node was
// added first.
//
// The pointers to the nodes are stored in blocks of a few hundred. A balanced tree would take five times the memory,
// and a search in the tree would read more memory.
struct ItemList::Index {
    using Block = std::vector<ItemNode*>;
    static constexpr std::size_t BlockNodes = 512;

    struct Position {
        std::vector<Block>::iterator block;
        Block::iterator node;  // valid if `block` isn't the end of `blocks`
    };

    std::vector<Block> blocks;  // none of them empty

    Position FirstNotBelow(Key key);
    void Insert(ItemNode* added);
    void Erase(Position position);
};

// Finds the block by its last node, then the node in the block.
ItemList::Index::Position ItemList::Index::FirstNotBelow(Key key)
{
    const auto below = [key](const ItemNode* node) { return BlobLess(KeyOf(node), key); };
    const auto block = std::ranges::partition_point(blocks, [&](const Block& each) { return below(each.back()); });
    return {block, block == blocks.end() ? Block::iterator() : std::ranges::partition_point(*block, below)};
}

// Inserts the node after all equal nodes. A full block is first split in two halves.
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

void ItemList::Index::Erase(Position position)
{
    position.block->erase(position.node);
    if (position.block->empty())
        blocks.erase(position.block);
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

// Makes both allocations before it changes the list. So the list is unchanged if one of them fails.
BOOL ItemList::Add(const void* blob, DWORD bytes, std::uint64_t contentBytes)
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
    added->contentBytes = contentBytes;
    added->next = sentinel;
    sentinel->prev = added;
    tail = sentinel;
    count++;
    allContentBytes += contentBytes;
    PutIntoIndex(added);
    return TRUE;
}

BOOL ItemList::Contains(const void* key, DWORD bytes)
{
    const Key wanted = {static_cast<const BYTE*>(key), bytes};
    if (Index* sorted = GetIndex()) {
        const Index::Position position = sorted->FirstNotBelow(wanted);
        return position.block != sorted->blocks.end() && BeginsWith(*position.node, wanted);
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
    node->next->prev = node->prev;  // each entry has a next node, at least the sentinel
    (node->prev ? node->prev->next : head) = node->next;
    if (cursor == node)
        cursor = nullptr;  // a walk that was ended early must not continue from a deleted node
    allContentBytes -= node->contentBytes;
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

std::uint64_t ItemList::ContentBytes() const
{
    return allContentBytes;
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

// Returns the index. If the list has no index yet, makes it. Returns null if there is no memory for it.
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
        index.reset();  // a search in an index that lacks a node could return a wrong result
    }
}

// Returns the first node whose blob equals the key, and removes it from the index but not from the list. Returns null
// if no blob equals the key.
ItemNode* ItemList::TakeFirstEqual(const void* key, DWORD bytes)
{
    const Key wanted = {static_cast<const BYTE*>(key), bytes};
    if (Index* sorted = GetIndex()) {
        const Index::Position position = sorted->FirstNotBelow(wanted);
        if (position.block == sorted->blocks.end() || !Equals(*position.node, wanted))
            return nullptr;
        ItemNode* node = *position.node;
        sorted->Erase(position);
        return node;
    }
    ItemNode* node = head;
    while (node && node->data && !Equals(node, wanted))
        node = node->next;
    return node && node->data ? node : nullptr;
}
