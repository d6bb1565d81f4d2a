// folder_marking.h - marks or unmarks all files below the selected folder.
#pragma once

#include "ce/types.h"

// `mark` 1 marks, 0 unmarks. What lies below at this moment goes into gFileList or out of it, listed or not; ROM files
// and what the filter by attribute or date hides are left alone. Folders themselves are never in the list. 0 if the
// selected item is no folder, and then nothing changes; otherwise 1.
DWORD MarkFolder(DWORD mark);
