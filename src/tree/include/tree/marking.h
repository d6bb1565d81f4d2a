// marking.h - marks and unmarks items in the lists and in the tree.
#pragma once

#include "tree/tree_model.h"

// Marks a file, a database or the registry, or unmarks it if it is marked. Folders, the top items "Files" and
// "Databases", and files in ROM don't change. The folders above a file get new MarkCounts (tree_model.h). Always
// returns 1. A null handle changes nothing.
DWORD ToggleItem(HTREEITEM item);

// Marks (`mark` 1) or unmarks (`mark` 0) all files below the selected folder, even those that the tree doesn't list.
// Adds each file to gFileList when it is marked, and removes it when it is unmarked. Files in ROM, and files that the
// filter by attribute or date hides, don't change. Folders are never in gFileList. If the selected item isn't a folder,
// or is the top item "Files", returns 0 and changes nothing. Otherwise returns 1.
DWORD MarkFolder(DWORD mark);

// Sets the pictures of the files and folders among `first` and its later siblings. The picture of a file shows whether
// its MarkCount is 0. If the MarkCount of a folder is 0, the folder gets the picture of an unmarked folder, and the
// pictures of the items below it are set in the same way. Any other folder, and the items below it, keep their
// pictures. Always returns 1.
DWORD RefreshMarks(HTREEITEM first);
