// restore_run.h - brings the items of a set back to the device.
#pragma once

#include "ce/types.h"

// `mode`, of which only the low 16 bits count.
inline constexpr DWORD RestoreFull = 1;
inline constexpr DWORD RestorePartial = 2;

// Searches the device and its cards for list files, lets the user choose one and restores its set. 0 if there is no
// list file, otherwise 1. gRegistryMarked is unchanged. Once a list was loaded, the item lists are empty at the end.
DWORD RunRestore(DWORD mode);

// As RestoreSet, but doesn't ask the user what to restore. `wholeSet`: the lists have all entries of the list file, so
// data without an entry is reported.
void RestoreLists(const WCHAR* dataPath, const WCHAR* listPath, bool wholeSet);

// Asks the user, then restores the items in the lists from the data file. gOptions.restoreMode decides about files that
// exist. 0 if the dialog was cancelled or nothing is to be restored; otherwise 1, also if the data file can't be
// opened. An item that failed is in the report of the host. The lists and gRegistryMarked stay as the dialog left them.
// On the main window's thread, which it blocks.
DWORD RestoreSet(const WCHAR* dataPath, const WCHAR* listPath, DWORD mode);
