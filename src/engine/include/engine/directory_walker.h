// directory_walker.h - the one way in which the program looks through folders.
#pragma once

#include "ce/types.h"

// Gets each entry's name and the folder that holds it, which ends in a backslash: one behind the other they are the
// full path, which may have more than 259 characters. 0 ends the listing of this folder; the walk goes on in its
// parent.
using WalkCallback = BOOL (*)(const WCHAR* name, const WCHAR* folder, UINT_PTR context);

// When a callback begins: the attributes of its entry as the search gave them, which GetFileAttributesW would only tell
// once more. Asking again for each file costs a full backup a good part of its time, and marking a folder half of it.
// A walk inside of the callback changes them.
extern DWORD gWalkedAttributes;

// Lists `root` (with its trailing backslash): all of it with a null pattern, otherwise what matches, and only at this
// level. A folder's contents come before the folder itself; one whose name begins with a point is not looked into.
// Returns the entries counted, here and below; a null callback counts alike.
// The main window's thread only.
DWORD WalkDirectory(const WCHAR* root, const WCHAR* pattern, BOOL recurse, BOOL foldersOnly, WalkCallback callback,
                    UINT_PTR context);

// Full path of an entry into `path`. 0 if it doesn't fit: then it is noted (paths_too_long.h).
BOOL JoinPath(WCHAR (&path)[MAX_PATH], const WCHAR* folder, const WCHAR* name);
