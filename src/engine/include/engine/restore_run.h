// restore_run.h - brings the items of a set back to the device.
#pragma once

#include "ce/types.h"

// The values of `mode`. Only the low 16 bits of `mode` are used.
inline constexpr DWORD RestoreFull = 1;
inline constexpr DWORD RestorePartial = 2;

// Searches the device and its cards for list files, lets the user choose one and restores its set. Returns 0 if there
// is no list file, otherwise 1, even if the user cancels. Afterwards gRegistryMarked has its old value. If a list was
// loaded, the item lists are empty afterwards.
DWORD RunRestore(DWORD mode);

// Restores the items in the lists as RestoreSet does, but doesn't ask the user what to restore. `wholeSet` is true if
// the lists have all entries of the list file. In that case the list file is reported as damaged if the data file is
// longer than the largest end offset of the entries.
void RestoreLists(const WCHAR* dataPath, const WCHAR* listPath, bool wholeSet);

// Shows the dialog of a restore, then restores the items in the lists from the data file. Before this call, LoadList
// must have filled the lists. gOptions.restoreMode decides whether files that exist on the device are replaced. Returns
// 0 if the dialog was cancelled or nothing is to be restored. Otherwise returns 1, even if the data file can't be
// opened. Each item that failed is reported by ReportItem (ce/outcome.h). The lists and gRegistryMarked stay as the
// dialog left them. RestoreSet must be called on the main window's thread, and blocks this thread.
DWORD RestoreSet(const WCHAR* dataPath, const WCHAR* listPath, DWORD mode);
