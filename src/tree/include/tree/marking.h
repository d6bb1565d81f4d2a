// marking.h - marks and unmarks items in the lists and in the tree.
#pragma once

#include "tree/tree_model.h"

// Marks a file, a database or the registry, or unmarks it if it is marked. Folders, top items and files in ROM don't
// change. The folders above a file count the mark. Always 1; a null handle changes nothing.
DWORD ToggleItem(HTREEITEM item);

// Marks (`mark` 1) or unmarks (0) all files below the selected folder, whether the tree lists them or not: each is
// added to gFileList or removed from it. Files in ROM and those that the filter by attribute or date hides don't
// change. Folders are never in the list. 0 if the selected item isn't a folder, and then nothing changes; otherwise 1.
DWORD MarkFolder(DWORD mark);

// Sets the images of `first` and its later siblings by their counts, and of the items below folders that have no marks.
DWORD RefreshMarks(HTREEITEM first);
