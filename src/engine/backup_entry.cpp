// The following holds at any moment of a run, even if the process is killed or the card is full:
//
// - All entries of the list are whole, except perhaps the last one. If another entry were cut, a program that reads the
//   list couldn't find the entries after it.
// - The list on the host is empty or unfinished (MarkUnfinished), or it ends within its head or an entry. So a reader
//   can tell the set of a killed run from a whole set.
// - If an entry is whole, the data file has all bytes between the entry's two offsets. The host (the Linux system) gets
//   these bytes first. Only then does it get the end offset, which completes the entry in the list. For waiting entries
//   (backup_entry.h) the file layer ensures this order (WriteAfter).
// - run.dataBytes is the length of the data file. So the start offset of the next item is correct even after a failure.
// - A source is deleted only if its entry is whole. After an entry that couldn't be written completely, no later source
//   is deleted (source_deletion.h).
//
// If a step of an item fails, run.item notes the failure. The remaining steps are still made, because the log must have
// a line for each failed write.
#include "backup_entry.h"

#include "engine/options.h"
#include "engine/questions.h"
#include "engine/set_paths.h"
#include "engine/stored_digests.h"
#include "piece_copy.h"
#include "run_progress.h"
#include "set/block_pipeline.h"

#include "ce/progress.h"
#include "ce/text.h"

