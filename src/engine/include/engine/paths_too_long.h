// paths_too_long.h - notes the files and folders that a walk leaves out because their paths have more than 259
// characters. A message reports them at the end of a full backup, or after a folder was marked.
#pragma once

#include "ce/types.h"

struct PathsTooLong {
    DWORD count;
    BOOL areItems;              // they are items of a backup, and each is reported as not stored
    WCHAR first[2 * MAX_PATH];  // the first path; has room for any folder and any name in it
};

// What the latest walk left out. A caller that uses this variable clears it before its walk.
extern PathsTooLong gPathsTooLong;

void NotePathTooLong(const WCHAR* folder, const WCHAR* name);

// Shows a message box with the number of paths in `left` and the first path. Does nothing if the number is 0.
void ShowPathsTooLong(const PathsTooLong& left);
