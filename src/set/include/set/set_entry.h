// set_entry.h - defines the blob that describes an item in an ItemList: the item's name and, in a loaded set, the two
// offsets of its stream (docs/format.md, "Entries in memory").
#pragma once

#include "set/item_list.h"

#include "ce/text.h"
#include "ce/types.h"

#include <cstring>

// The length of the longest name with its NUL, in characters.
inline constexpr DWORD NameChars = MAX_PATH;

// OffsetsBytes is the size in bytes of the two offsets of a stream. LargestEntryBytes is the size in bytes of the
// largest blob, which has the longest name and both offsets.
inline constexpr DWORD OffsetsBytes = 8;
inline constexpr DWORD LargestEntryBytes = NameChars * sizeof(WCHAR) + OffsetsBytes;

// A buffer with room for any blob of an ItemList. Each blob begins with the item's name. If the blob is from a loaded
// set, the offsets of the item's stream follow the name.
union EntryBuffer {
    BYTE bytes[LargestEntryBytes] = {};
    WCHAR name[LargestEntryBytes / sizeof(WCHAR)];
    DWORD alignment;
};
static_assert(sizeof(EntryBuffer) == 528);

// Returns the size in bytes of the name with its NUL. It is also the size of a blob that has only the name.
inline DWORD NameBytes(const WCHAR* name)
{
    return static_cast<DWORD>((wcslen(name) + 1) * sizeof(WCHAR));
}

// Returns how many bytes the name takes in a blob from a loaded set. The number includes the name's NUL and the padding
// to a multiple of 4. In the blob, the two offsets follow the padding.
inline DWORD SetEntryNameSize(const WCHAR* name)
{
    return (NameBytes(name) + 3) & ~DWORD{3};
}

// EntryStartOffset returns the offset of the stream's first byte in the data file. EntryEndOffset returns the offset
// after its last byte. `blob` must be from a loaded set.
inline DWORD EntryStartOffset(const BYTE* blob)
{
    DWORD offset = 0;
    std::memcpy(&offset, blob + SetEntryNameSize(reinterpret_cast<const WCHAR*>(blob)), sizeof offset);
    return offset;
}

inline DWORD EntryEndOffset(const BYTE* blob)
{
    DWORD offset = 0;
    std::memcpy(&offset, blob + SetEntryNameSize(reinterpret_cast<const WCHAR*>(blob)) + sizeof offset, sizeof offset);
    return offset;
}

// The length of the stream in bytes. It is 0 if the end offset isn't above the start offset.
inline DWORD EntryStreamBytes(const BYTE* blob)
{
    const DWORD start = EntryStartOffset(blob);
    const DWORD end = EntryEndOffset(blob);
    return end > start ? end - start : 0;
}

// Appends the offsets to the name in `entry`. Returns the size of the blob in bytes.
inline DWORD SetEntryOffsets(EntryBuffer& entry, DWORD startOffset, DWORD endOffset)
{
    const DWORD nameSize = SetEntryNameSize(entry.name);
    std::memcpy(entry.bytes + nameSize, &startOffset, sizeof startOffset);
    std::memcpy(entry.bytes + nameSize + sizeof startOffset, &endOffset, sizeof endOffset);
    return nameSize + OffsetsBytes;
}

// Calls visit(const EntryBuffer&) for each blob of a list, in the order of the list. Does nothing if `list` is null.
// The list must not change until the function returns (item_list.h).
template <class Visit>
void ForEachEntry(ItemList* list, const Visit& visit)
{
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = list && list->First(entry.bytes, &length); more; more = list->Next(entry.bytes, &length))
        visit(entry);
}
