// run_progress.h - the progress window of a backup or restore. Each call also takes null for the window: a run without
// items has none, and the window can fail to open.
#pragma once

#include "set/item_kinds.h"

#include "ce/progress.h"
#include "ce/window.h"

// Opens a window for `items` items, with text `id` as its title and message; null if there are no items. Above 1000
// items the bar has no step left and doesn't move, but message and counter do.
HWND OpenRunProgress(UINT id, DWORD items);

// Reports to the host that the run begins with all that is in the lists, and the registry if it is marked.
void ReportRunBegins(DWORD run, const WCHAR* listPath);

// Closes the window and sets `progress` to null.
void CloseRunProgress(HWND& progress);

// Shows the item that the run begins.
void ShowItem(HWND progress, const ItemKind& kind, const WCHAR* name);

// Moves the bar by the step of one item.
void StepRunProgress(HWND progress);

// The counter of thousands of bytes, for one stream.
struct ByteCounter {
    HWND progress;
    const WCHAR* format;
    DWORD shownThousands;
};

// `id` is the counter's format. Its text is in gTextA as long as the counter is used.
ByteCounter StartByteCounter(HWND progress, UINT id);

// Shows a number of bytes. Nothing is sent to the window while the thousands stay the same, as they do for most pieces
// of a stream.
void ShowBytes(ByteCounter& counter, DWORD bytes);
