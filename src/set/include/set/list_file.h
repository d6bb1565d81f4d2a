// list_file.h - writes a set's list file entry by entry and loads one as a whole (docs/format.md, "List file").
// list_reader.h reads its bytes.
#pragma once

#include "ce/types.h"

// Called right after each write of an entry that failed or was short, while the last error is still that of the write.
// The writes after it are still made.
using WriteFailed = void (*)(void* context);

// Writes the length of the comment and the comment, both with its NUL. 0 at the first write that fails.
BOOL WriteListHead(HANDLE list, const WCHAR* comment);

// Writes the five fields of an entry that are known before its stream is copied: kind, flag, length of the name, name,
// start offset. Returns how many of the writes failed. `failed` may be null.
DWORD WriteEntryHead(HANDLE list, BYTE kind, const WCHAR* name, DWORD startOffset, WriteFailed failed, void* context);

// Writes the last field of an entry. 1 if all of it was written.
BOOL WriteEntryEnd(HANDLE list, DWORD endOffset);

// Decides which entries are kept. A `kind` in the file that is unknown is passed as ItemKindRegistry. The name of the
// registry's entry has no meaning.
using EntryFilter = bool (*)(BYTE kind, const WCHAR* name, void* context);

// Replaces the lists and gComment by what the list file has; `keep` null keeps all entries. A registry entry that is
// kept sets gRegistryEntry and sets gRegistryMarked to 1, one that isn't kept sets gRegistryMarked to 0. Without a
// registry entry gRegistryMarked is unchanged.
//
// A damaged entry doesn't affect the others. One whose name can't be used is left out. One that the end of the file
// cuts gets the offsets 0 and 0, and so has no stream. A list that lacks entries because of damage is reported as not
// restored. 0 if the file can't be opened, and then nothing is changed.
BOOL LoadList(const WCHAR* listPath, EntryFilter keep = nullptr, void* context = nullptr);

// The path of the data file: that of the list with "QDT" in place of the last three characters. Empty for a path of
// fewer than three characters.
void DataPathOfList(WCHAR (&dataPath)[MAX_PATH], const WCHAR* listPath);
