// item_path.h - the paths of the tree's items.
#pragma once

#include "tree/tree_model.h"

// The path of a folder for the walker: no leading backslash, one at the end ("A\B\"), and "\" for "Files". 0 with an
// empty `path` if an item can't be read or the path doesn't fit.
BOOL FolderPathOfItem(HTREEITEM item, WCHAR (&path)[MAX_PATH]);

// The path of a file as it is in gFileList: a leading backslash and none at the end ("\A\B\c.txt"). 0 like above.
BOOL FilePathOfItem(HTREEITEM item, WCHAR (&path)[MAX_PATH]);

// The same path, from the arguments of a walk's callback, whose folder has a leading backslash only if it is the root.
// 0 if it doesn't fit.
BOOL FullPathOfEntry(WCHAR (&path)[MAX_PATH], const WCHAR* folder, const WCHAR* name);
