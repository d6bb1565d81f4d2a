#include "engine/backup_run.h"

#include "backup_items.h"
#include "choice_details.h"
#include "choice_list.h"
#include "engine/directory_walker.h"
#include "engine/questions.h"
#include "engine/set_paths.h"
#include "run_progress.h"
#include "set/block_pipeline.h"
#include "set/set_state.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/text.h"
#include "ce/time.h"

#include <new>

DWORD gLastSetNumber;

namespace {

constexpr DWORD StorageAttributes = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY;

// Returns whether the short date format of the locale begins with the day. If so, ComposeComment begins the date of the
// set's comment with the day, otherwise with the month.
bool DayComesFirst()
{
    WCHAR format[TextChars] = {};
    GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, format, TextChars);
    return format[0] == u'd';
}

BOOL CollectStorageFolder(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR context)
{
    if ((attributes & StorageAttributes) != StorageAttributes)
        return TRUE;
    WCHAR path[MAX_PATH];
    if (JoinPath(path, folder, name) && SetPathsFit(path))
        AddChoice(*reinterpret_cast<ChoiceList*>(context), path);
    return TRUE;
}

// Lets the user choose a card or the device itself. Returns TRUE after a choice. In that case `storageRoot` is the
// card's path without a trailing backslash, or empty for the device.
BOOL ChooseStorage(WCHAR (&storageRoot)[MAX_PATH])
{
    ChoiceList storages;
    SearchForChoices(TRUE);
    WalkDirectory(u"\\", nullptr, TRUE, TRUE, CollectStorageFolder, reinterpret_cast<UINT_PTR>(&storages));
    SearchForChoices(FALSE);
    AddChoice(storages, LoadText(TextMainDevice, gTextA));
    if (!ChooseFromList(gMainWindow, LoadText(TextSelectStorage, gTextA), storages.characters.data(), storageRoot,
                        DescribeStorage))
        return FALSE;
    if (lstrcmpW(storageRoot, LoadText(TextMainDevice, gTextA)) == 0)
        storageRoot[0] = 0;
    return TRUE;
}

void ReportRunWithoutSet(const BackupRun& run, DWORD error)
{
    WCHAR folder[MAX_PATH];
    FormatSetFolder(folder, run.storageRoot);
    ReportNoSet(folder, error);
}

HANDLE CreateList(const WCHAR* path, DWORD creation, DWORD& error)
{
    const HANDLE list = CreateFileW(path, GENERIC_WRITE, 0, nullptr, creation, 0, nullptr);
    error = list != INVALID_HANDLE_VALUE ? DWORD{ERROR_SUCCESS} : GetLastError();
    return list;
}

// Creates the list file. If it can't be created as a new file, usually because it exists, asks the user whether to
// replace it. If no file was created, `error` is the reason.
HANDLE OpenList(const WCHAR* path, DWORD& error)
{
    HANDLE list = CreateList(path, CREATE_NEW, error);
    if (list != INVALID_HANDLE_VALUE)
        return list;
    SetCursor(nullptr);
    if (gRunQuestions.mayReplaceSet(path))
        list = CreateList(path, CREATE_ALWAYS, error);
    SetWaitCursor();
    return list;
}

// Creates the list file with the first number that is free or whose set the user agrees to replace. If no list file is
// created, returns false and reports the first of these reasons that applies: the job is to stop, the folder couldn't
// be made, creating a list file failed with an error other than ERROR_FILE_EXISTS, or all numbers are taken.
bool SettleNumber(BackupRun& run)
{
    WCHAR path[MAX_PATH];
    DWORD reason = run.folderError != ERROR_SUCCESS ? run.folderError : DWORD{ERROR_FILE_EXISTS};
    for (run.number = FirstSetNumber; run.number <= LastSetNumber; run.number++) {
        FormatListPath(path, run.storageRoot, run.number);
        DWORD error = ERROR_SUCCESS;
        run.listFile = OpenList(path, error);
        if (run.listFile != INVALID_HANDLE_VALUE)
            return true;
        if (JobIsToStop()) {
            reason = ERROR_CANCELLED;
            break;
        }
        if (reason == ERROR_FILE_EXISTS)
            reason = error;
    }
    ReportRunWithoutSet(run, reason);
    return false;
}

