// item_marking.h - the mark of a single item, in its list and on the screen.
#pragma once

#include "tree/tree_model.h"

// Marks a file, a database or the registry, or takes its mark away; folders, top items and ROM files stay as they are.
// The folders above a file count along. Always 1; a null handle changes nothing.
DWORD ToggleItem(HTREEITEM item);

// Brings images back in line with counts, for `first` and its later siblings and what lies below unmarked folders.
DWORD RefreshMarks(HTREEITEM first);
