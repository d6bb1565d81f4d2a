// item_storing.cpp - see item_storing.h.

#include "item_storing.h"

#include "engine/options.h"
#include "engine/questions.h"
#include "set/set_entry.h"
#include "set_paths.h"

#include "ce/text.h"

namespace {

constexpr DWORD PieceBytes = 260;
constexpr DWORD NothingShown = 0xFFFFFFFF;

// The running offset has 32 bits: an item that would pass them is refused whole, since its offsets would be lies.
bool FitsOffsets(const BackupRun& run)
{
    return run.packed.bytes <= 0xFFFFFFFF - run.dataBytes;
}

// Most pieces leave the number as it is; then its text stands there already.
void ShowCount(BackupRun& run, const WCHAR* format, DWORD& shown)
{
    const DWORD thousands = run.dataBytes / 1000;
    if (thousands == shown)
        return;
    shown = thousands;
    WCHAR counter[TextChars];
    wsprintfW(counter, format, thousands);
    ProgressSetCount(run.progress, counter);
}

// Takes an entry that isn't whole off the list. The sources that wait for their deletion are listed before it: they go
// if the list could be cut back to a whole one. No later source of this run is deleted.
void CutEntryOff(BackupRun& run, const StoredItem& item)
{
    const bool cut =
        SetFilePointer(run.listFile, static_cast<LONG>(item.entryStart), nullptr, FILE_BEGIN) == item.entryStart &&
        SetEndOfFile(run.listFile);
    if (cut)
        DeleteWaiting(run.deletion, run.listFile, run.dataFile);
    ForbidDeletion(run.deletion);
}

// The run's own log has replaced the earlier one of this number, and its own temporary stream the one that a killed run
// left: nothing of theirs is left to store.
bool IsOwnFile(const BackupRun& run, const WCHAR* path)
{
    WCHAR logPath[MAX_PATH];
    FormatLogPath(logPath, run.storageRoot, run.number);
    return lstrcmpW(path, run.temporaryPath) == 0 || (gOptions.generateLog && lstrcmpW(path, logPath) == 0);
}

// A file that comes and goes was there when the device was listed, and isn't any more. Of what the user marked that is
// reported.
bool WentAway(const BackupRun& run)
{
    return run.ofWholeDevice && !run.packed.opened &&
           (run.item.error == ERROR_FILE_NOT_FOUND || run.item.error == ERROR_PATH_NOT_FOUND);
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
}

bool EndItem(BackupRun& run, BYTE kind, const WCHAR* name)
{
    const bool nothingToStore = kind == ItemKindFile && (IsOwnFile(run, name) || WentAway(run));
    if (!IsWhole(run.item) && !nothingToStore)
        ReportItem(OutcomeNotStored, kind, name, run.item.error);
    return IsWhole(run.item);
}

void DeleteTemporaryStream(BackupRun& run)
{
    run.temporaryIsGone = DeleteFileW(run.temporaryPath) || GetLastError() == ERROR_FILE_NOT_FOUND;
}

BOOL PackItem(BackupRun& run, const WCHAR* path)
{
    // What a killed run left behind may look in use for a moment longer. A file made anew doesn't.
    if (!run.temporaryIsGone)
        DeleteTemporaryStream(run);
    run.temporaryIsGone = false;
    const BOOL result = CompressFile(path, run.temporaryPath, &run.packed);
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

StoredItem BeginEntry(BackupRun& run, BYTE kind, const WCHAR* name, WriteFailed failed)
{
    StoredItem item = {};
    item.entryStart = SetFilePointer(run.listFile, 0, nullptr, FILE_CURRENT);
    item.listed = WriteEntryHead(run.listFile, kind, name, run.dataBytes, failed, &run) == 0;
    return item;
}

// Counts what WriteFile reports: after a full card the next item still starts where its bytes do. What is read is held
// against what was packed, since a failing disk may end the stream early.
void CopyStream(BackupRun& run, HANDLE stream, bool showCount, WriteFailed failed)
{
    const WCHAR* format = LoadText(TextBackedUpCountFormat, gTextA);
    BYTE piece[PieceBytes];
    DWORD shown = NothingShown;
    std::uint64_t read = 0;
    for (;;) {
        DWORD bytes = 0;
        if (!ReadFile(stream, piece, PieceBytes, &bytes, nullptr))
            NoteFailure(run.item, GetLastError());
        if (bytes == 0)
            break;
        read += bytes;
        DWORD written = 0;
        if (!WriteFile(run.dataFile, piece, bytes, &written, nullptr) || written != bytes)
            failed(&run);
        run.dataBytes += written;
        if (showCount)
            ShowCount(run, format, shown);
    }
    if (read != run.packed.bytes)
        NoteFailure(run.item, ERROR_HANDLE_EOF);
}

void EndEntry(BackupRun& run, StoredItem& item)
{
    if (!HandOverFileBuffers(run.dataFile))
        NoteFailure(run.item, GetLastError());
    if (!WriteEntryEnd(run.listFile, run.dataBytes) || !HandOverFileBuffers(run.listFile)) {
        NoteFailure(run.item, GetLastError());
        item.listed = FALSE;
    }
    if (!item.listed)
        CutEntryOff(run, item);
}
