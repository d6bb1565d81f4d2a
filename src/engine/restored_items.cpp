// restored_items.cpp - see restored_items.h.

#include "restored_items.h"

#include "compressed_stream.h"
#include "database_image.h"
#include "questions.h"
#include "registry_file.h"
#include "run_progress.h"
#include "set_state.h"

#include "ce/dialog.h"
#include "ce/text.h"

namespace {

constexpr UINT RestoringDatabasesText = 117;
constexpr UINT DatabaseMessageText = 118;
constexpr UINT RegistryText = 119;
constexpr UINT RegistryRestoredText = 120;
constexpr UINT RestoreCaptionText = 121;
const WCHAR RegistryFilePath[] = u"\\BKREG.TMP";

// 1 if what stands at the path now comes from the stream, as far as it went. What is no stream at all leaves a file of
// the user's that has this name alone, and then that isn't to be used or deleted.
bool UnpackTo(const WCHAR* path)
{
    const bool stoodThere = GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
    BOOL made = FALSE;
    (void)DecompressFile(TemporaryStreamPath, path, &made);
    return made || !stoodThere;
}

void RebuildDatabase(RestoreRun& run, const EntryBuffer& entry)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(DatabaseMessageText, gTextA), entry.name);
    ProgressSetMessage(run.progress, message);
    if (TakeStreamOut(run, entry.bytes, true)) {
        WCHAR imagePath[MAX_PATH];
        wsprintfW(imagePath, u"\\%s.CDB", entry.name);
        if (UnpackTo(imagePath)) {
            (void)RestoreDatabase(imagePath);
            (void)DeleteFileW(imagePath);
        }
        (void)DeleteFileW(TemporaryStreamPath);
    }
    ProgressStep(run.progress, 0);
}

}  // namespace

void RestoreDatabases(RestoreRun& run)
{
    run.progress = OpenRunProgress(RestoringDatabasesText, CountOf(gDatabaseList));
    SetWaitCursor();
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = gDatabaseList && gDatabaseList->First(entry.bytes, &length); more;
         more = gDatabaseList->Next(entry.bytes, &length))
        RebuildDatabase(run, entry);
}

void RestoreRegistry(RestoreRun& run)
{
    if (!gRegistryMarked)
        return;
    ProgressSetMessage(run.progress, LoadText(RegistryText, gTextA));
    if (!TakeStreamOut(run, gRegistryEntry.bytes, false))
        return;
    if (UnpackTo(RegistryFilePath)) {
        if (gRegRestoreFile)
            gRegRestoreFile(RegistryFilePath);
        (void)DeleteFileW(RegistryFilePath);  // as a rule the platform has taken it over already
    }
    (void)DeleteFileW(TemporaryStreamPath);
    SetCursor(nullptr);
    MessageBoxW(gMainWindow, LoadText(RegistryRestoredText, gTextA), LoadText(RestoreCaptionText, gTextB), MB_OK);
}
