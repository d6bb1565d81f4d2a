// item_storing.cpp - see item_storing.h.

#include "item_storing.h"

#include "compressed_stream.h"
#include "questions.h"

#include "ce/text.h"

namespace {

constexpr UINT CounterText = 130;
constexpr DWORD PieceBytes = 260;
constexpr DWORD NothingShown = 0xFFFFFFFF;

// The running offset has 32 bits: an item that would pass them is refused whole, since its offsets would be lies.
bool FitsOffsets(const BackupRun& run, HANDLE stream)
{
    LONG high = 0;
    const DWORD low = SetFilePointer(stream, 0, &high, FILE_END);
    if (low == INVALID_SET_FILE_POINTER || SetFilePointer(stream, 0, nullptr, FILE_BEGIN) != 0)
        return false;
    return high == 0 && low <= 0xFFFFFFFF - run.dataBytes;
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

// What waits for its deletion is whole and may go, if the list is whole again; after that, none does.
void CutEntryOff(BackupRun& run, const StoredItem& item)
{
    const bool cut =
        SetFilePointer(run.listFile, static_cast<LONG>(item.entryStart), nullptr, FILE_BEGIN) == item.entryStart &&
        SetEndOfFile(run.listFile);
    if (cut)
        DeleteWaiting(run.deletion, run.listFile, run.dataFile);
    ForbidDeletion(run.deletion);
}

}  // namespace

void LogFailedWrite(void* context)
{
    BackupRun& run = *static_cast<BackupRun*>(context);
    Log(run, u"ERR: Backup File write (%08x)", GetLastError());
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
    return CompressFile(path, run.temporaryPath, &run.streamIsOfItem);
}

HANDLE OpenTemporaryStream(BackupRun& run)
{
    if (!run.streamIsOfItem)
        return INVALID_HANDLE_VALUE;
    HANDLE stream = CreateFileW(run.temporaryPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (stream == INVALID_HANDLE_VALUE || FitsOffsets(run, stream))
        return stream;
    CloseHandle(stream);
    DeleteTemporaryStream(run);
    SetLastError(ERROR_DISK_FULL);
    LogFailedWrite(&run);
    return INVALID_HANDLE_VALUE;
}

StoredItem BeginEntry(BackupRun& run, BYTE kind, const WCHAR* name, WriteFailed failed)
{
    StoredItem item = {};
    item.entryStart = SetFilePointer(run.listFile, 0, nullptr, FILE_CURRENT);
    item.listed = WriteEntryHead(run.listFile, kind, name, run.dataBytes, failed, &run) == 0;
    return item;
}

// Counts what WriteFile reports: after a full card the next item still starts where its bytes do.
void CopyStream(BackupRun& run, StoredItem& item, HANDLE stream, bool showCount, WriteFailed failed)
{
    const WCHAR* format = LoadText(CounterText, gTextA);
    BYTE piece[PieceBytes];
    DWORD shown = NothingShown;
    item.copied = TRUE;
    for (;;) {
        DWORD bytes = 0;
        item.copied &= ReadFile(stream, piece, PieceBytes, &bytes, nullptr) != 0;
        if (bytes == 0)
            return;
        DWORD written = 0;
        const BOOL stored = WriteFile(run.dataFile, piece, bytes, &written, nullptr) && written == bytes;
        if (!stored && failed)
            failed(&run);
        item.copied &= stored;
        run.dataBytes += written;
        if (showCount)
            ShowCount(run, format, shown);
    }
}

void EndEntry(BackupRun& run, StoredItem& item)
{
    item.listed &= WriteEntryEnd(run.listFile, run.dataBytes) != 0;
    if (!item.listed)
        CutEntryOff(run, item);
}
