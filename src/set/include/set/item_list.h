// item_list.h - defines an ordered list of byte blobs. Each blob describes an item that the user marked or that a
// loaded set contains. The list doesn't interpret the blobs. Its callers add only blobs that begin with a terminated
// name.
//
// All calls are made on the main window's thread.
#pragma once

#include "ce/types.h"

#include <memory>

// A node owns its blob. The last node of a list, the sentinel, has none.
struct ItemNode {
    BYTE* data = nullptr;
    DWORD length = 0;  // bytes; no meaning in the sentinel
    std::uint64_t contentBytes = 0;
    ItemNode* next = nullptr;
    ItemNode* prev = nullptr;
};

class ItemList {
public:
    // If there is no memory for the sentinel, head and tail are null and the list stays empty.
    explicit ItemList(DWORD tag);
    ItemList(const ItemList&) = delete;
    ItemList& operator=(const ItemList&) = delete;
    ~ItemList();

    // Appends a copy of the `bytes` bytes of `blob`, even if the list has an equal blob. Until the list is first
    // searched, Add takes constant time. `contentBytes` is the number of bytes by which the item advances a run's
    // progress. Before a backup it is the size of the file, or 0 for a database and for a file whose size isn't known.
    // Before a restore it is the size of the item's stream. Returns 0 if there is no memory. In that case the list is
    // unchanged.
    BOOL Add(const void* blob, DWORD bytes, std::uint64_t contentBytes = 0);

    // Returns 1 if a blob begins with the bytes of the key. If the key is a name with its NUL, it matches only that
    // name. If the key is a name without its NUL, it matches all names that begin with it. A key of 0 bytes matches any
    // blob.
    BOOL Contains(const void* key, DWORD bytes);

    // Removes the blob that equals the key. If several blobs equal it, removes the one that was added first. Returns 0
    // if no blob equals the key.
    BOOL Remove(const void* key, DWORD bytes);

    [[nodiscard]] BOOL IsEmpty() const;
    [[nodiscard]] DWORD Count() const;
    // The sum of `contentBytes` of the items in the list.
    [[nodiscard]] std::uint64_t ContentBytes() const;

    // A walk calls First, then Next until the result is 0. Each call copies a blob into `buffer` and writes the blob's
    // length in bytes to `length`. `buffer` must have room for the largest blob. Only one walk at a time is possible,
    // and Add and Remove mustn't be called during a walk. Next returns 0 if First returned 0 or wasn't called.
    BOOL First(void* buffer, DWORD* length);
    BOOL Next(void* buffer, DWORD* length);

    ItemNode* head = nullptr;
    ItemNode* tail = nullptr;    // the sentinel
    ItemNode* cursor = nullptr;  // node of the current walk
    DWORD id;                    // a tag, which the list doesn't use

private:
    struct Index;

    BOOL DeliverCursor(void* buffer, DWORD* length) const;
    Index* GetIndex();
    void PutIntoIndex(ItemNode* added);
    ItemNode* TakeFirstEqual(const void* key, DWORD bytes);

    DWORD count = 0;
    std::uint64_t allContentBytes = 0;
    std::unique_ptr<Index> index;  // made by the first search, so that a list without searches stays small
};
