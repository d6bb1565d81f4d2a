// list_file.h - a set's list file as the runs use it: written entry by entry, loaded as a whole (docs/format.md, "List
// file"). How its bytes are read is list_reader.h's.
#pragma once

#include "ce/types.h"

// A run makes every write of an entry, also after one that failed: each failure is told to `failed`, right behind the
// write, while the last error is its own. A short write is a failure too, whatever WriteFile said.
using WriteFailed = void (*)(void* context);

// Length of the comment, then the comment, with its terminator. 0 at the first write that fails.
BOOL WriteListHead(HANDLE list, const WCHAR* comment);

// What stands before an item's stream is copied: kind, flag, length of the name, name, start offset. Returns how many
// of the five writes failed. `failed` may be null.
DWORD WriteEntryHead(HANDLE list, BYTE kind, const WCHAR* name, DWORD startOffset, WriteFailed failed, void* context);

// What closes the entry. 1 if the whole of it was written.
BOOL WriteEntryEnd(HANDLE list, DWORD endOffset);

// Which entries stay. `kind` is ItemKindFile, ItemKindDatabase or, for whatever else stands in the file,
// ItemKindRegistry. The name of the registry's entry means nothing.
using EntryFilter = bool (*)(BYTE kind, const WCHAR* name, void* context);

// Replaces gFileList, gDatabaseList and gComment by what the list file holds; `keep` null keeps all. A registry entry
// that stays sets gRegistryMarked to 1 and gRegistryEntry, one that doesn't sets gRegistryMarked to 0; without any,
// gRegistryMarked is left alone.
//
// A damaged entry costs only itself: one whose name can't be used is left out, one that the end of the file cuts comes
// with the offsets 0 and 0, which name no stream. A list that lacks entries by its damage is reported as not restored.
// 0 if the file can't be opened, and then nothing is changed.
BOOL LoadList(const WCHAR* listPath, EntryFilter keep = nullptr, void* context = nullptr);

// The data file of a list: its path with "QDT" for the last three characters. A path of fewer than three becomes empty.
void DataPathOfList(WCHAR (&dataPath)[MAX_PATH], const WCHAR* listPath);
