// database_items.cpp - see database_items.h.

#include "database_items.h"

#include "compressed_stream.h"
#include "database_image.h"
#include "questions.h"
#include "run_progress.h"
#include "set_state.h"

#include "ce/text.h"

namespace {

constexpr UINT DatabaseMessageText = 118;
constexpr UINT DatabasesText = 131;

// An image that wasn't dumped may be a file of the user's that has its name: it isn't this run's to delete.
void StoreDatabase(BackupRun& run, const WCHAR* name, const WCHAR* imagePath, BOOL dumped, HANDLE stream)
{
    StoredItem item = BeginEntry(run, ItemKindDatabase, name, nullptr);
    CopyStream(run, item, stream, true, nullptr);
    CloseHandle(stream);
    EndEntry(run, item);
    if (dumped)
        DeleteFileW(imagePath);
    DeleteFileW(run.temporaryPath);
    Log(run, u"INF: End Database backup: %s", name);
}

void BackUpDatabase(BackupRun& run, const WCHAR* name)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(DatabaseMessageText, gTextA), name);
    ProgressSetMessage(run.progress, message);
    Log(run, u"INF: Start Database backup: %s", name);

    // A failed dump still leaves the image to be tried: with none, its packing fails and tells so once more.
    const BOOL dumped = DumpDatabase(name);
    if (!dumped)
        Log(run, u"ERR: Database backup: %s", name);
    WCHAR imagePath[MAX_PATH];
    wsprintfW(imagePath, u"\\%s.CDB", name);
    if (!CompressFile(imagePath, run.temporaryPath))
        Log(run, u"ERR: Database backup: %s", name);
    HANDLE stream = OpenTemporaryStream(run);
    if (stream != INVALID_HANDLE_VALUE)
        StoreDatabase(run, name, imagePath, dumped, stream);
    ProgressStep(run.progress, 0);
}

}  // namespace

void BackUpDatabases(BackupRun& run)
{
    run.progress = OpenRunProgress(DatabasesText, CountOf(gDatabaseList));
    SetWaitCursor();
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = gDatabaseList && gDatabaseList->First(entry.bytes, &length); more;
         more = gDatabaseList->Next(entry.bytes, &length)) {
        CopyText(run.itemName, entry.name);
        BackUpDatabase(run, entry.name);
    }
}
