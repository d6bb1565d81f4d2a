// stream_taking.h - takes an item's stream out of a set, for it to be unpacked.
#pragma once

#include "item_outcome.h"

#include "ce/file.h"
#include "ce/window.h"

// What one restore holds; nothing of it outlives the run.
struct RestoreRun {
    HANDLE dataFile = INVALID_HANDLE_VALUE;
    HWND progress = nullptr;
    DWORD restoredBytes = 0;  // of files and databases, copied out of the data file so far
    ItemOutcome item;         // of the item at hand
};

// Around each item. EndItem reports an item that isn't on the device as the set has it.
void BeginItem(RestoreRun& run);
void EndItem(RestoreRun& run, BYTE kind, const WCHAR* name);

// In the device's root, whatever the storage of the set. Exists during one item only.
inline const WCHAR TemporaryStreamPath[] = u"\\BK000.TMP";

// Copies the bytes of the entry `blob` (set_entry.h) to the temporary stream, fewer if the data file ends before; the
// counter follows if `count`. 0 if its start can't be reached or the temporary stream can't be made; otherwise the
// caller deletes it. Each failure is noted in run.item.
bool TakeStreamOut(RestoreRun& run, const BYTE* blob, bool count);
