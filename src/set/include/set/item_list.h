// item_list.h - an ordered list of byte blobs, for what the user marked or what a loaded set has. The list doesn't
// interpret the blobs; those of its callers begin with a terminated name.
//
// The main window's thread only.
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

    // Appends a copy of `bytes` bytes, also if there is an equal blob. Constant time before the first search.
    // `contentBytes` is what the progress of a run counts for the item: the size of a file before a backup, that of the
    // stream before a restore, or 0. Returns 0 if there is no memory, and then the list is unchanged.
    BOOL Add(const void* blob, DWORD bytes, std::uint64_t contentBytes = 0);

    // 1 if a blob begins with these bytes. A key with the NUL of a name matches that name, a key without it all names
    // that begin with it. 0 bytes match any blob.
    BOOL Contains(const void* key, DWORD bytes);

    // Removes the blob that equals the key, the one added first if there are several. 0 if there is none.
    BOOL Remove(const void* key, DWORD bytes);

    [[nodiscard]] BOOL IsEmpty() const;
    [[nodiscard]] DWORD Count() const;
    // The sum of the sizes that were given to Add.
    [[nodiscard]] std::uint64_t ContentBytes() const;

    // A walk is First, then Next until it returns 0. Each copies a blob into `buffer`, which has room for the largest
    // one, and its length in bytes into `length`. One walk at a time, and no Add or Remove meanwhile. Next returns 0 if
    // First did, or wasn't called.
    BOOL First(void* buffer, DWORD* length);
    BOOL Next(void* buffer, DWORD* length);

    ItemNode* head = nullptr;
    ItemNode* tail = nullptr;    // the sentinel
    ItemNode* cursor = nullptr;  // of the current walk
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
