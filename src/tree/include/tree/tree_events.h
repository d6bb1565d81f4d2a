// tree_events.h - the tree's answers to the user: a click or a key toggles an item, an item that expands is filled, one
// that collapses is emptied.
#pragma once

#include "tree/tree_model.h"

// Handles each WM_NOTIFY of the main window by the code of its header. Always 0.
LRESULT TreeNotify(HWND window, WPARAM id, LPARAM header);

// Sets the images of the top items by their lists. Called by the main window's timer.
DWORD UpdateRootImages();

// Collapses "Files" and removes its items, so that they are listed again when it expands. Called after a command that
// may have changed them.
void ResetFilesRoot();
