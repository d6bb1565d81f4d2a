// item_storing.cpp - see item_storing.h.

#include "item_storing.h"

#include "compressed_stream.h"
#include "list_file.h"
#include "options.h"
#include "questions.h"
#include "set_entry.h"
#include "stream_check.h"

#include "ce/text.h"

namespace {

constexpr UINT FileMessageText = 114;
constexpr UINT CounterText = 130;
constexpr DWORD PieceBytes = 260;

void ShowItem(BackupRun& run, const WCHAR* name)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(FileMessageText, gTextA), name);
    ProgressSetMessage(run.progress, message);
}

// Right behind the write, while the last error is its own.
void LogFailedWrite(void* context)
{
    BackupRun& run = *static_cast<BackupRun*>(context);
    Log(run, u"ERR: Backup File write (%08x)", GetLastError());
}

// The running offset has 32 bits: an item that would pass them is refused whole, since its offsets would be lies.
bool FitsOffsets(const BackupRun& run, HANDLE stream)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!GetFileInformationByHandle(stream, &information))
        return false;
    return information.nFileSizeHigh == 0 && information.nFileSizeLow <= 0xFFFFFFFF - run.dataBytes;
}

// Reads to the end of the stream. Counts what WriteFile reports: after a full card the next item still starts where its
// bytes do. 1 if every piece was written whole.
BOOL CopyStream(BackupRun& run, HANDLE stream)
{
    const WCHAR* format = LoadText(CounterText, gTextA);
    BOOL whole = TRUE;
    BYTE piece[PieceBytes];
    for (;;) {
        DWORD bytes = 0;
        if (!ReadFile(stream, piece, PieceBytes, &bytes, nullptr))
            whole = FALSE;
        if (bytes == 0)
            return whole;
        DWORD written = 0;
        if (!WriteFile(run.dataFile, piece, bytes, &written, nullptr) || written != bytes) {
            LogFailedWrite(&run);
            whole = FALSE;
        }
        run.dataBytes += written;
        WCHAR counter[TextChars];
        wsprintfW(counter, format, run.dataBytes / 1000);
        ProgressSetCount(run.progress, counter);
    }
}

// An entry that isn't whole would make all behind it unreadable: it is cut off again, so that the list stays readable
// when a card that was full has room again. What waits for its deletion is whole and may go; after that, none does.
void CutEntryOff(BackupRun& run, DWORD entryStart)
{
    const bool cut = SetFilePointer(run.listFile, static_cast<LONG>(entryStart), nullptr, FILE_BEGIN) == entryStart &&
                     SetEndOfFile(run.listFile);
    if (cut)
        DeleteWaiting(run.deletion, run.listFile, run.dataFile);
    ForbidDeletion(run.deletion);
}

// Names the item in the list and puts its stream, which `stream` reads, behind the others. The temporary stream is closed
// and deleted. 1 if every write of it succeeded.
BOOL StoreStream(BackupRun& run, HANDLE stream, BYTE kind, const WCHAR* name)
{
    const DWORD entryStart = SetFilePointer(run.listFile, 0, nullptr, FILE_CURRENT);
    // No short cut: each write is tried, so that each failure gets its own line in the log.
    const DWORD failedHeadWrites = WriteEntryHead(run.listFile, kind, name, run.dataBytes, LogFailedWrite, &run);
    const BOOL copied = CopyStream(run, stream);
    CloseHandle(stream);
    DeleteFileW(run.temporaryPath);
    Log(run, u"INF: End file backup%s", name);
    const BOOL ended = WriteEntryEnd(run.listFile, run.dataBytes);
    if (failedHeadWrites != 0 || !ended)
        CutEntryOff(run, entryStart);
    return failedHeadWrites == 0 && copied && ended;
}

HANDLE OpenTemporaryStream(BackupRun& run)
{
    HANDLE stream = CreateFileW(run.temporaryPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (stream == INVALID_HANDLE_VALUE || FitsOffsets(run, stream))
        return stream;
    CloseHandle(stream);
    DeleteFileW(run.temporaryPath);
    SetLastError(ERROR_DISK_FULL);
    LogFailedWrite(&run);
    return INVALID_HANDLE_VALUE;
}

} // namespace

void BackUpFile(BackupRun& run, const WCHAR* name)
{
    ShowItem(run, name);
    Log(run, u"INF: Start file backup: %s", name);
    const SourceStamp stamp = gOptions.deleteBackedUp ? StampOf(name) : SourceStamp{};
    const BOOL packed = CompressFile(name, run.temporaryPath);
    if (!packed)
        Log(run, u"ERR: File access file: %s", name);
    // CompressFile doesn't look at its writes: on a full card it succeeds with a stream that is cut short.
    const BOOL whole = gOptions.deleteBackedUp && packed && StreamIsWhole(run.temporaryPath);

    HANDLE stream = OpenTemporaryStream(run);
    if (stream != INVALID_HANDLE_VALUE && StoreStream(run, stream, ItemKindFile, name) && whole)
        DeleteWhenOnDisk(run.deletion, name, stamp, run.listFile, run.dataFile);
    ProgressStep(run.progress, 0);
}
