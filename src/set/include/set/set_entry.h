// set_entry.h - what one item of a set is in memory: its name and, once a set is loaded, where its stream lies
// (docs/format.md, "Entries in memory").
#pragma once

#include "set/item_list.h"

#include "ce/text.h"
#include "ce/types.h"

#include <cstring>

// A name with its terminator, in characters.
inline constexpr DWORD NameChars = MAX_PATH;

// The two offsets behind a name, and the largest blob, in bytes.
inline constexpr DWORD OffsetsBytes = 8;
inline constexpr DWORD LargestEntryBytes = NameChars * sizeof(WCHAR) + OffsetsBytes;

// Room for any blob of a list. The name comes first in both forms of a blob.
union EntryBuffer {
    BYTE bytes[LargestEntryBytes] = {};
    WCHAR name[LargestEntryBytes / sizeof(WCHAR)];
    DWORD alignment;
};
static_assert(sizeof(EntryBuffer) == 528);

// Bytes of a blob that is a name and nothing else.
inline DWORD NameBytes(const WCHAR* name)
{
    return static_cast<DWORD>((wcslen(name) + 1) * sizeof(WCHAR));
}

// Bytes of the name in a blob with offsets: what the name takes, up to a multiple of 4.
inline DWORD SetEntryNameSize(const WCHAR* name)
{
    return (NameBytes(name) + 3) & ~DWORD{3};
}

// Where the item's stream begins in the data file, and one behind its last byte. `blob` is an EntryBuffer's bytes with
// an entry of a loaded set.
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

// Puts offsets behind the name that stands in `entry`. Returns the bytes of the blob.
inline DWORD SetEntryOffsets(EntryBuffer& entry, DWORD startOffset, DWORD endOffset)
{
    const DWORD nameSize = SetEntryNameSize(entry.name);
    std::memcpy(entry.bytes + nameSize, &startOffset, sizeof startOffset);
    std::memcpy(entry.bytes + nameSize + sizeof startOffset, &endOffset, sizeof endOffset);
    return nameSize + OffsetsBytes;
}

// Calls visit(const EntryBuffer&) for each blob of a list, in its order; nothing for a list that couldn't be made. The
// rules of a walk hold (item_list.h).
template <class Visit>
void ForEachEntry(ItemList* list, const Visit& visit)
{
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = list && list->First(entry.bytes, &length); more; more = list->Next(entry.bytes, &length))
        visit(entry);
}
