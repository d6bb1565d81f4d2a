// paths_too_long.h - what a walk couldn't take along because its path has more than 259 characters: a backup tool must
// not be silent about that.
#pragma once

#include "ce/types.h"

struct PathsTooLong {
    DWORD count;
    BOOL areItems;          // of a backup: each is reported as one that isn't in the set
    WCHAR first[MAX_PATH];  // as far as it fits
};

// Of the walk that runs, or ran last. Whoever begins a walk that counts clears it.
extern PathsTooLong gPathsTooLong;

void NotePathTooLong(const WCHAR* folder, const WCHAR* name);

// A message box with how many and the first of them; nothing if there are none.
void TellPathsTooLong(const PathsTooLong& left);
