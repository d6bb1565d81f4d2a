// set_state.h - declares the variables for the registry and for the comment. Together with the lists of item_kinds.h,
// these variables say what the user has marked, or what a loaded set contains.
//
// Only the main window's thread uses this file.
#pragma once

#include "set/item_kinds.h"
#include "set/set_entry.h"

inline constexpr DWORD CommentChars = 260;

// The registry's entry in a loaded set. gRegistryMarked is 1 if the next run includes the registry.
extern EntryBuffer gRegistryEntry;
extern DWORD gRegistryMarked;
extern DWORD gSavedRegistryMarked;  // gRegistryMarked as it was before the run

// The comment of the set, always terminated.
extern WCHAR gComment[CommentChars];

// Whether all lists are empty and the registry isn't marked.
bool NothingIsMarked();
