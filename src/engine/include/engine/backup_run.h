// backup_run.h - makes a new numbered set from the marked items, or from everything on the device.
#pragma once

#include "ce/types.h"

// The values of `mode`. BackupListedItems: a full backup has filled the lists of items (set/item_kinds.h), and the
// user's comment is in gComment. BackupSelectedItems: the user chose the items. In this mode RunBackup asks for the
// comment, and a file that is deleted before the backup reads it is reported as not stored.
inline constexpr DWORD BackupListedItems = 1;
inline constexpr DWORD BackupSelectedItems = 2;

// The number of the set that the last backup made. 0 if it made no set.
extern DWORD gLastSetNumber;

// Lets the user choose a storage. Backs up the items in the lists (set/item_kinds.h) to it, and the registry if
// gRegistryMarked is 1. Leaves the lists and gRegistryMarked unchanged. If nothing is marked, shows a message and makes
// no set. Only the low 16 bits of `mode` are used. After a backup gComment is the comment of the set, which begins with
// the date. The result is always 0. Each item that failed is reported by ReportItem (ce/outcome.h), and RunBackup shows
// no message about it. RunBackup must be called on the main window's thread, and blocks this thread.
DWORD RunBackup(DWORD mode);

// Asks which kinds of items to include. Empties gFileList and gDatabaseList (set/item_kinds.h) and fills them with the
// items of these kinds on the device (ListDevice). Then runs the backup and leaves the lists empty. If the dialog was
// cancelled, returns 0 and changes nothing. If the job was stopped while the items were listed, returns 0 and leaves
// the lists empty. Otherwise returns 1. Defined in full_backup.cpp.
DWORD RunFullBackup();

// src/command uses the following declarations. Its backups show no dialogs, because the options of the command choose
// the items, the comment and the storage.

struct BackupTarget {
    WCHAR root[MAX_PATH];  // root of the storage, without a trailing backslash; empty for the device itself
    DWORD replaced;        // the number of the set to replace; 0: the first number that is free or may be replaced
};

// True if the items are only listed and no backup follows. In that case tiny files aren't packed while they are listed
// (kept_streams.h).
inline bool gOnlyLists;

// Empties the lists. Then lists the files of the device if gFullFiles is 1, and its databases if gFullDatabases is 1.
// Leaves out files in ROM, files directly in a card's folder, files that can't be opened or whose paths are too long,
// and files below folders that a walk doesn't enter (directory_walker.h). Also leaves out the list files, data files
// and checksum files of sets, and the databases of the system. Defined in full_backup.cpp.
void ListDevice();

// Adds a file, or all files below a folder, to gFileList. The path begins with a backslash and doesn't end in one. A
// file that the list already contains isn't added again. Below a folder, ListPath leaves out the same files as
// ListDevice, with one exception: ListDevice leaves out the files directly in a card's folder, but ListPath includes
// them. Defined in full_backup.cpp.
void ListPath(const WCHAR* path);

// Puts the date in front of the user's text in gComment.
void ComposeComment();

// Makes a set of the items in the lists, and of the registry if gRegistryMarked is 1, with the comment in gComment.
// Doesn't ask for the comment or the storage.
void BackUpTo(const BackupTarget& target, DWORD mode);
