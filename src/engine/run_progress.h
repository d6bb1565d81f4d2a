// run_progress.h - controls the progress window of a backup or restore. Each call accepts null for the window, because
// a run without items has no window, and because opening the window can fail.
#pragma once

#include "set/item_kinds.h"

#include "ce/progress.h"
#include "ce/window.h"

// Opens a window for `items` items, with text `id` as its title and message. Returns null if there are no items, or if
// no window could be made. With more than 1000 items the step of the bar is 0: the bar doesn't move, but message and
// counter change.
HWND OpenRunProgress(UINT id, DWORD items);

// Reports that the run begins (BeginRun in ce/progress.h). `run` is RunStores or RunRestores. The report has the number
// and the total size of the items in the lists. If gRegistryMarked isn't 0, the registry counts as one more item,
// without a size.
void ReportRunBegins(DWORD run, const WCHAR* listPath);

// Closes the window and sets `progress` to null.
void CloseRunProgress(HWND& progress);

// Shows the kind and the name of the next item of the run.
void ShowItem(HWND progress, const ItemKind& kind, const WCHAR* name);

// Moves the bar by the step of one item.
void StepRunProgress(HWND progress);

// Shows in the window how many thousands of bytes were copied. A new ByteCounter is made for each stream, but the shown
// number includes the streams that were copied before.
struct ByteCounter {
    HWND progress;
    const WCHAR* format;
    DWORD shownThousands;
};

// Starts the counter. Text `id` is the format of the shown number. The call loads this text into gTextA, and the
// counter uses it there. So gTextA mustn't change while the counter is in use.
ByteCounter StartByteCounter(HWND progress, UINT id);

// Shows a number of bytes. Sends nothing to the window if the number of thousands is unchanged, as it is for most
// pieces of a stream.
void ShowBytes(ByteCounter& counter, DWORD bytes);
