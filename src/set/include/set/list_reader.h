// list_reader.h - the bytes of a list file, entry by entry, whatever state they are in (docs/format.md, "List file").
//
// Memory doesn't grow with the file, and lengths in it are never trusted: a text that is longer than its buffer is
// stepped over by the bytes that the file really has, and reading goes on behind it.
#pragma once

#include "set/buffered_reader.h"
#include "set/set_entry.h"
#include "set/set_state.h"

#include "ce/types.h"

// What is wrong with the head or an entry; several can be.
enum ListFault : DWORD {
    TextEmpty = 1,          // a length of 0: not even a terminator
    TextTooLong = 2,        // a length above 260
    TextNotTerminated = 4,  // its last character is no NUL, and none stands before
    TextEndsEarly = 8,      // a NUL stands before its last character
    CutByEndOfFile = 16,
};

// After a failed read (readError) the list counts as ended.
struct ListReader : BufferedReader {
    DWORD bytesBehindEntries;  // at the end: 1 or 2 bytes that are too few to begin another entry, otherwise 0
};

struct ListEntry {
    BYTE kind;
    BYTE flag;
    DWORD nameLength;  // characters, as the file tells
    DWORD faults;      // ListFault bits
    DWORD startOffset;
    DWORD endOffset;   // both 0 if the end of the file cuts the entry
    EntryBuffer blob;  // the name, always terminated, and the offsets
    DWORD blobBytes;
};

// Begins with a file that is open for reading and stands at its start.
void StartListReader(ListReader& reader, HANDLE file);

// Takes the comment: cut to 259 characters if it is longer, always terminated. Returns ListFault bits.
DWORD ReadListHead(ListReader& reader, WCHAR (&comment)[CommentChars]);

// Takes the next entry, whole or not. False at the end.
bool ReadListEntry(ListReader& reader, ListEntry& entry);

// Whether the entry's name can be used: for a file or a database it must be there, terminated and within 260
// characters, unless the end of the file is what is missing. The registry's name means nothing.
bool NameIsUsable(const ListEntry& entry);
