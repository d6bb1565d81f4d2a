// list_reader.h - reads a list file entry by entry, whole or damaged (docs/format.md, "List file").
//
// The memory that the reader uses doesn't grow with the file. If a text is longer than its buffer, the reader skips the
// rest of the text and continues after it. If the file ends within that rest, the list ends too.
#pragma once

#include "set/buffered_reader.h"
#include "set/set_entry.h"
#include "set/set_state.h"

#include "ce/types.h"

// Faults of the head or of an entry. They can be combined.
enum ListFault : DWORD {
    TextEmpty = 1,          // the length is 0, so the text doesn't even have a NUL
    TextTooLong = 2,        // a length above 260
    TextNotTerminated = 4,  // there is no NUL
    TextEndsEarly = 8,      // there is a NUL before the last character
    CutByEndOfFile = 16,
};

// After a failed read (readError) the reader treats the list as ended.
struct ListReader : BufferedReader {
    // Set at the end of the list: the number of bytes after the last entry, if they are too few for the beginning of
    // another entry (1 or 2). Otherwise 0.
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

// Reads the comment. A longer one is cut to 259 characters. The result is always terminated. Returns ListFault bits.
DWORD ReadListHead(ListReader& reader, WCHAR (&comment)[CommentChars]);

// Reads the next entry, even if it is damaged. Returns false at the end of the list.
bool ReadListEntry(ListReader& reader, ListEntry& entry);

// Skips entries, beginning with the next one. Stops before the first entry that isn't completely in the buffer in front
// of `stop`. Also stops before an entry of the registry, and before an entry whose name doesn't have 1 to 260
// characters. ReadListEntry then reads the entry before which this call stopped. Returns the number of skipped entries.
DWORD SkipListEntries(ListReader& reader, const BYTE* stop);

// Whether the entry's name can be used. The registry's name has no meaning, so it can always be used. Any other name
// must have 1 to 260 characters. It must also have a NUL, unless the end of the file cuts the name.
bool NameIsUsable(const ListEntry& entry);
