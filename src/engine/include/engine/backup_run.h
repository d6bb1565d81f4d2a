// backup_run.h - turns what the lists hold into a new numbered set.
#pragma once

#include "ce/types.h"

// Who calls: with selected items the run asks for the comment itself.
inline constexpr DWORD BackupListedItems = 1;
inline constexpr DWORD BackupSelectedItems = 2;

// Number of the set that the last run made; 0 if it ended before it had one.
extern DWORD gLastSetNumber;

// One run, from its first check to its closing, on the main window's thread, which it blocks. Only the low 16 bits of
// `mode` count. The lists and gRegistryMarked are left as they were; gComment holds the set's composed comment.
// Always 0: a failed item is told in the log alone, and a good run ends in silence.
DWORD RunBackup(DWORD mode);
