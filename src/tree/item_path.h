// item_path.h - from an item of the tree to the path that it stands for.
#pragma once

#include "tree/tree_model.h"

// A folder as the walker takes it, for `item` and all items above it: no leading backslash, one at the end ("A\B\"),
// and "\" for "Files". 0 if an item can't be read or the path doesn't fit; `path` is empty then.
BOOL FolderPathOfItem(HTREEITEM item, WCHAR (&path)[MAX_PATH]);

// The key of a file in gFileList: a leading backslash and none at the end ("\A\B\c.txt").
BOOL FilePathOfItem(HTREEITEM item, WCHAR (&path)[MAX_PATH]);

// The same key from what a walk delivers, whose folder has a leading backslash only if it is the root. 0 if it doesn't
// fit.
BOOL FullPathOfEntry(WCHAR (&path)[MAX_PATH], const WCHAR* folder, const WCHAR* name);
