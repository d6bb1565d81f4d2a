// database_items.cpp - see database_items.h.

#include "database_items.h"

#include "database_image.h"
#include "questions.h"
#include "run_progress.h"
#include "set_state.h"

#include "ce/text.h"

namespace {

constexpr UINT DatabaseMessageText = 118;
constexpr UINT DatabasesText = 131;

void StoreDatabase(BackupRun& run, const WCHAR* name, HANDLE stream)
{
    StoredItem item = BeginEntry(run, ItemKindDatabase, name, nullptr);
    CopyStream(run, item, stream, true, nullptr);
    CloseHandle(stream);
    EndEntry(run, item);
}

// 1 if an image was begun. Otherwise what stands at its path is a file of the user's that has the image's name: that is
// neither stored nor deleted.
BOOL MakeImage(BackupRun& run, const WCHAR* name)
{
    BOOL made = FALSE;
    if (!DumpDatabase(name, &made))
        Log(run, u"ERR: Database backup: %s", name);
    return made;
}

void BackUpDatabase(BackupRun& run, const WCHAR* name)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(DatabaseMessageText, gTextA), name);
    ProgressSetMessage(run.progress, message);
    Log(run, u"INF: Start Database backup: %s", name);

    WCHAR imagePath[MAX_PATH];
    wsprintfW(imagePath, u"\\%s.CDB", name);
    // After a failed dump its image is still tried. That there is none is told too.
    const BOOL made = MakeImage(run, name);
    if (!made || !PackItem(run, imagePath))
        Log(run, u"ERR: Database backup: %s", name);
    HANDLE stream = made ? OpenTemporaryStream(run) : INVALID_HANDLE_VALUE;
    if (stream != INVALID_HANDLE_VALUE) {
        StoreDatabase(run, name, stream);
        DeleteFileW(imagePath);
        DeleteTemporaryStream(run);
        Log(run, u"INF: End Database backup: %s", name);
    }
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
