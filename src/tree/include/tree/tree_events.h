// tree_events.h - handles the notifications that the tree view sends. A click or a key marks or unmarks an item. When
// an item expands, the items below it are added to the tree. When it collapses, the items below it are removed.
#pragma once

#include "tree/tree_model.h"

// Handles a WM_NOTIFY message of the main window. `header` is the address of the notification. Always returns 0.
LRESULT TreeNotify(HWND window, WPARAM id, LPARAM header);

// Sets the pictures of the top items "Files" and "Databases". Each picture shows whether the list of that kind has
// entries. The main window's timer calls this function.
DWORD UpdateRootImages();

// Collapses "Files" and removes the items below it, so that the next expansion lists the files again. Called after a
// command that may have changed the files or the filter.
void ResetFilesRoot();
