// file_items.cpp - see file_items.h.

#include "file_items.h"

#include "compressed_stream.h"
#include "options.h"
#include "questions.h"
#include "run_progress.h"
#include "set_state.h"

#include "ce/text.h"

namespace {

constexpr UINT FileMessageText = 114;

// 1 if entry and stream are in the set, whole.
BOOL StoreFile(BackupRun& run, const WCHAR* name, HANDLE stream)
{
    StoredItem item = BeginEntry(run, ItemKindFile, name, LogFailedWrite);
    CopyStream(run, item, stream, true, LogFailedWrite);
    CloseHandle(stream);
    DeleteTemporaryStream(run);
    Log(run, u"INF: End file backup%s", name);
    EndEntry(run, item);
    return item.listed && item.copied;
}

void BackUpFile(BackupRun& run, const WCHAR* name)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(FileMessageText, gTextA), name);
    ProgressSetMessage(run.progress, message);
    Log(run, u"INF: Start file backup: %s", name);

    const SourceStamp stamp = gOptions.deleteBackedUp ? StampOf(name) : SourceStamp{};
    const BOOL packed = PackItem(run, name);
    if (!packed)
        Log(run, u"ERR: File access file: %s", name);
    // CompressFile doesn't look at its writes: on a full card it succeeds with a stream that is cut short.
    const BOOL whole = gOptions.deleteBackedUp && packed && StreamIsWhole(run.temporaryPath);
    HANDLE stream = OpenTemporaryStream(run);
    if (stream != INVALID_HANDLE_VALUE && StoreFile(run, name, stream) && whole)
        DeleteWhenOnDisk(run.deletion, name, stamp, run.listFile, run.dataFile);
    ProgressStep(run.progress, 0);
}

}  // namespace

void BackUpFiles(BackupRun& run)
{
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = gFileList && gFileList->First(entry.bytes, &length); more;
         more = gFileList->Next(entry.bytes, &length)) {
        CopyText(run.itemName, entry.name);
        BackUpFile(run, entry.name);
    }
    DeleteWaiting(run.deletion, run.listFile, run.dataFile);
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
}
