// item_path.h - makes the paths of the files and folders in the tree.
#pragma once

#include "tree/tree_model.h"

// Writes the path of a folder as MarkFolder and ListChildren use it: without a leading backslash and with one at the
// end ("A\B\"). The path of "Files" is "\". Returns 0 with an empty `path` if an item can't be read or the path doesn't
// fit.
BOOL FolderPathOfItem(HTREEITEM item, WCHAR (&path)[MAX_PATH]);

// Writes the path of a file as gFileList has it: with a leading backslash and none at the end ("\A\B\c.txt"). Returns 0
// with an empty `path` if an item can't be read or the path doesn't fit.
BOOL FilePathOfItem(HTREEITEM item, WCHAR (&path)[MAX_PATH]);

// Writes the path of a file or folder with a leading backslash, as FilePathOfItem does. `folder` and `name` are the
// arguments that a walk has passed to its WalkCallback. The root of the walk must come from FolderPathOfItem. The path
// of "Files" is "\". If this is the root, `folder` already has the leading backslash. Otherwise this function adds it.
// Returns 0 if the path doesn't fit.
BOOL FullPathOfEntry(WCHAR (&path)[MAX_PATH], const WCHAR* folder, const WCHAR* name);
