// backup_entry.h - declares the state of a backup run, and the steps that store an item in the set. The item is packed
// into a temporary file, the temporary stream. Then an entry is written to the list file, and the bytes of the
// temporary stream are copied to the end of the data file.
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

// Completed entries of tiny files stay in memory as waiting entries, so that several are passed to the host (the Linux
// system) together. If each entry were passed alone, a tiny file would need two writes to the host, one for its data
// and one for its entry. These would take half of the time that the run spends on the file. The following numbers limit
// how many entries wait, and the size in bytes of the stream of a waiting entry.
inline constexpr DWORD MostWaitingEntries = 16;
inline constexpr DWORD MostWaitingStreamBytes = 4096;

struct WaitingEntries {
    DWORD count;
    DWORD start;  // offset of the first waiting entry in the list file
    WCHAR paths[MostWaitingEntries][MAX_PATH];
};

// Exists during one backup only.
struct BackupRun {
    HANDLE listFile = INVALID_HANDLE_VALUE;
    HANDLE dataFile = INVALID_HANDLE_VALUE;
    HWND progress = nullptr;
    BackupLog* log = nullptr;    // null before the set has its number, or if there is no memory for the log
    BOOL ofWholeDevice = FALSE;  // the items were found by a full backup, not marked by the user
    DWORD number = 0;
    DWORD folderError = ERROR_SUCCESS;  // why the folder of the sets couldn't be made; 0 if it exists
    DWORD dataBytes = 0;                // length of the data file so far, which is the start offset of the next item
    WCHAR storageRoot[MAX_PATH] = {};
    WCHAR temporaryPath[MAX_PATH] = {};
    ItemOutcome item;                 // outcome of the current item
    PackedStream packed = {};         // outcome of packing the current item into the temporary stream
    bool temporaryIsDeleted = false;  // there is no file at temporaryPath
    WCHAR itemName[MAX_PATH] = {};    // name of the last file or database that was begun; empty before the first
    SourceDeletion deletion = {};
    bool writesListAfterData = false;  // WriteAfter has succeeded: an entry reaches the host only after its data
    WaitingEntries waiting = {};
};

// Writes a line to the log. Does nothing if the run has no log.
template <class... Arguments>
void Log(BackupRun& run, const WCHAR* format, const Arguments&... arguments)
{
    if (run.log)
        run.log->Write(format, arguments...);
}

// Each of these functions notes that the current item has failed. Call it while GetLastError() is the error of a failed
// write of the item's entry or data. `context` is the run. LogFailedWrite also writes a line to the log. StoreStream
// gets LogFailedWrite for a file, and NoteFailedWrite for a database or the registry.
void NoteFailedWrite(void* context);
void LogFailedWrite(void* context);

// Begin and end an item. EndItem returns true if all steps of the item have succeeded. If a step has failed, it returns
// false and reports the item as not stored. For two kinds of files it returns false without this report: files of the
// run itself, and files that a full backup found and that were deleted before the run read them.
void BeginItem(BackupRun& run);
bool EndItem(BackupRun& run, BYTE kind, const WCHAR* name);

// Packs the file at `path` into the temporary stream. Returns 1 if the temporary stream was created, the file was read
// to its end and each block was packed. After such a result the stream can still lack bytes, for example because the
// card is full. run.item notes this and any other failure. A temporary stream that an earlier run or item left is
// deleted first, so that it is never stored for this item. `ahead` is the result of packing the item in advance
// (thread_ahead.h). It is null if nothing was packed in advance.
BOOL PackItem(BackupRun& run, const WCHAR* path, SmallStream* ahead = nullptr);

// Opens the temporary stream for reading. Returns INVALID_HANDLE_VALUE if PackItem created no stream, if the stream
// can't be opened, or if the data file would grow beyond the 32 bits of the offsets. In each case the item gets no
// entry. In the last case the call also deletes the stream and writes a line to the log.
HANDLE OpenTemporaryStream(BackupRun& run);
void DeleteTemporaryStream(BackupRun& run);

// An entry that is being written.
struct BackupEntry {
    DWORD start;  // offset of the entry in the list file
    BOOL listed;  // all writes of the entry have succeeded so far
    bool waits;   // the entry is passed to the host together with others, unless its item fails
};

// Writes the entry's first fields, copies `stream` into the data file and closes the stream. Calls `failed` after each
// write that fails. The remaining writes are still made.
BackupEntry StoreStream(BackupRun& run, BYTE kind, const WCHAR* name, HANDLE stream, bool showCount,
                        WriteFailed failed);

// Passes the waiting entries and their data to the host. If that fails, reports the items of these entries as not
// stored, and cuts the entries off the end of the list.
void SettleWaitingEntries(BackupRun& run);

// Completes the entry by writing its end offset. The data is passed to the host before the end offset, so that a killed
// run leaves no entry without its data. If the entry can't be written or passed to the host completely, it is cut off
// the end of the list, because a reader couldn't find the entries after it. EndEntry may keep the entry of a tiny file
// and its data in memory. SettleWaitingEntries writes them later, together with those of other tiny files.
void EndEntry(BackupRun& run, BackupEntry& entry);