namespace {

constexpr DWORD HandOverBytes = 262144;
constexpr std::uint64_t NoLimit = ~std::uint64_t{0};

// Whether the end offset of the packed item fits into the 32 bits of an offset.
bool FitsOffsets(const BackupRun& run)
{
    return run.packed.bytes <= 0xFFFFFFFF - run.dataBytes;
}

bool CutList(BackupRun& run, DWORD end)
{
    return SetFilePointer(run.listFile, static_cast<LONG>(end), nullptr, FILE_BEGIN) == end &&
           SetEndOfFile(run.listFile);
}

// Cuts the entry off the end of the list. If this succeeds, deletes the sources that were collected for deletion. Their
// own entries are whole and remain in the list, because they precede this entry. No later source of this run is
// deleted.
void CutEntryOff(BackupRun& run, const BackupEntry& entry)
{
    if (CutList(run, entry.start))
        DeleteCollected(run.deletion, run.listFile, run.dataFile);
    ForbidDeletion(run.deletion);
}

// Whether the path is that of the run's log or temporary stream. If such a file existed before the run, the run has
// replaced it, and nothing of it is left to store.
bool IsFileOfRun(const BackupRun& run, const WCHAR* path)
{
    WCHAR logPath[MAX_PATH];
    FormatLogPath(logPath, run.storageRoot, run.number);
    return lstrcmpW(path, run.temporaryPath) == 0 || (gOptions.generateLog && lstrcmpW(path, logPath) == 0);
}

// Whether the file was found by a full backup and deleted before it was read. This isn't a failure. If the user marked
// the file, its deletion is a failure, and the result is false.
bool WasDeletedMeanwhile(const BackupRun& run)
{
    return run.ofWholeDevice && !run.packed.opened &&
           (run.item.error == ERROR_FILE_NOT_FOUND || run.item.error == ERROR_PATH_NOT_FOUND);
}

// Passes the data that was written so far to the host, and reports that it can be read there (ReportStoredBytes).
// Returns 0 or the error.
DWORD HandOverData(BackupRun& run)
{
    if (!HandOverFileBuffers(run.dataFile))
        return GetLastError();
    ReportStoredBytes(run.dataBytes);
    return ERROR_SUCCESS;
}

// Called if the waiting entries couldn't be passed to the host. Reports their items as not stored, and cuts these
// entries off the end of the list.
void LoseWaitingEntries(BackupRun& run, DWORD error)
{
    for (DWORD i = 0; i < run.waiting.count; i++)
        ReportItem(OutcomeNotStored, OutcomeFile, run.waiting.paths[i], error);
    TakeBackItemsMade(OutcomeFile, run.waiting.count);
    if (gDigestsBlocks)
        gStoredDigests.resize(gStoredDigests.size() - run.waiting.count);
    run.waiting.count = 0;
    (void)HandOverFileBuffers(run.listFile);  // even if this fails, no buffered bytes are left that the cut could write
    (void)CutList(run, run.waiting.start);
}

// Whether the entry may become a waiting entry (backup_entry.h). Only entries of tiny files may, and only if the file
// layer passes the data to the host before the entry. If sources are to be deleted, no entry waits, because a source is
// deleted only when the list file has its entry.
bool CanWait(const BackupRun& run, BYTE kind)
{
    return kind == ItemKindFile && run.writesListAfterData && !gOptions.deleteBackedUp &&
           run.packed.bytes <= MostWaitingStreamBytes;
}

void AddWaitingEntry(BackupRun& run, const BackupEntry& entry)
{
    if (run.waiting.count == 0)
        run.waiting.start = entry.start;
    CopyText(run.waiting.paths[run.waiting.count++], run.itemName);
}

// Copies the temporary stream to the end of the data file. dataBytes grows by the number of bytes that WriteFile
// reports, so that the next item's offset is correct even on a full card. The number of bytes read is compared with the
// number packed, because a failing disk can end the stream early. A long stream is passed to the host in parts. So
// another thread of the process can hash the first parts while the run copies the rest (ReportStoredBytes).
void CopyStream(BackupRun& run, HANDLE stream, bool showCount, WriteFailed failed)
{
    ByteCounter counter = StartByteCounter(run.progress, TextBackedUpCountFormat);
    std::uint64_t read = 0;
    DWORD handedOver = run.dataBytes;
    const auto copied = [&](DWORD bytes, DWORD written) {
        read += bytes;
        run.dataBytes += written;
        if (showCount)
            ShowBytes(counter, run.dataBytes);
        if (run.dataBytes - handedOver >= HandOverBytes) {
            if (const DWORD error = HandOverData(run); error != ERROR_SUCCESS)
                NoteFailure(run.item, error);
            handedOver = run.dataBytes;
        }
    };
    CopyPieces(
        stream, run.dataFile, NoLimit, run.item, [&] { failed(&run); }, copied);
    if (read != run.packed.bytes)
        NoteFailure(run.item, ERROR_HANDLE_EOF);
}

// Passes the current entry and the waiting entries before it to the host. Returns 0 or the error.
DWORD HandOverEntries(BackupRun& run)
{
    if (!HandOverFileBuffers(run.listFile))
        return GetLastError();
    run.waiting.count = 0;
    return ERROR_SUCCESS;
}

}  // namespace

void NoteFailedWrite(void* context)
{
    NoteFailure(static_cast<BackupRun*>(context)->item, GetLastError());
}

void LogFailedWrite(void* context)
{
    BackupRun& run = *static_cast<BackupRun*>(context);
    const DWORD error = GetLastError();
    NoteFailure(run.item, error);
    Log(run, u"ERR: Backup File write (%08x)", error);
}

void BeginItem(BackupRun& run)
{
    run.item = {};
    run.packed = {};
}

bool EndItem(BackupRun& run, BYTE kind, const WCHAR* name)
{
    const bool nothingToStore = kind == ItemKindFile && (IsFileOfRun(run, name) || WasDeletedMeanwhile(run));
    if (!IsWhole(run.item) && !nothingToStore)
        ReportItem(OutcomeNotStored, KindOf(kind).reportedAs, name, run.item.error);
    ReportItemDone(KindOf(kind).reportedAs, run.packed.readBytes, IsWhole(run.item));
    return IsWhole(run.item);
}

void DeleteTemporaryStream(BackupRun& run)
{
    run.temporaryIsDeleted = DeleteFileW(run.temporaryPath) || GetLastError() == ERROR_FILE_NOT_FOUND;
}

