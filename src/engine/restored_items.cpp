// restored_items.cpp - see restored_items.h.

#include "restored_items.h"

#include "engine/questions.h"
#include "engine/registry_calls.h"
#include "run_progress.h"
#include "set/compressed_stream.h"
#include "set/database_image.h"
#include "set/set_state.h"

#include "ce/dialog.h"
#include "ce/text.h"

namespace {

const WCHAR RegistryFilePath[] = u"\\BKREG.TMP";

// 1 if what stands at the path now comes from the stream, as far as it went. What is no stream at all leaves a file of
// the user's that has this name alone, and then that isn't to be used or deleted.
bool UnpackTo(RestoreRun& run, const WCHAR* path)
{
    const bool stoodThere = GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
    (void)DeclareTemporaryFile(path);
    StreamOutcome unpacked;
    (void)DecompressFile(TemporaryStreamPath, path, &unpacked);
    if (!unpacked.whole)
        NoteFailure(run.item, unpacked.error);
    if (unpacked.made && stoodThere)
        ReportReplacedFile(path);
    return unpacked.made || !stoodThere;
}

// From the image that stands at the path. That the user declines the replacement of a database is no failure.
void RebuildFrom(RestoreRun& run, const WCHAR* imagePath)
{
    SetLastError(ERROR_SUCCESS);
    if (RestoreDatabase(imagePath) == RestoreFailed)
        NoteFailure(run.item, GetLastError());
    (void)DeleteFileW(imagePath);
}

// Characters of the longest folder on the way to a file that is there; 0 for the root.
std::size_t ExistingFolderChars(const WCHAR* path)
{
    WCHAR folder[MAX_PATH];
    for (std::size_t end = CopyText(folder, path); end > 0; end--) {
        if (folder[end] != u'\\')
            continue;
        folder[end] = 0;
        if (GetFileAttributesW(folder) != INVALID_FILE_ATTRIBUTES)
            return end;
    }
    return 0;
}

// The folders that were made for an image of a database with a backslash in its name go with it, unless something else
// has come into them.
void RemoveFoldersBehind(const WCHAR* path, std::size_t existing)
{
    WCHAR folder[MAX_PATH];
    for (std::size_t end = CopyText(folder, path); end > existing && end > 0; end--) {
        if (folder[end] != u'\\')
            continue;
        folder[end] = 0;
        (void)RemoveDirectoryW(folder);
    }
}

void RebuildDatabase(RestoreRun& run, const EntryBuffer& entry)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(TextDatabaseFormat, gTextA), entry.name);
    ProgressSetMessage(run.progress, message);
    BeginItem(run);
    if (TakeStreamOut(run, entry.bytes, true)) {
        WCHAR imagePath[MAX_PATH];
        wsprintfW(imagePath, u"\\%s.CDB", entry.name);
        const std::size_t existing = ExistingFolderChars(imagePath);
        if (UnpackTo(run, imagePath))
            RebuildFrom(run, imagePath);
        RemoveFoldersBehind(imagePath, existing);
        (void)DeleteFileW(TemporaryStreamPath);
    }
    EndItem(run, ItemKindDatabase, entry.name);
    ProgressStep(run.progress, 0);
}

void HandOverRegistry(RestoreRun& run)
{
    if (UnpackTo(run, RegistryFilePath)) {
        SetLastError(ERROR_SUCCESS);
        if (!gRegRestoreFile || !gRegRestoreFile(RegistryFilePath))
            NoteFailure(run.item, GetLastError());
        (void)DeleteFileW(RegistryFilePath);  // as a rule the platform has taken it over already
    }
    (void)DeleteFileW(TemporaryStreamPath);
}

}  // namespace

void RestoreDatabases(RestoreRun& run)
{
    run.progress = OpenRunProgress(TextRestoringDatabases, CountOf(gDatabaseList));
    SetWaitCursor();
    ForEachEntry(gDatabaseList, [&](const EntryBuffer& entry) { RebuildDatabase(run, entry); });
}

void RestoreRegistry(RestoreRun& run)
{
    if (!gRegistryMarked)
        return;
    ProgressSetMessage(run.progress, LoadText(TextRegistry, gTextA));
    BeginItem(run);
    const bool taken = TakeStreamOut(run, gRegistryEntry.bytes, false);
    if (taken)
        HandOverRegistry(run);
    EndItem(run, ItemKindRegistry, u"");
    if (!taken)
        return;
    SetCursor(nullptr);
    MessageBoxW(gMainWindow, LoadText(TextRegistryRestored, gTextA), LoadText(TextRestore, gTextB), MB_OK);
}
