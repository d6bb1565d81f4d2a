// directory_walker.h - lists folders. The program lists them in no other way.
#pragma once

#include "ce/types.h"

// Called for each entry. `folder` is the folder that holds it and ends in a backslash, so that `folder` followed by
// `name` is the full path. That can have more than 259 characters. `attributes` are those that the search returned: a
// call of GetFileAttributesW for each file would cost a full backup much of its time, and the marking of a folder half
// of it. A result of 0 ends the listing of this folder, and the walk continues in its parent.
using WalkCallback = BOOL (*)(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR context);

// More of the entry for which the callback is called.
struct WalkedEntry {
    std::uint64_t bytes;  // 0 for a folder
    FILETIME written;
};
extern WalkedEntry gWalkedEntry;

// Lists `root`, which ends in a backslash. With a pattern it lists the entries that match, at this level only; with
// null all entries. `recurse` walks into the folders among them, except those whose names begin with a point, and calls
// the callback for a folder's content before the folder itself. `foldersOnly` skips files. Returns the number of
// entries, those of the subfolders included. A null callback only counts. A folder whose path is too long to be
// searched is noted (paths_too_long.h). The main window's thread only.
DWORD WalkDirectory(const WCHAR* root, const WCHAR* pattern, BOOL recurse, BOOL foldersOnly, WalkCallback callback,
                    UINT_PTR context);

// A folder that no walk enters, with a backslash at its end; null for none.
extern const WCHAR* gFolderLeftOut;

// The size of a file, also of one that is in use or can't be read; 0 if it can't be found out.
std::uint64_t BytesOfFile(const WCHAR* path);

// Writes `folder` followed by `name` into `path`. 0 if they don't fit: then `path` is unchanged.
BOOL JoinPath(WCHAR (&path)[MAX_PATH], const WCHAR* folder, const WCHAR* name);
