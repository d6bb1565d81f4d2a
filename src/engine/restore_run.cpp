// restore_run.cpp - see restore_run.h.

#include "restore_run.h"

#include "block_pipeline.h"
#include "compressed_stream.h"
#include "options.h"
#include "questions.h"
#include "restored_items.h"
#include "run_progress.h"
#include "set_state.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/text.h"

namespace {

constexpr UINT FileMessageText = 114;
constexpr UINT FileExistsText = 115;
constexpr UINT RestoringFilesText = 141;
constexpr UINT WarningText = 142;
constexpr UINT NothingToRestoreText = 144;

bool NothingIsListed()
{
    return CountOf(gFileList) == 0 && CountOf(gDatabaseList) == 0 && !gRegistryMarked;
}

DWORD TellNothingToRestore()
{
    MessageBoxW(gMainWindow, LoadText(NothingToRestoreText, gTextA), u"Info", MB_OK);
    return 0;
}

bool AskReplace(const WCHAR* name)
{
    WCHAR question[TextChars + MAX_PATH];
    wsprintfW(question, LoadText(FileExistsText, gTextA), name);
    return MessageBoxW(gMainWindow, question, LoadText(WarningText, gTextB),
                       MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2) == IDYES;
}

// Any mode but ask and skip replaces.
bool PolicyAllows(const WCHAR* name)
{
    const WORD mode = gOptions.restoreMode;
    if (mode != RestoreModeAsk && mode != RestoreModeSkip)
        return true;
    if (GetFileAttributesW(name) == INVALID_FILE_ATTRIBUTES)
        return true;
    return mode == RestoreModeAsk && AskReplace(name);
}

// One file. Its failure is its own: nothing is told, and the run goes on.
void RestoreFile(RestoreRun& run, const EntryBuffer& entry)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(FileMessageText, gTextA), entry.name);
    ProgressSetMessage(run.progress, message);

    SetCursor(nullptr);
    const bool wanted = PolicyAllows(entry.name);
    SetWaitCursor();
    if (wanted && TakeStreamOut(run, entry.bytes, true)) {
        (void)DecompressFile(TemporaryStreamPath, entry.name);
        (void)DeleteFileW(TemporaryStreamPath);
    }
    ProgressStep(run.progress, 0);
}

void RestoreFiles(RestoreRun& run)
{
    run.progress = OpenRunProgress(RestoringFilesText, CountOf(gFileList));
    SetWaitCursor();
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = gFileList && gFileList->First(entry.bytes, &length); more;
         more = gFileList->Next(entry.bytes, &length))
        RestoreFile(run, entry);
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
}

}  // namespace

DWORD RestoreSet(const WCHAR* dataPath, const WCHAR* listPath, DWORD mode)
{
    if (!ShowRestoreDialog(LOWORD(mode), listPath))
        return 0;
    if (NothingIsListed())
        return TellNothingToRestore();

    RestoreRun run;
    run.dataFile = CreateFileW(dataPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (run.dataFile == INVALID_HANDLE_VALUE) {
        SetCursor(nullptr);
        return 1;
    }
    StartPipelineThread();
    RestoreFiles(run);
    RestoreDatabases(run);
    RestoreRegistry(run);
    StopPipelineThread();
    CloseHandle(run.dataFile);
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
    return 1;
}
