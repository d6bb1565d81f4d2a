// set_state.h - what is marked, or what a loaded set holds. The tree and the loader of a set write it, the runs read
// it.
//
// The main window's thread only.
#pragma once

#include "set/item_list.h"
#include "set/set_entry.h"

inline constexpr DWORD FileListId = 10002;
inline constexpr DWORD DatabaseListId = 10000;
inline constexpr DWORD CommentChars = 260;

// Plain names while the user marks, entries with offsets after a set was loaded. Null before the program has made them
// and when there was no memory for them.
extern ItemList* gFileList;
extern ItemList* gDatabaseList;

// The registry's entry in a loaded set; 1 in gRegistryMarked says that the registry belongs to the run.
extern EntryBuffer gRegistryEntry;
extern DWORD gRegistryMarked;
extern DWORD gSavedRegistryMarked;  // gRegistryMarked as it was before the run

// The comment of the set, always terminated.
extern WCHAR gComment[CommentChars];

// Destroys both lists, if they are there, and makes them anew, empty.
void RenewLists();
