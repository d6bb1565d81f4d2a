// tree_events.h - what ties the tree to the user: clicks and keys toggle items, expanding lists, collapsing empties.
#pragma once

#include "tree/tree_model.h"

// Every WM_NOTIFY of the main window; goes by the notification's code alone. Always 0: nothing is refused.
LRESULT TreeNotify(HWND window, WPARAM id, LPARAM header);

// Lets the images of "Databases" and "Files" follow their lists. On the main window's timer.
DWORD UpdateRootImages();

// Drops what is listed below "Files", so that it is listed anew at its next expansion: after a command that makes it
// stale.
void ResetFilesRoot();
