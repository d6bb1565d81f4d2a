// database_items.cpp - see database_items.h.

#include "database_items.h"

#include "engine/questions.h"
#include "run_progress.h"
#include "set/database_image.h"
#include "set/set_state.h"

#include "ce/text.h"

namespace {


void StoreDatabase(BackupRun& run, const WCHAR* name, HANDLE stream)
{
    StoredItem item = BeginEntry(run, ItemKindDatabase, name, NoteFailedWrite);
    CopyStream(run, stream, true, NoteFailedWrite);
    CloseHandle(stream);
    EndEntry(run, item);
}

// 1 if an image was begun. Otherwise what stands at its path is a file of the user's that has the image's name: that is
// neither stored nor deleted.
BOOL MakeImage(BackupRun& run, const WCHAR* name, const WCHAR* path)
{
    const bool stoodThere = GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
    (void)DeclareTemporaryFile(path);
    BOOL made = FALSE;
    SetLastError(ERROR_SUCCESS);
    if (!DumpDatabase(name, &made)) {
        NoteFailure(run.item, GetLastError());
        Log(run, u"ERR: Database backup: %s", name);
    }
    if (made && stoodThere)
        ReportReplacedFile(path);
    return made;
}

// After a failed dump its image is still tried. That there is none is logged too.
HANDLE PackDatabase(BackupRun& run, const WCHAR* name, const WCHAR* imagePath)
{
    const BOOL made = MakeImage(run, name, imagePath);
    if (!made)
        NoteFailure(run.item, GetLastError());
    if (!made || !PackItem(run, imagePath))
        Log(run, u"ERR: Database backup: %s", name);
    return made ? OpenTemporaryStream(run) : INVALID_HANDLE_VALUE;
}

void BackUpDatabase(BackupRun& run, const WCHAR* name)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(TextDatabaseFormat, gTextA), name);
    ProgressSetMessage(run.progress, message);
    Log(run, u"INF: Start Database backup: %s", name);

    WCHAR imagePath[MAX_PATH];
    wsprintfW(imagePath, u"\\%s.CDB", name);
    BeginItem(run);
    HANDLE stream = PackDatabase(run, name, imagePath);
    if (stream != INVALID_HANDLE_VALUE) {
        StoreDatabase(run, name, stream);
        DeleteFileW(imagePath);
        DeleteTemporaryStream(run);
        Log(run, u"INF: End Database backup: %s", name);
    }
    EndItem(run, ItemKindDatabase, name);
    ProgressStep(run.progress, 0);
}

}  // namespace

void BackUpDatabases(BackupRun& run)
{
    run.progress = OpenRunProgress(TextDatabases, CountOf(gDatabaseList));
    SetWaitCursor();
    ForEachEntry(gDatabaseList, [&](const EntryBuffer& entry) {
        CopyText(run.itemName, entry.name);
        BackUpDatabase(run, entry.name);
    });
}
