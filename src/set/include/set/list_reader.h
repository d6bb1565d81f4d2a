// list_reader.h - reads a list file entry by entry (docs/format.md, "List file"). The file may be damaged.
//
// The memory that the reader uses doesn't grow with the file. If a text is longer than its buffer, the reader skips the
// rest of the text and continues after it. If the file ends within that rest, no further entry can be read.
#pragma once

#include "set/buffered_reader.h"
#include "set/set_entry.h"
#include "set/set_state.h"

#include "ce/types.h"

// Faults of the head or of an entry. They can be combined.
enum ListFault : DWORD {
    TextEmpty = 1,          // the length, which includes the NUL, is 0
    TextTooLong = 2,        // the length is above 260 characters
    TextNotTerminated = 4,  // there is no NUL
    TextEndsEarly = 8,      // there is a NUL before the last character
    CutByEndOfFile = 16,
};

// After a failed read (readError) the reader treats the list as ended.
struct ListReader : BufferedReader {
    // Set at the end of the list. If 1 or 2 bytes follow the last entry, which are too few to begin another entry, this
    // is their number. Otherwise 0. If it is 1, the set is probably unfinished (docs/format.md, "Unfinished sets").
    DWORD bytesAfterEntries;
};

struct ListEntry {
    BYTE kind;
    BYTE flag;
    DWORD nameLength;  // in characters, as the file says
    DWORD faults;      // ListFault bits
    DWORD startOffset;
    DWORD endOffset;   // both offsets are 0 if the end of the file cuts the entry
    EntryBuffer blob;  // the name, always terminated, and the offsets
    DWORD blobBytes;
};

// Prepares to read `file`. It must be open for reading, and its current position must be 0.
void StartListReader(ListReader& reader, HANDLE file);

// Reads the comment. Stores at most its first 259 characters, or 258 if the cut would separate a surrogate pair. The
// result is always terminated. Returns ListFault bits.
DWORD ReadListHead(ListReader& reader, WCHAR (&comment)[CommentChars]);

// Reads the next entry, even if it is damaged. Returns false at the end of the list.
bool ReadListEntry(ListReader& reader, ListEntry& entry);

// Skips entries, beginning with the next one, without reading them. `stop` points into reader.buffer or to the end of
// its bytes. The call stops before the first entry to which one of these conditions applies: it ends after `stop`, its
// kind is ItemKindRegistry, or the length of its name isn't from 1 to 260. The next ReadListEntry reads that entry.
// Returns the number of skipped entries.
DWORD SkipListEntries(ListReader& reader, const BYTE* stop);

// Whether the entry's name can be used. The registry's name has no meaning, so it can always be used. The length of any
// other name must be 1 to 260, unless the end of the file cuts the length field. The name must also have a NUL, unless
// the end of the file cuts the name.
bool NameIsUsable(const ListEntry& entry);
