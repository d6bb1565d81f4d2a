// item_storing.h - how any item of a backup gets into the set: its entry in the list, its stream in the data file.
#pragma once

#include "item_outcome.h"
#include "run_log.h"
#include "set/compressed_stream.h"
#include "set/list_file.h"
#include "source_deletion.h"

#include "ce/file.h"
#include "ce/window.h"

// What one backup holds; nothing of it outlives the run.
struct BackupRun {
    HANDLE listFile = INVALID_HANDLE_VALUE;
    HANDLE dataFile = INVALID_HANDLE_VALUE;
    HWND progress = nullptr;
    BackupLog* log = nullptr;    // absent until the set has its number, or if there is no memory for it
    BOOL ofWholeDevice = FALSE;  // the items were listed by the run itself, not by the user
    DWORD number = 0;
    DWORD folderError = ERROR_SUCCESS;  // why the folder of the sets couldn't be made
    DWORD dataBytes = 0;                // in the data file so far: where the next item starts
    WCHAR storageRoot[MAX_PATH] = {};
    WCHAR temporaryPath[MAX_PATH] = {};
    ItemOutcome item;               // of the item at hand
    PackedStream packed = {};       // of the item at hand, at that path
    bool temporaryIsGone = false;   // nothing stands at its path between two items, as it should be
    WCHAR itemName[MAX_PATH] = {};  // of the last item that the lists gave; empty before the first
    SourceDeletion deletion = {};
};

// The log is optional: without one a line goes nowhere.
template <class... Arguments>
void Log(BackupRun& run, const WCHAR* format, const Arguments&... arguments)
{
    if (run.log)
        run.log->Write(format, arguments...);
}

// A failed write of an item's entry or data, right behind the write, while the last error is its own. LogFailedWrite
// writes a line to the log as well, as file items do. `context` is the run.
void NoteFailedWrite(void* context);
void LogFailedWrite(void* context);

// Around each item. EndItem reports an item that isn't in the set whole; true if it is.
void BeginItem(BackupRun& run);
bool EndItem(BackupRun& run, BYTE kind, const WCHAR* name);

// Packs a file into the temporary stream: the result of CompressFile. Where that fails, a stream that an earlier run or
// item left behind is never taken for this one's.
BOOL PackItem(BackupRun& run, const WCHAR* path);

// The item's packed stream, ready to be copied. INVALID_HANDLE_VALUE if there is none, or if it would pass the 32 bits
// of the offsets: then that is logged and the stream deleted. Such an item has no entry.
HANDLE OpenTemporaryStream(BackupRun& run);

// After the item.
void DeleteTemporaryStream(BackupRun& run);

// One item on its way into the set.
struct StoredItem {
    DWORD entryStart;  // in the list file
    BOOL listed;       // every write of the entry succeeded
};

// The three steps, in this order. A fault of one is noted and the next one is made all the same; `failed` is told each
// failed write. EndEntry hands the data to the host before the list names it, so that a killed run leaves no entry
// whose data isn't in the data file, and cuts an entry that isn't whole off the list again: it would make all behind it
// unreadable.
StoredItem BeginEntry(BackupRun& run, BYTE kind, const WCHAR* name, WriteFailed failed);
void CopyStream(BackupRun& run, HANDLE stream, bool showCount, WriteFailed failed);
void EndEntry(BackupRun& run, StoredItem& item);
