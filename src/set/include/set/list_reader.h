// list_reader.h - reads a list file entry by entry, whole or damaged (docs/format.md, "List file").
//
// The memory doesn't grow with the file. A text that is longer than its buffer is skipped, as far as the file has its
// bytes, and reading continues after it.
#pragma once

#include "set/buffered_reader.h"
#include "set/set_entry.h"
#include "set/set_state.h"

#include "ce/types.h"

// Faults of the head or an entry, to be combined.
enum ListFault : DWORD {
    TextEmpty = 1,          // a length of 0: there is not even a NUL
    TextTooLong = 2,        // a length above 260
    TextNotTerminated = 4,  // there is no NUL
    TextEndsEarly = 8,      // there is a NUL before the last character
    CutByEndOfFile = 16,
};

// After a failed read (readError) the list counts as ended.
struct ListReader : BufferedReader {
    DWORD bytesAfterEntries;  // at the end: 1 or 2 bytes that are too few to begin another entry, otherwise 0
};

struct ListEntry {
    BYTE kind;
    BYTE flag;
    DWORD nameLength;  // characters, as it is in the file
    DWORD faults;      // ListFault bits
    DWORD startOffset;
    DWORD endOffset;   // both 0 if the end of the file cuts the entry
    EntryBuffer blob;  // the name, always terminated, and the offsets
    DWORD blobBytes;
};

// Begins to read `file`, which is open for reading and at its start.
void StartListReader(ListReader& reader, HANDLE file);

// Reads the comment. It is cut to 259 characters if it is longer, and always terminated. Returns ListFault bits.
DWORD ReadListHead(ListReader& reader, WCHAR (&comment)[CommentChars]);

// Reads the next entry, also a damaged one. False at the end.
bool ReadListEntry(ListReader& reader, ListEntry& entry);

// Skips the next entries without copying them, as long as they lie wholly before `stop` in the buffer. Stops at the
// registry and at an entry whose name has not 1 to 260 characters, which ReadListEntry reads. Returns how many it
// skipped.
DWORD SkipListEntries(ListReader& reader, const BYTE* stop);

// Whether the entry's name can be used. The registry's always can, since it has no meaning. Any other must have a NUL
// and at most 260 characters, unless it is cut by the end of the file.
bool NameIsUsable(const ListEntry& entry);
