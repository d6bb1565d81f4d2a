// restore_run.cpp - see restore_run.h.

#include "engine/restore_run.h"

#include "engine/options.h"
#include "engine/questions.h"
#include "restored_items.h"
#include "run_progress.h"
#include "set/block_pipeline.h"
#include "set/compressed_stream.h"
#include "set/set_state.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/text.h"

#include <algorithm>

namespace {


bool NothingIsListed()
{
    return CountOf(gFileList) == 0 && CountOf(gDatabaseList) == 0 && !gRegistryMarked;
}

// A full restore of a list that has nothing in it brings nothing back, though that was asked for.
DWORD TellNothingToRestore(const WCHAR* listPath, WORD mode)
{
    if (mode == RestoreFull)
        ReportItem(OutcomeNotRestored, OutcomeFile, listPath, ERROR_NO_DATA);
    MessageBoxW(gMainWindow, LoadText(TextNothingToRestore, gTextA), u"Info", MB_OK);
    return 0;
}

bool AskReplace(const WCHAR* name)
{
    WCHAR question[TextChars + MAX_PATH];
    wsprintfW(question, LoadText(TextFileExistsFormat, gTextA), name);
    return MessageBoxW(gMainWindow, question, LoadText(TextWarning, gTextB),
                       MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2) == IDYES;
}

// Whether no file of that name exists. A failed call with any other reason may hide one, so the file counts as there.
bool IsMissing(const WCHAR* name, DWORD& error)
{
    error = ERROR_SUCCESS;
    if (GetFileAttributesW(name) != INVALID_FILE_ATTRIBUTES)
        return false;
    error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

// Any mode but ask and skip replaces.
bool PolicyAllows(RestoreRun& run, const WCHAR* name)
{
    const WORD mode = gOptions.restoreMode;
    if (mode != RestoreModeAsk && mode != RestoreModeSkip)
        return true;
    DWORD error = ERROR_SUCCESS;
    if (IsMissing(name, error))
        return true;
    if (mode == RestoreModeAsk)
        return AskReplace(name);
    if (error != ERROR_SUCCESS)
        NoteFailure(run.item, error);  // skipped for a file that nobody knows to be there
    return false;
}

void UnpackFile(RestoreRun& run, const WCHAR* name)
{
    StreamOutcome unpacked;
    (void)DecompressFile(TemporaryStreamPath, name, &unpacked);
    if (!unpacked.whole)
        NoteFailure(run.item, unpacked.error);
    (void)DeleteFileW(TemporaryStreamPath);
}

// One file. Its failure is its own: it is reported, and the run goes on.
void RestoreFile(RestoreRun& run, const EntryBuffer& entry)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(TextFileFormat, gTextA), entry.name);
    ProgressSetMessage(run.progress, message);

    SetCursor(nullptr);
    BeginItem(run);
    const bool wanted = PolicyAllows(run, entry.name);
    SetWaitCursor();
    if (wanted && TakeStreamOut(run, entry.bytes, true))
        UnpackFile(run, entry.name);
    EndItem(run, ItemKindFile, entry.name);
    ProgressStep(run.progress, 0);
}

// Without a data file.
void ReportNothingRestored(DWORD error)
{
    const auto report = [error](ItemList* list, DWORD kind) {
        ForEachEntry(list, [&](const EntryBuffer& entry) { ReportItem(OutcomeNotRestored, kind, entry.name, error); });
    };
    report(gFileList, OutcomeFile);
    report(gDatabaseList, OutcomeDatabase);
    if (gRegistryMarked)
        ReportItem(OutcomeNotRestored, OutcomeRegistry, u"", error);
}

// The set has data that no entry names: entries are missing at the list's end.
void ReportDataWithoutEntry(HANDLE dataFile, const WCHAR* listPath)
{
    DWORD end = gRegistryMarked ? EntryEndOffset(gRegistryEntry.bytes) : 0;
    for (ItemList* list : {gFileList, gDatabaseList})
        ForEachEntry(list, [&](const EntryBuffer& entry) { end = std::max(end, EntryEndOffset(entry.bytes)); });
    const DWORD bytes = SetFilePointer(dataFile, 0, nullptr, FILE_END);
    if (bytes != INVALID_SET_FILE_POINTER && bytes > end)
        ReportItem(OutcomeNotRestored, OutcomeFile, listPath, ERROR_FILE_CORRUPT);
}

void RestoreFiles(RestoreRun& run)
{
    run.progress = OpenRunProgress(TextRestoringFiles, CountOf(gFileList));
    SetWaitCursor();
    ForEachEntry(gFileList, [&](const EntryBuffer& entry) { RestoreFile(run, entry); });
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
}

}  // namespace

DWORD RestoreSet(const WCHAR* dataPath, const WCHAR* listPath, DWORD mode)
{
    if (!ShowRestoreDialog(LOWORD(mode), listPath))
        return 0;
    if (NothingIsListed())
        return TellNothingToRestore(listPath, LOWORD(mode));

    RestoreRun run;
    run.dataFile = CreateFileW(dataPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (run.dataFile == INVALID_HANDLE_VALUE) {
        ReportNothingRestored(GetLastError());
        SetCursor(nullptr);
        return 1;
    }
    if (LOWORD(mode) == RestoreFull)
        ReportDataWithoutEntry(run.dataFile, listPath);
    StartPipelineThread();
    RestoreFiles(run);
    RestoreDatabases(run);
    RestoreRegistry(run);
    StopPipelineThread();
    CloseHandle(run.dataFile);
    (void)DeclareTemporaryFile(nullptr);
    (void)FlushChangedVolumes();  // all of it is on the disk before the run ends; the platform reports a failure
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
    return 1;
}
