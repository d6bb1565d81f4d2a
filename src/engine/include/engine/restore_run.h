// restore_run.h - brings the items of a loaded set back to their places.
#pragma once

#include "ce/types.h"

inline constexpr DWORD RestoreFull = 1;
inline constexpr DWORD RestorePartial = 2;

// Asks first, then restores what the lists hold from the data file, under gOptions.restoreMode for files that exist.
// 0 when the dialog was cancelled or nothing is to be restored, otherwise 1, also when the data file can't be opened.
// The lists and gRegistryMarked stay as the dialog left them. On the main window's thread, which it blocks.
DWORD RestoreSet(const WCHAR* dataPath, const WCHAR* listPath, DWORD mode);
