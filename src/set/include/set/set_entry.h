// set_entry.h - an item in memory: its name and, in a loaded set, the offsets of its stream (docs/format.md, "Entries
// in memory").
#pragma once

#include "set/item_list.h"

#include "ce/text.h"
#include "ce/types.h"

#include <cstring>

// A name with its terminator, in characters.
inline constexpr DWORD NameChars = MAX_PATH;

// The two offsets after a name, and the largest blob, in bytes.
inline constexpr DWORD OffsetsBytes = 8;
inline constexpr DWORD LargestEntryBytes = NameChars * sizeof(WCHAR) + OffsetsBytes;

// Has room for any blob of a list. Each begins with the name; those of a loaded set have the offsets after it.
union EntryBuffer {
    BYTE bytes[LargestEntryBytes] = {};
    WCHAR name[LargestEntryBytes / sizeof(WCHAR)];
    DWORD alignment;
};
static_assert(sizeof(EntryBuffer) == 528);

// Bytes of a blob without offsets.
inline DWORD NameBytes(const WCHAR* name)
{
    return static_cast<DWORD>((wcslen(name) + 1) * sizeof(WCHAR));
}

// Bytes of the name in a blob with offsets, rounded up to a multiple of 4.
inline DWORD SetEntryNameSize(const WCHAR* name)
{
    return (NameBytes(name) + 3) & ~DWORD{3};
}

// The offsets of the stream in the data file: its first byte, and the byte after its last. `blob` is that of an entry
// of a loaded set.
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

// The length of the stream; 0 if the offsets are damaged.
inline DWORD EntryStreamBytes(const BYTE* blob)
{
    const DWORD start = EntryStartOffset(blob);
    const DWORD end = EntryEndOffset(blob);
    return end > start ? end - start : 0;
}

// Appends the offsets to the name in `entry`. Returns the bytes of the blob.
inline DWORD SetEntryOffsets(EntryBuffer& entry, DWORD startOffset, DWORD endOffset)
{
    const DWORD nameSize = SetEntryNameSize(entry.name);
    std::memcpy(entry.bytes + nameSize, &startOffset, sizeof startOffset);
    std::memcpy(entry.bytes + nameSize + sizeof startOffset, &endOffset, sizeof endOffset);
    return nameSize + OffsetsBytes;
}

// Calls visit(const EntryBuffer&) for each blob of a list, in its order; for none if `list` is null. The list must not
// change meanwhile (item_list.h).
template <class Visit>
void ForEachEntry(ItemList* list, const Visit& visit)
{
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = list && list->First(entry.bytes, &length); more; more = list->Next(entry.bytes, &length))
        visit(entry);
}