BOOL PackItem(BackupRun& run, const WCHAR* path, SmallStream* ahead)
{
    // A killed run can leave its temporary stream, and this file can still be locked for a moment. Opening a locked
    // file fails, but deleting it succeeds. So the old stream is deleted, and CompressFile or WriteSmallStream makes a
    // new one.
    if (!run.temporaryIsDeleted)
        DeleteTemporaryStream(run);
    BOOL result = FALSE;
    run.packed = {};
    if (!ahead || ahead->state == SmallStreamState::Left)
        result = CompressFile(path, run.temporaryPath, &run.packed);
    else if (ahead->state == SmallStreamState::Packed)
        result = WriteSmallStream(*ahead, run.temporaryPath, run.packed);
    else
        run.packed.error = ahead->error;
    if (run.packed.made)  // otherwise a file at this path isn't the run's
        run.temporaryIsDeleted = false;
    if (!run.packed.whole)
        NoteFailure(run.item, run.packed.error);
    return result;
}

HANDLE OpenTemporaryStream(BackupRun& run)
{
    if (!run.packed.made)
        return INVALID_HANDLE_VALUE;
    if (!FitsOffsets(run)) {
        DeleteTemporaryStream(run);
        NoteFailure(run.item, ERROR_FILE_TOO_LARGE);
        SetLastError(ERROR_DISK_FULL);
        LogFailedWrite(&run);
        return INVALID_HANDLE_VALUE;
    }
    HANDLE stream = CreateFileW(run.temporaryPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (stream == INVALID_HANDLE_VALUE)
        NoteFailure(run.item, GetLastError());
    return stream;
}

BackupEntry StoreStream(BackupRun& run, BYTE kind, const WCHAR* name, HANDLE stream, bool showCount, WriteFailed failed)
{
    BackupEntry entry = {};
    entry.waits = CanWait(run, kind);
    if (!entry.waits || run.waiting.count == MostWaitingEntries)
        SettleWaitingEntries(run);
    entry.start = SetFilePointer(run.listFile, 0, nullptr, FILE_CURRENT);
    entry.listed = WriteEntryHead(run.listFile, kind, name, run.dataBytes, failed, &run) == 0;
    CopyStream(run, stream, showCount, failed);
    CloseHandle(stream);
    return entry;
}

void SettleWaitingEntries(BackupRun& run)
{
    if (run.waiting.count == 0)
        return;
    DWORD error = HandOverData(run);
    if (error == ERROR_SUCCESS && !HandOverFileBuffers(run.listFile))
        error = GetLastError();
    if (error != ERROR_SUCCESS)
        LoseWaitingEntries(run, error);
    run.waiting.count = 0;
}

void EndEntry(BackupRun& run, BackupEntry& entry)
{
    const bool waits = entry.waits && entry.listed && IsWhole(run.item);
    if (const DWORD error = waits ? DWORD{ERROR_SUCCESS} : HandOverData(run); error != ERROR_SUCCESS)
        NoteFailure(run.item, error);
    if (!WriteEntryEnd(run.listFile, run.dataBytes)) {
        NoteFailure(run.item, GetLastError());
        entry.listed = FALSE;
    }
    const DWORD lost = waits && entry.listed ? DWORD{ERROR_SUCCESS} : HandOverEntries(run);
    if (lost != ERROR_SUCCESS)
        NoteFailure(run.item, lost);
    if (lost != ERROR_SUCCESS && run.waiting.count != 0)
        LoseWaitingEntries(run, lost);  // also cuts off this entry, which comes after the waiting ones
    else if (lost != ERROR_SUCCESS || !entry.listed)
        CutEntryOff(run, entry);
    else if (gDigestsBlocks)
        gStoredDigests.push_back(run.packed.digest);
    if (lost == ERROR_SUCCESS && entry.listed && waits)
        AddWaitingEntry(run, entry);
}
