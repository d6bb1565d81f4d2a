// backup_run.cpp - see backup_run.h.

#include "engine/backup_run.h"

#include "database_items.h"
#include "engine/questions.h"
#include "file_items.h"
#include "registry_file.h"
#include "run_progress.h"
#include "set/block_pipeline.h"
#include "set/set_state.h"
#include "set_comment.h"
#include "set_paths.h"
#include "storage_choice.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/text.h"

#include <new>

DWORD gLastSetNumber;

namespace {

constexpr WORD SelectedItemsKind = 2;

bool NothingIsMarked()
{
    return CountOf(gFileList) == 0 && CountOf(gDatabaseList) == 0 && !gRegistryMarked;
}

void ReportRunWithoutSet(const BackupRun& run, DWORD error)
{
    WCHAR folder[MAX_PATH];
    FormatSetFolder(folder, run.storageRoot);
    ReportNoSet(folder, error);
}

bool AskOverride(const WCHAR* listPath)
{
    WCHAR question[TextChars + MAX_PATH];
    wsprintfW(question, LoadText(TextOverrideFormat, gTextA), listPath);
    return MessageBoxW(gMainWindow, question, u"Info?", MB_YESNO | MB_DEFBUTTON2) == IDYES;
}

HANDLE CreateList(const WCHAR* path, DWORD creation, DWORD& error)
{
    const HANDLE list = CreateFileW(path, GENERIC_WRITE, 0, nullptr, creation, 0, nullptr);
    error = list != INVALID_HANDLE_VALUE ? DWORD{ERROR_SUCCESS} : GetLastError();
    return list;
}

// The file of this number, new or, after a Yes, in place of the old one. `error`: why it can't be had.
HANDLE OpenList(const WCHAR* path, DWORD& error)
{
    HANDLE list = CreateList(path, CREATE_NEW, error);
    if (list != INVALID_HANDLE_VALUE)
        return list;
    SetCursor(nullptr);
    if (AskOverride(path))
        list = CreateList(path, CREATE_ALWAYS, error);
    SetWaitCursor();
    return list;
}

bool SettleNumber(BackupRun& run)
{
    WCHAR path[MAX_PATH];
    DWORD reason = ERROR_FILE_EXISTS;  // every number is taken, unless a list can't be made for another reason
    if (run.folderError != ERROR_SUCCESS)
        reason = run.folderError;
    for (run.number = FirstSetNumber; run.number <= LastSetNumber; run.number++) {
        FormatListPath(path, run.storageRoot, run.number);
        DWORD error = ERROR_SUCCESS;
        run.listFile = OpenList(path, error);
        if (run.listFile != INVALID_HANDLE_VALUE)
            return true;
        if (reason == ERROR_FILE_EXISTS)
            reason = error;
    }
    ReportRunWithoutSet(run, reason);
    return false;
}

// A data file of that number is replaced, also when the list file is new.
bool OpenLogAndData(BackupRun& run)
{
    WCHAR path[MAX_PATH];
    FormatLogPath(path, run.storageRoot, run.number);
    run.log = new (std::nothrow) BackupLog(path);
    FormatDataPath(path, run.storageRoot, run.number);
    run.dataFile = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (run.dataFile != INVALID_HANDLE_VALUE)
        return true;
    const DWORD error = GetLastError();
    Log(run, u"ERR: Backup File create(%08x)", error);
    ReportRunWithoutSet(run, error);
    return false;
}

bool WriteHead(BackupRun& run)
{
    if (WriteListHead(run.listFile, gComment))
        return true;
    const DWORD error = GetLastError();
    Log(run, u"ERR: Backup List Write(%08x)", error);
    ReportRunWithoutSet(run, error);
    return false;
}

// All of the set is on the disk before the run ends, so that the card may be taken out then. The data goes first: a
// list on the disk never names bytes that aren't. The platform reports a failure by the name of the file.
void FlushSet(BackupRun& run)
{
    for (HANDLE file : {run.dataFile, run.listFile}) {
        if (file != INVALID_HANDLE_VALUE)
            (void)FlushFileBuffers(file);
    }
}

void CloseRun(BackupRun& run)
{
    gRegistryMarked = gSavedRegistryMarked;
    FlushSet(run);
    if (run.log) {
        run.log->Close();
        delete run.log;
    }
    if (run.listFile != INVALID_HANDLE_VALUE)
        CloseHandle(run.listFile);
    if (run.dataFile != INVALID_HANDLE_VALUE)
        CloseHandle(run.dataFile);
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
}

void MakeSet(BackupRun& run)
{
    run.progress = OpenRunProgress(TextBackingUpFiles, CountOf(gFileList));
    SetWaitCursor();
    WCHAR folder[MAX_PATH];
    FormatSetFolder(folder, run.storageRoot);
    FormatTemporaryPath(run.temporaryPath, run.storageRoot);
    // Whatever becomes of it, the list file decides.
    if (!CreateDirectoryW(folder, nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
        run.folderError = GetLastError();
    if (SettleNumber(run) && OpenLogAndData(run) && WriteHead(run)) {
        gLastSetNumber = run.number;
        StartPipelineThread();
        BackUpFiles(run);
        BackUpDatabases(run);
        BackUpRegistry(run);
        (void)DeclareTemporaryFile(nullptr);
        StopPipelineThread();
    }
}

}  // namespace

DWORD RunBackup(DWORD mode)
{
    gLastSetNumber = 0;
    if (NothingIsMarked()) {
        MessageBoxW(gMainWindow, LoadText(TextNothingToBackUp, gTextA), u"Info", MB_OK);
        return 0;
    }
    gSavedRegistryMarked = gRegistryMarked;
    if (LOWORD(mode) == BackupSelectedItems && !ShowBackupDialog(SelectedItemsKind, gComment)) {
        gRegistryMarked = gSavedRegistryMarked;
        return 0;
    }
    ComposeComment();
    static BackupRun run;  // large, and one run at a time
    run = {};
    run.ofWholeDevice = LOWORD(mode) != BackupSelectedItems;
    if (ChooseStorage(run.storageRoot))
        MakeSet(run);
    CloseRun(run);
    return 0;
}
