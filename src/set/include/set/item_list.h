// item_list.h - an ordered list of byte blobs: what the user marked, or what a loaded set holds. Knows nothing of what
// stands in a blob; every caller's blob begins with a terminated name.
//
// The main window's thread only.
#pragma once

#include "ce/types.h"

#include <memory>

// One link. It owns its blob; nothing else points into it. The last node of a list, the sentinel, has no blob.
struct ItemNode {
    BYTE* data = nullptr;
    DWORD length = 0;  // bytes; no meaning in the sentinel
    ItemNode* next = nullptr;
    ItemNode* prev = nullptr;
};

class ItemList {
public:
    // Without memory for the sentinel the list stays empty for good: head and tail are null.
    explicit ItemList(DWORD tag);
    ItemList(const ItemList&) = delete;
    ItemList& operator=(const ItemList&) = delete;
    ~ItemList();

    // Copies `bytes` bytes behind all others, equal ones too. Constant time as long as nobody has searched.
    // 0 without memory, and then the list is as it was.
    BOOL Add(const void* blob, DWORD bytes);

    // 1 if some blob begins with these bytes: with a name's terminator in the key the test is for that name, without it
    // for all that begins like it. 0 bytes match any entry.
    BOOL Contains(const void* key, DWORD bytes);

    // Takes the first-added blob out that equals the key, in length too. 0 if there is none.
    BOOL Remove(const void* key, DWORD bytes);

    [[nodiscard]] BOOL IsEmpty() const;
    [[nodiscard]] DWORD Count() const;

    // A walk is First, then Next until it gives 0: each copies one blob into the buffer, which has room for the largest
    // one, and tells its length in bytes. One walk at a time, and no Add or Remove meanwhile. Next is harmless also
    // after a First that gave 0 and without one.
    BOOL First(void* buffer, DWORD* length);
    BOOL Next(void* buffer, DWORD* length);

    ItemNode* head = nullptr;
    ItemNode* tail = nullptr;    // the sentinel
    ItemNode* cursor = nullptr;  // of the running walk
    DWORD id;                    // a tag; nothing here reads it

private:
    struct Index;

    BOOL DeliverCursor(void* buffer, DWORD* length) const;
    Index* GetIndex();
    void PutIntoIndex(ItemNode* added);
    ItemNode* TakeFirstEqual(const void* key, DWORD bytes);

    DWORD count = 0;
    std::unique_ptr<Index> index;  // made by the first search, so that a list that is only filled stays small
};
