// paths_too_long.h - the entries that a walk leaves out because their paths have more than 259 characters. A message
// reports them at the end of a full backup, or after a folder was marked.
#pragma once

#include "ce/types.h"

struct PathsTooLong {
    DWORD count;
    BOOL areItems;              // each is an item of a backup and reported as not stored
    WCHAR first[2 * MAX_PATH];  // room for any folder and any name in it
};

// Result of the latest walk. Cleared before a walk whose result is used.
extern PathsTooLong gPathsTooLong;

void NotePathTooLong(const WCHAR* folder, const WCHAR* name);

// Shows a message box with their number and the first of them. Does nothing if there are none.
void ShowPathsTooLong(const PathsTooLong& left);
