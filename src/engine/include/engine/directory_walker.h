// directory_walker.h - lists folders. All parts of the program list folders by these functions.
#pragma once

#include "ce/types.h"

// Called for each file and subfolder of a folder. `folder` ends in a backslash, so that `folder` followed by `name` is
// the full path. This path can have more than 259 characters. `attributes` are those that the search has returned. The
// walk doesn't call GetFileAttributesW for each file. These calls would take much of the time of a full backup, and
// half of the time of marking a folder. A result of 0 ends the listing of this folder, and the walk continues in the
// parent folder.
using WalkCallback = BOOL (*)(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR context);

// Further data of the file or folder for which the callback is called.
struct WalkedEntry {
    std::uint64_t bytes;  // 0 for a folder
    FILETIME written;
};
extern WalkedEntry gWalkedEntry;

// Lists the files and subfolders of `root`, a path that ends in a backslash, and calls `callback` for each. If
// `pattern` isn't null, the walk lists only names in `root` that match the pattern. If `recurse` is true, the walk
// enters each listed folder whose name doesn't begin with a point. It calls the callback for the content of such a
// folder before it calls it for the folder. If `foldersOnly` is true, files are left out. If `callback` is null, the
// walk only counts. Returns the number of listed files and folders, including those in subfolders. A folder whose path
// is too long to be searched is noted (paths_too_long.h). Must be called on the main window's thread.
DWORD WalkDirectory(const WCHAR* root, const WCHAR* pattern, BOOL recurse, BOOL foldersOnly, WalkCallback callback,
                    UINT_PTR context);

// A folder that no walk enters, with a backslash at its end; null for none.
extern const WCHAR* gFolderLeftOut;

// Returns the size of a file, even if the file is in use or can't be read. Returns 0 if the size can't be found out.
std::uint64_t BytesOfFile(const WCHAR* path);

// Writes `folder` followed by `name` into `path`. If they don't fit, returns 0 and leaves `path` unchanged.
BOOL JoinPath(WCHAR (&path)[MAX_PATH], const WCHAR* folder, const WCHAR* name);
