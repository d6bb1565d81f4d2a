// backup_entry.h - the state of a backup run, and the steps that put an item into its set: pack it to the temporary
// stream, then write an entry to the list file and the stream's bytes to the data file.
#pragma once

#include "item_outcome.h"
#include "run_log.h"
#include "set/compressed_stream.h"
#include "set/item_kinds.h"
#include "set/list_file.h"
#include "set/small_stream.h"
#include "source_deletion.h"

#include "ce/file.h"
#include "ce/window.h"

// Entries of tiny files that are complete but not yet passed to the host. Two writes to the host for each would take
// half of the run's time for such a file.
inline constexpr DWORD MostWaitingEntries = 16;
inline constexpr DWORD MostWaitingStreamBytes = 4096;

struct WaitingEntries {
    DWORD count;
    DWORD start;  // offset of the first one in the list file
    WCHAR paths[MostWaitingEntries][MAX_PATH];
};

// Exists during one backup only.
struct BackupRun {
    HANDLE listFile = INVALID_HANDLE_VALUE;
    HANDLE dataFile = INVALID_HANDLE_VALUE;
    HWND progress = nullptr;
    BackupLog* log = nullptr;    // null before the set has its number, or if there is no memory for it
    BOOL ofWholeDevice = FALSE;  // the items were found by a full backup, not marked by the user
    DWORD number = 0;
    DWORD folderError = ERROR_SUCCESS;  // of making the folder of the sets
    DWORD dataBytes = 0;                // in the data file so far: the start offset of the next item
    WCHAR storageRoot[MAX_PATH] = {};
    WCHAR temporaryPath[MAX_PATH] = {};
    ItemOutcome item;                 // of the current item
    PackedStream packed = {};         // the current item's stream at temporaryPath
    bool temporaryIsDeleted = false;  // there is no file at temporaryPath
    WCHAR itemName[MAX_PATH] = {};    // the last name that the lists returned; empty before the first
    SourceDeletion deletion = {};
    bool writesListAfterData = false;  // the file layer passes no part of the list to the host before its data
    WaitingEntries waiting = {};
};

// Without a log the line is dropped.
template <class... Arguments>
void Log(BackupRun& run, const WCHAR* format, const Arguments&... arguments)
{
    if (run.log)
        run.log->Write(format, arguments...);
}

// Called after a failed write of an item's entry or data, while the last error is still that of the write. `context` is
// the run. LogFailedWrite also writes a line to the log, which only files get.
void NoteFailedWrite(void* context);
void LogFailedWrite(void* context);

// Begin and end an item. EndItem reports one that isn't in the set whole, and returns whether it is.
void BeginItem(BackupRun& run);
bool EndItem(BackupRun& run, BYTE kind, const WCHAR* name);

// Packs the file at `path` into the temporary stream and returns the result of CompressFile. A temporary stream that an
// earlier run or item left is deleted first, so that it is never taken for this item's. `ahead` is what was done of it
// ahead; null for nothing.
BOOL PackItem(BackupRun& run, const WCHAR* path, SmallStream* ahead = nullptr);

// Opens the temporary stream. INVALID_HANDLE_VALUE if there is none. It is also returned if the data file would grow
// beyond the 32 bits of the offsets. The failure is then logged, the stream deleted, and the item gets no entry.
HANDLE OpenTemporaryStream(BackupRun& run);
void DeleteTemporaryStream(BackupRun& run);

// An entry that is being written.
struct BackupEntry {
    DWORD start;  // its offset in the list file
    BOOL listed;  // every write of it has succeeded so far
    bool waits;   // it is passed to the host with others, unless its item fails
};

// Writes the entry's first fields, copies `stream` into the data file and closes it. `failed` is called after each
// write that fails. The writes after it are still made.
BackupEntry StoreStream(BackupRun& run, BYTE kind, const WCHAR* name, HANDLE stream, bool showCount,
                        WriteFailed failed);

// Passes the waiting entries and their data to the host. If that fails, their items are reported, and the list is cut
// back to the entries before them.
void SettleWaitingEntries(BackupRun& run);

// Completes the entry. The data is passed to the host before the list names it, so that a killed run leaves no entry
// without its data. An entry that isn't whole is cut off the list: a reader couldn't find the entries after it. The
// entry of a tiny file can wait; see SettleWaitingEntries.
void EndEntry(BackupRun& run, BackupEntry& entry);
