// backup_run.h - makes a new numbered set from the marked items, or from everything on the device.
#pragma once

#include "ce/types.h"

// The values of `mode` of RunBackup. With BackupSelectedItems the run asks for the comment itself.
inline constexpr DWORD BackupListedItems = 1;
inline constexpr DWORD BackupSelectedItems = 2;

// The number of the set that the last run made. 0 if the run made no set.
extern DWORD gLastSetNumber;

// Backs up the items in the lists, and the registry if gRegistryMarked is 1. Leaves the lists and the flag unchanged.
// Only the low 16 bits of `mode` are used. Afterwards gComment is the comment that was written to the set, with its
// date. The result is always 0. The log and the report of the host name each item that failed. The run itself ends
// without a message. RunBackup must be called on the main window's thread, and blocks this thread.
DWORD RunBackup(DWORD mode);

// Asks which kinds of items to include, replaces the lists by all items of these kinds on the device, runs the backup
// and leaves the lists empty. If the dialog was cancelled, returns 0 and changes nothing. If the job was stopped during
// the listing, returns 0 and leaves the lists empty. Otherwise returns 1. Defined in full_backup.cpp.
DWORD RunFullBackup();

// The following calls are parts of the two calls above. A command, whose options choose the items, the comment and the
// storage, uses them directly.

struct BackupTarget {
    WCHAR root[MAX_PATH];  // root of the storage, without a trailing backslash; empty for the device itself
    DWORD replaced;        // the number of the set to replace; 0 for the first number that is free or may be replaced
};

// True if the items are only listed and no run follows. In that case the listing packs no files.
inline bool gOnlyLists;

// Replaces the lists by all files and databases of the device, as far as gFullFiles and gFullDatabases include them.
// Defined in full_backup.cpp.
void ListDevice();

// Adds a file, or all files below a folder, to gFileList. The path begins with a backslash and doesn't end in one. A
// file that is in the list already isn't added again. Below a folder the call leaves out files in ROM and files of
// sets, as ListDevice does. Unlike ListDevice it includes files directly in a card. Defined in full_backup.cpp.
void ListPath(const WCHAR* path);

// Puts the date in front of the user's text in gComment.
void ComposeComment();

// Makes a set of the items in the lists, and of the registry if it is marked, with the comment in gComment. `mode` is
// the same as in RunBackup.
void BackUpTo(const BackupTarget& target, DWORD mode);
