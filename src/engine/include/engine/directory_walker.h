// directory_walker.h - lists the content of folders. One call of WalkDirectory is a walk. It lists a folder and, if the
// caller wants it, the subfolders.
#pragma once

#include "ce/types.h"

// Called for each file and subfolder of a folder. `folder` ends in a backslash, so that `folder` followed by `name` is
// the path of the file or subfolder. This path can have more than 259 characters. `attributes` are those that the
// search of the folder has returned. So a callback needn't call GetFileAttributesW for each file, which would take much
// of the time of a full backup, and half of the time of marking a folder. If the callback returns 0, the walk leaves
// out the rest of this folder and continues in the parent folder.
using WalkCallback = BOOL (*)(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR context);

// Further data of the file or folder for which the callback is called.
struct WalkedEntry {
    std::uint64_t bytes;  // 0 for a folder
    FILETIME written;
    DWORD folderAttributes;  // of the containing folder; if that is the walk's root, only FILE_ATTRIBUTE_DIRECTORY
};
extern WalkedEntry gWalkedEntry;

// Lists the files and subfolders of `root`, a path that ends in a backslash, and calls `callback` for each. If
// `pattern` isn't null, the walk lists only those names in `root` that match the pattern. If `recurse` is true, the
// walk enters each listed folder whose name doesn't begin with a dot, and lists all names in it. It calls the callback
// for the content of such a folder before it calls the callback for the folder itself. If `foldersOnly` is true, files
// are left out. If `callback` is null, the walk only counts. Returns the number of listed files and folders, including
// those in subfolders. If the path of a folder is too long to be searched, the walk doesn't enter the folder and
// records it in gPathsTooLong (paths_too_long.h). Must be called on the main window's thread.
DWORD WalkDirectory(const WCHAR* root, const WCHAR* pattern, BOOL recurse, BOOL foldersOnly, WalkCallback callback,
                    UINT_PTR context);

// The path, with a backslash at its end, of a folder that WalkDirectory doesn't enter. If the root of the walk is this
// folder itself, WalkDirectory lists its content nevertheless. Null if there is no such folder.
extern const WCHAR* gFolderLeftOut;

// Returns the size of a file, even if the file is in use or can't be read. Returns 0 if the size can't be found out.
std::uint64_t BytesOfFile(const WCHAR* path);

// Writes `folder` followed by `name` into `path` and returns 1. If they don't fit, returns 0 and leaves `path`
// unchanged.
BOOL JoinPath(WCHAR (&path)[MAX_PATH], const WCHAR* folder, const WCHAR* name);
