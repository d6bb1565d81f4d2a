// paths_too_long.h - records the files and folders that a walk (directory_walker.h) leaves out because their paths are
// too long for the calls of the platform. A message reports them at the end of a full backup, or after a folder was
// marked.
#pragma once

#include "ce/types.h"

struct PathsTooLong {
    DWORD count;
    BOOL areItems;              // the paths belong to a backup: each is reported as not stored
    WCHAR first[2 * MAX_PATH];  // the first path; has room for any folder and any name in it
};

// The paths that walks have left out. A caller that uses this variable clears it before its walk.
extern PathsTooLong gPathsTooLong;

void NotePathTooLong(const WCHAR* folder, const WCHAR* name);

// Shows a message box with the number of paths in `left` and the first path. Does nothing if the number is 0.
void ShowPathsTooLong(const PathsTooLong& left);
