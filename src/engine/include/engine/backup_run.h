// backup_run.h - makes a new numbered set from what is marked, or from everything on the device.
#pragma once

#include "ce/types.h"

// `mode` of RunBackup. With selected items the run asks for the comment itself.
inline constexpr DWORD BackupListedItems = 1;
inline constexpr DWORD BackupSelectedItems = 2;

// Number of the set that the last run made. 0 if it ended before it had one.
extern DWORD gLastSetNumber;

// Backs up the items in the lists, and the registry if gRegistryMarked is 1. Leaves the lists and the flag unchanged.
// Only the low 16 bits of `mode` count. Afterwards gComment is the comment that was written to the set, with its date.
// The result is always 0. An item that failed is in the log and in the report of the host; the run itself ends without
// a message. On the main window's thread, which it blocks.
DWORD RunBackup(DWORD mode);

// Asks what to include, replaces the lists by what the whole device has of it, runs the backup and leaves the lists
// empty. 0 if the dialog was cancelled, which changes nothing; otherwise 1. Defined in full_backup.cpp.
DWORD RunFullBackup();

// The parts of the two calls above, for a run whose choices are made beforehand.

struct BackupTarget {
    WCHAR root[MAX_PATH];  // of the storage, without a trailing backslash; empty for the device itself
    DWORD replaced;        // the number of the set to replace; 0 for the first number that is free
};

// No run follows the listing, so the listing packs nothing for one.
inline bool gOnlyLists;

// Replaces the lists by what the whole device has of the kinds for which gFullFiles and so on are 1. full_backup.cpp
void ListDevice();

// Adds a file, or all files below a folder, to the list, as ListDevice does. The path begins with a backslash and
// doesn't end in one. What the list has already isn't added again. full_backup.cpp
void ListPath(const WCHAR* path);

// Puts the date in front of the user's text in gComment.
void ComposeComment();

// Makes the set of what is listed and marked, with the comment in gComment. `mode` as in RunBackup.
void BackUpTo(const BackupTarget& target, DWORD mode);