bool ReplaceList(BackupRun& run)
{
    WCHAR path[MAX_PATH];
    FormatListPath(path, run.storageRoot, run.number);
    DWORD error = ERROR_SUCCESS;
    run.listFile = CreateList(path, CREATE_ALWAYS, error);
    if (run.listFile == INVALID_HANDLE_VALUE)
        ReportRunWithoutSet(run, error);
    return run.listFile != INVALID_HANDLE_VALUE;
}

// Creates the log and the data file. A data file with this number can exist even if the run has found no list file with
// this number. It is replaced without a question. Deletes the checksum file of an old set with this number. Otherwise
// the new set wouldn't match these checksums and would be treated as damaged. If the data file can't be created,
// reports that there is no set and returns false.
bool OpenLogAndData(BackupRun& run)
{
    WCHAR path[MAX_PATH];
    FormatSumsPath(path, run.storageRoot, run.number);
    (void)DeleteFileW(path);
    FormatLogPath(path, run.storageRoot, run.number);
    run.log = new (std::nothrow) BackupLog(path);
    FormatDataPath(path, run.storageRoot, run.number);
    run.dataFile = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (run.dataFile != INVALID_HANDLE_VALUE) {
        run.writesListAfterData = WriteAfter(run.listFile, run.dataFile) != FALSE;
        (void)MarkUnfinished(run.listFile);
        return true;
    }
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

// Flushes the set to the disk, because the card can be taken out after the run. Flushes the data file first. Only if
// this succeeds, the list is finished. So on the disk, a finished list has no entry whose data isn't there. If a call
// fails, the platform reports the file by its name.
void FlushSet(BackupRun& run)
{
    const bool dataIsThere = run.dataFile == INVALID_HANDLE_VALUE || FlushFileBuffers(run.dataFile);
    if (run.listFile == INVALID_HANDLE_VALUE)
        return;
    if (dataIsThere)
        (void)MarkFinished(run.listFile);
    (void)FlushFileBuffers(run.listFile);
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
    EndRun();
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
    // A failure to make the folder doesn't end the run yet. If the folder is missing, creating the list file fails too,
    // and that ends the run.
    if (!CreateDirectoryW(folder, nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
        run.folderError = GetLastError();
    const bool listed = run.number != 0 ? ReplaceList(run) : SettleNumber(run);
    if (listed && OpenLogAndData(run) && WriteHead(run)) {
        gLastSetNumber = run.number;
        WCHAR listPath[MAX_PATH];
        FormatListPath(listPath, run.storageRoot, run.number);
        ReportRunBegins(RunStores, listPath);
        (void)DeclareTemporaryFile(run.temporaryPath);
        StartPipelineThread();
        BackUpItems(run);
        StopPipelineThread();
        (void)WithdrawTemporaryFile(run.temporaryPath);
    }
}

}  // namespace

// Cuts the user's text if the comment would have more than 259 characters, including the lines before this text.
void ComposeComment()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    const bool dayFirst = DayComesFirst();
    WCHAR composed[TextChars];
    wsprintfW(composed, LoadText(TextCommentFormat, gTextA), dayFirst ? now.wDay : now.wMonth,
              dayFirst ? now.wMonth : now.wDay, now.wYear, now.wHour, now.wMinute, gComment);
    CopyText(gComment, composed);
}

void BackUpTo(const BackupTarget& target, DWORD mode)
{
    static BackupRun run;  // too large for the stack, and there is one run at a time
    run = {};
    run.ofWholeDevice = LOWORD(mode) != BackupSelectedItems;
    CopyText(run.storageRoot, target.root);
    run.number = target.replaced;
    gLastSetNumber = 0;
    gSavedRegistryMarked = gRegistryMarked;
    MakeSet(run);
    CloseRun(run);
}

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
    BackupTarget target = {};
    if (ChooseStorage(target.root))
        BackUpTo(target, mode);
    return 0;
}
