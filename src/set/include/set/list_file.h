// list_file.h - writes a set's list file entry by entry, and loads a whole list file (docs/format.md, "List file").
// list_reader.h reads the bytes.
#pragma once

#include "ce/types.h"

// Called when the write of an entry's field has failed or has written too few bytes. GetLastError() is still the error
// of that write. The remaining fields of the entry are still written.
using WriteFailed = void (*)(void* context);

// Writes the length of the comment, then the comment. Both include the NUL. Returns 0 at the first write that fails.
BOOL WriteListHead(HANDLE list, const WCHAR* comment);

// Writes the five fields of an entry that are known before its stream is copied: kind, flag, length of the name, name,
// start offset. Returns how many of the writes failed. `failed` may be null.
DWORD WriteEntryHead(HANDLE list, BYTE kind, const WCHAR* name, DWORD startOffset, WriteFailed failed, void* context);

// Writes the last field of an entry. Returns 1 if the whole field was written.
BOOL WriteEntryEnd(HANDLE list, DWORD endOffset);

// A filter returns whether LoadList keeps an entry. If the kind in the file is unknown, LoadList passes
// ItemKindRegistry as `kind`. The name of the registry's entry has no meaning.
using EntryFilter = bool (*)(BYTE kind, const WCHAR* name, void* context);

// Replaces the lists and gComment by the content of the list file. If `keep` is null, all entries are kept. If the
// registry's entry is kept, gRegistryEntry is set and gRegistryMarked becomes 1. If it isn't kept, gRegistryMarked
// becomes 0. If the file has no registry entry, gRegistryMarked is unchanged.
//
// A damaged entry doesn't affect the other entries. An entry whose name can't be used is left out. An entry that is cut
// by the end of the file gets the offsets 0 and 0, and so has no stream. LoadList doesn't report such an entry. If its
// item is to be restored, this fails, and the restore reports the item. LoadList reports the list file as damaged in
// these cases:
// - The file ends within the comment or its length.
// - An entry is left out because of damage.
// - A name has a NUL before its last character.
// - The kind of an entry may be wrong.
// - The file can't be read to its end.
// - 1 or 2 bytes follow the last entry.
//
// Returns 0 if the file can't be opened. In that case nothing changes.
BOOL LoadList(const WCHAR* listPath, EntryFilter keep = nullptr, void* context = nullptr);

// Writes the path of the data file: the path of the list with "QDT" in place of the last three characters. The result
// is empty for a path of fewer than three characters.
void DataPathOfList(WCHAR (&dataPath)[MAX_PATH], const WCHAR* listPath);
