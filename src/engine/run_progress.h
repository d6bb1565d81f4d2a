// run_progress.h - the progress window of a run, and what both kinds of run count for it.
#pragma once

#include "ce/window.h"

class ItemList;

// Entries of a list; 0 for one that couldn't be made.
DWORD CountOf(ItemList* list);

// A window for `items` items, title and message being text `id`; null with no item. Above 1000 items the step is 0: the
// bar stands still, message and counter move on.
HWND OpenRunProgress(UINT id, DWORD items);

// Closes the window if there is one.
void CloseRunProgress(HWND& progress);
