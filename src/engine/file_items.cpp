// file_items.cpp - see file_items.h.

#include "file_items.h"

#include "engine/options.h"
#include "engine/questions.h"
#include "run_progress.h"
#include "set/set_state.h"

#include "ce/text.h"

namespace {


void StoreFile(BackupRun& run, const WCHAR* name, HANDLE stream)
{
    StoredItem item = BeginEntry(run, ItemKindFile, name, LogFailedWrite);
    CopyStream(run, stream, true, LogFailedWrite);
    CloseHandle(stream);
    DeleteTemporaryStream(run);
    Log(run, u"INF: End file backup%s", name);
    EndEntry(run, item);
}

void BackUpFile(BackupRun& run, const WCHAR* name)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(TextFileFormat, gTextA), name);
    ProgressSetMessage(run.progress, message);
    Log(run, u"INF: Start file backup: %s", name);

    BeginItem(run);
    if (!PackItem(run, name))
        Log(run, u"ERR: File access file: %s", name);
    HANDLE stream = OpenTemporaryStream(run);
    if (stream != INVALID_HANDLE_VALUE)
        StoreFile(run, name, stream);
    if (EndItem(run, ItemKindFile, name) && gOptions.deleteBackedUp)
        DeleteWhenOnDisk(run.deletion, name, run.packed.source, run.listFile, run.dataFile);
    ProgressStep(run.progress, 0);
}

}  // namespace

void BackUpFiles(BackupRun& run)
{
    ForEachEntry(gFileList, [&](const EntryBuffer& entry) {
        CopyText(run.itemName, entry.name);
        BackUpFile(run, entry.name);
    });
    DeleteWaiting(run.deletion, run.listFile, run.dataFile);
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
}
