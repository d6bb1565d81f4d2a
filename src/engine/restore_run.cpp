#include "engine/restore_run.h"

#include "choice_details.h"
#include "choice_list.h"
#include "engine/directory_walker.h"
#include "engine/options.h"
#include "engine/questions.h"
#include "engine/registry_calls.h"
#include "item_outcome.h"
#include "piece_copy.h"
#include "run_progress.h"
#include "set/block_pipeline.h"
#include "set/compressed_stream.h"
#include "set/database_image.h"
#include "set/list_file.h"
#include "set/set_state.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/text.h"

#include <algorithm>

namespace {

// The temporary files of a restore. Both are in the device's root, even if the set is on a card. Each exists only while
// one item is restored.
const WCHAR TemporaryStreamPath[] = u"\\BK000.TMP";
const WCHAR RestoredRegistryPath[] = u"\\BKREG.TMP";

// Exists during one restore only.
struct RestoreRun {
    HANDLE dataFile = INVALID_HANDLE_VALUE;
    HWND progress = nullptr;
    DWORD restoredBytes = 0;      // bytes of files and databases that were copied out of the data file so far
    ItemOutcome item;             // outcome of the current item
    bool declined = false;        // the current item isn't restored: the options or the user keep what the device has
    bool lastWasMissing = false;  // the file that was looked up last didn't exist
};

// The size in bytes of the longest stream that RestoreIfMissing copies out of the data file. RestoreIfMissing copies
// before the run knows whether the file may be restored. If it may not, the copy was in vain, so the copy must be
// short.
constexpr DWORD MostTriedBytes = 16384;

// What the progress window shows while a stream is copied out.
enum class Shown { Nothing, Step, StepAndCount };

// Restoring one item. The run copies the item's stream from the data file to a temporary file, the temporary stream.
// Then it unpacks the temporary stream.

// Restores one item: shows it, calls restore(), and reports the item if it isn't whole.
template <class Restore>
void RestoreItem(RestoreRun& run, const ItemKind& kind, const EntryBuffer& entry, const Restore& restore)
{
    ShowItem(run.progress, kind, entry.name);
    run.item = {};
    run.declined = false;
    restore();
    if (!IsWhole(run.item))
        ReportItem(OutcomeNotRestored, kind.reportedAs, entry.name, run.item.error);
    ReportItemDone(kind.reportedAs, EntryStreamBytes(entry.bytes), IsWhole(run.item) && !run.declined);
}

void CopyStream(RestoreRun& run, HANDLE temporary, DWORD offset, DWORD end, Shown shown)
{
    ByteCounter counter = StartByteCounter(run.progress, TextRestoredCountFormat);
    const auto copied = [&](DWORD bytes, DWORD /*unused*/) {
        offset += bytes;
        if (shown == Shown::StepAndCount) {
            run.restoredBytes += bytes;
            ShowBytes(counter, run.restoredBytes);
        }
    };
    const DWORD most = end > offset ? end - offset : 0;
    CopyPieces(
        run.dataFile, temporary, most, run.item, [&] { NoteFailure(run.item, GetLastError()); }, copied);
    if (offset != end)
        NoteFailure(run.item, ERROR_FILE_CORRUPT);
}

HANDLE CreateTemporaryStream()
{
    const HANDLE temporary = CreateFileW(TemporaryStreamPath, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (temporary != INVALID_HANDLE_VALUE && GetLastError() == ERROR_ALREADY_EXISTS)
        ReportReplacedFile(TemporaryStreamPath);
    return temporary;
}

// Copies the bytes of `entry` to the temporary stream, or fewer if the data file ends earlier. Returns false if no
// temporary stream was created. Otherwise the caller must delete the temporary stream.
bool CopyStreamOut(RestoreRun& run, const EntryBuffer& entry, Shown shown)
{
    const DWORD start = EntryStartOffset(entry.bytes);
    if (SetFilePointer(run.dataFile, static_cast<LONG>(start), nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) {
        NoteFailure(run.item, GetLastError());
        return false;
    }
    const HANDLE temporary = CreateTemporaryStream();
    if (temporary == INVALID_HANDLE_VALUE) {
        NoteFailure(run.item, GetLastError());
        return false;
    }
    if (shown != Shown::Nothing)
        StepRunProgress(run.progress);
    CopyStream(run, temporary, start, EntryEndOffset(entry.bytes), shown);
    if (!CloseHandle(temporary))
        NoteFailure(run.item, GetLastError());
    return true;
}

// Unpacks the temporary stream into a file. Returns whether the file was created. For example, it isn't created if the
// stream has no magic, if the path can't be opened for writing, or if `keepsOld` is true and a file exists at the path.
bool Unpack(RestoreRun& run, const WCHAR* path, bool keepsOld = false)
{
    StreamOutcome unpacked;
    (void)DecompressFile(TemporaryStreamPath, path, &unpacked, keepsOld);
    if (!unpacked.whole)
        NoteFailure(run.item, unpacked.error);
    return unpacked.made != FALSE;
}

// Unpacks into a temporary file. Returns false if the temporary file wasn't created and a file of the user may be at
// the path. In that case the caller must neither use nor delete a file at the path.
bool UnpackToTemporaryFile(RestoreRun& run, const WCHAR* path)
{
    const TemporaryFile file = ExpectTemporaryFile(path);
    return IsOwnFile(file, Unpack(run, path));
}

// Restoring files.

// Asks the user whether the file may be replaced. The user can also stop the run at this question. The answer is then
// treated as No, and the file is reported as not reached.
bool AskReplace(const WCHAR* name)
{
    if (gRunQuestions.mayReplaceFile(name))
        return true;
    (void)StopsBefore(KindOf(ItemKindFile), name);
    return false;
}

// Returns whether the device has no file of that name. If this can't be found out, returns false, and `error` is the
// reason.
bool IsMissing(const WCHAR* name, DWORD& error)
{
    error = ERROR_SUCCESS;
    if (IsNothingAt(name))
        return true;
    if (GetFileAttributesW(name) != INVALID_FILE_ATTRIBUTES)
        return false;
    error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool OptionsReplace()
{
    return gOptions.restoreMode != RestoreModeAsk && gOptions.restoreMode != RestoreModeSkip;
}

bool OptionsAllow(RestoreRun& run, const WCHAR* name)
{
    if (OptionsReplace())
        return true;
    DWORD error = ERROR_SUCCESS;
    run.lastWasMissing = IsMissing(name, error);
    if (run.lastWasMissing)
        return true;
    if (gOptions.restoreMode == RestoreModeAsk)
        return AskReplace(name);
    if (error != ERROR_SUCCESS)
        NoteFailure(run.item, error);  // skipped, although it isn't known whether the file exists
    return false;
}

bool IsToRestore(RestoreRun& run, const WCHAR* name)
{
    SetCursor(nullptr);
    run.declined = !OptionsAllow(run, name);
    SetWaitCursor();
    return !run.declined;
}

void ShowRestored(RestoreRun& run, DWORD bytes)
{
    StepRunProgress(run.progress);
    ByteCounter counter = StartByteCounter(run.progress, TextRestoredCountFormat);
    for (DWORD shown = 0; shown < bytes; shown += PieceBytes) {
        run.restoredBytes += std::min(PieceBytes, bytes - shown);
        ShowBytes(counter, run.restoredBytes);
    }
}

// Restores a small file that probably doesn't exist on the device yet, since the file that was looked up last didn't
// exist either. The file isn't looked up first, which saves a call on the host's file system. If the file exists,
// creating it as a new file fails. Returns false if the file wasn't made. In that case no file has changed, and nothing
// was shown.
bool RestoreIfMissing(RestoreRun& run, const EntryBuffer& entry)
{
    const DWORD bytes = EntryStreamBytes(entry.bytes);
    if (!run.lastWasMissing || bytes > MostTriedBytes)
        return false;
    bool made = false;
    if (CopyStreamOut(run, entry, Shown::Nothing)) {
        made = IsWhole(run.item) && Unpack(run, entry.name, true);
        (void)DeleteFileW(TemporaryStreamPath);
    }
    if (made)
        ShowRestored(run, bytes);
    else
        run.item = {};
    return made;
}

void RestoreFile(RestoreRun& run, const EntryBuffer& entry)
{
    RestoreItem(run, KindOf(ItemKindFile), entry, [&] {
        if (RestoreIfMissing(run, entry))
            return;
        if (!IsToRestore(run, entry.name) || !CopyStreamOut(run, entry, Shown::StepAndCount))
            return;
        (void)Unpack(run, entry.name);
        (void)DeleteFileW(TemporaryStreamPath);
    });
}

// Calls restore(run, entry) for each item in the list of this kind. Opens a progress window with the text `title`, and
// leaves the window open.
void RestoreListed(RestoreRun& run, const ItemKind& kind, UINT title, void (*restore)(RestoreRun&, const EntryBuffer&))
{
    run.progress = OpenRunProgress(title, CountOf(*kind.list));
    SetWaitCursor();
    ForEachEntry(*kind.list, [&](const EntryBuffer& entry) {
        if (StopsBefore(kind, entry.name))
            return;
        restore(run, entry);
        StepRunProgress(run.progress);
    });
}

void RestoreFiles(RestoreRun& run)
{
    RestoreListed(run, KindOf(ItemKindFile), TextRestoringFiles, RestoreFile);
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
}

// Restoring databases. The stream of a database is unpacked to an image file, and the database is made from this file.
// The image is in the root or, if the name of the database has backslashes, in a folder below the root. If the database
// already exists, RestoreDatabase asks the user whether to replace it.

// Finds the deepest existing folder among the folders in which `path` lies. Returns the length of that folder's path in
// characters, or 0 if only the root exists.
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

// Removes the folders in which `path` lies, as far as they are empty. Begins with the deepest one, and keeps each
// folder whose own path has at most `existing` characters.
void RemoveNewFolders(const WCHAR* path, std::size_t existing)
{
    WCHAR folder[MAX_PATH];
    for (std::size_t end = CopyText(folder, path); end > existing && end > 0; end--) {
        if (folder[end] != u'\\')
            continue;
        folder[end] = 0;
        (void)RemoveDirectoryW(folder);
    }
}

// Makes the database from its image and deletes the image. RestoreDatabase asks the user before it replaces a database.
// If the user refuses, this isn't a failure. If the user stops the run at this question, the database is reported as
// not reached.
void MakeDatabase(RestoreRun& run, const WCHAR* imagePath, const WCHAR* name)
{
    SetLastError(ERROR_SUCCESS);
    const RestoreResult result = RestoreDatabase(imagePath);
    if (result == RestoreFailed)
        NoteFailure(run.item, GetLastError());
    run.declined = result == RestoreDeclined;
    if (run.declined)
        (void)StopsBefore(KindOf(ItemKindDatabase), name);
    (void)DeleteFileW(imagePath);
}

void RestoreDatabaseItem(RestoreRun& run, const EntryBuffer& entry)
{
    RestoreItem(run, KindOf(ItemKindDatabase), entry, [&] {
        if (!CopyStreamOut(run, entry, Shown::StepAndCount))
            return;
        WCHAR imagePath[MAX_PATH];
        wsprintfW(imagePath, u"\\%s.CDB", entry.name);
        // If the database's name has backslashes, unpacking makes folders for the image.
        const std::size_t existing = ExistingFolderChars(imagePath);
        if (UnpackToTemporaryFile(run, imagePath))
            MakeDatabase(run, imagePath, entry.name);
        (void)WithdrawTemporaryFile(imagePath);
        RemoveNewFolders(imagePath, existing);
        (void)DeleteFileW(TemporaryStreamPath);
    });
}

// Leaves the progress window open, because RestoreRegistry continues to use it.
void RestoreDatabases(RestoreRun& run)
{
    RestoreListed(run, KindOf(ItemKindDatabase), TextRestoringDatabases, RestoreDatabaseItem);
}

// Restoring the registry. Its stream is unpacked to a file, and the platform restores the registry from this file.

void PassRegistryOn(RestoreRun& run)
{
    if (UnpackToTemporaryFile(run, RestoredRegistryPath)) {
        SetLastError(ERROR_SUCCESS);
        if (!gRegRestoreFile || !gRegRestoreFile(RestoredRegistryPath))
            NoteFailure(run.item, GetLastError());
        // If the platform has accepted the registry, it has already removed the file. Then this deletion fails.
        (void)DeleteFileW(RestoredRegistryPath);
    }
    (void)WithdrawTemporaryFile(RestoredRegistryPath);
    (void)DeleteFileW(TemporaryStreamPath);
}

// Restores the registry if the restore includes it. If the temporary stream was created, asks the user afterwards to
// restart the device. The user is asked even if the platform couldn't restore the registry. This failure is also
// reported.
void RestoreRegistry(RestoreRun& run)
{
    if (!gRegistryMarked || StopsBefore(KindOf(ItemKindRegistry), u""))
        return;
    bool copied = false;
    RestoreItem(run, KindOf(ItemKindRegistry), gRegistryEntry, [&] {
        copied = CopyStreamOut(run, gRegistryEntry, Shown::Step);
        if (copied)
            PassRegistryOn(run);
    });
    if (!copied)
        return;
    SetCursor(nullptr);
    gRunQuestions.showRegistryRestored();
}

// The restore as a whole.

DWORD ShowNothingToRestore(const WCHAR* listPath, WORD mode)
{
    // The user wanted to restore the whole set, but nothing is restored. This is a failure.
    if (mode == RestoreFull)
        ReportItem(OutcomeNotRestored, OutcomeFile, listPath, ERROR_NO_DATA);
    MessageBoxW(gMainWindow, LoadText(TextNothingToRestore, gTextA), u"Info", MB_OK);
    return 0;
}

void ReportNothingRestored(DWORD error)
{
    const auto report = [error](const ItemKind& kind, const WCHAR* name) {
        ReportItem(OutcomeNotRestored, kind.reportedAs, name, error);
    };
    for (const ItemKind& kind : ItemKinds) {
        if (kind.list)
            ForEachEntry(*kind.list, [&](const EntryBuffer& entry) { report(kind, entry.name); });
        else if (gRegistryMarked)
            report(kind, u"");
    }
}

// Reports the list as damaged if the data file is longer than the largest end offset of the entries. In that case
// entries are missing at the end of the list.
void ReportDataWithoutEntry(HANDLE dataFile, const WCHAR* listPath)
{
    DWORD end = gRegistryMarked ? EntryEndOffset(gRegistryEntry.bytes) : 0;
    for (const ItemKind& kind : ItemKinds) {
        if (kind.list)
            ForEachEntry(*kind.list,
                         [&](const EntryBuffer& entry) { end = std::max(end, EntryEndOffset(entry.bytes)); });
    }
    const DWORD bytes = SetFilePointer(dataFile, 0, nullptr, FILE_END);
    if (bytes != INVALID_SET_FILE_POINTER && bytes > end)
        ReportItem(OutcomeNotRestored, OutcomeFile, listPath, ERROR_FILE_CORRUPT);
}

void RestoreItems(RestoreRun& run)
{
    RestoreFiles(run);
    RestoreDatabases(run);
    RestoreRegistry(run);
}

// Lets the user choose a set. The search goes through the folders of the device that WalkDirectory enters. If the name
// of a file or folder ends in QLT, the search treats it as the list file of a set.

BOOL CollectSetFile(const WCHAR* name, const WCHAR* folder, DWORD /*attributes*/, UINT_PTR context)
{
    constexpr std::size_t EndingChars = 3;
    const std::size_t characters = wcslen(name);
    if (characters < EndingChars || lstrcmpW(name + characters - EndingChars, u"QLT") != 0)
        return TRUE;
    WCHAR path[MAX_PATH];
    if (JoinPath(path, folder, name))
        AddChoice(*reinterpret_cast<ChoiceList*>(context), path);
    return TRUE;
}

void RestoreChosen(const WCHAR* listPath, DWORD mode)
{
    if (!LoadList(listPath))
        return;
    WCHAR dataPath[MAX_PATH];
    DataPathOfList(dataPath, listPath);
    RestoreSet(dataPath, listPath, mode);
    RenewLists();
}

DWORD ChooseAndRestore(DWORD mode)
{
    ChoiceList sets;
    SearchForChoices(TRUE);
    WalkDirectory(u"\\", nullptr, TRUE, FALSE, CollectSetFile, reinterpret_cast<UINT_PTR>(&sets));
    SearchForChoices(FALSE);
    if (IsEmpty(sets)) {
        MessageBoxW(gMainWindow, LoadText(TextNoSetFound, gTextA), nullptr, MB_OK);
        return 0;
    }
    WCHAR listPath[MAX_PATH];
    if (ChooseFromList(gMainWindow, LoadText(TextSelectSet, gTextA), sets.characters.data(), listPath, DescribeSet))
        RestoreChosen(listPath, mode);
    return 1;
}

}  // namespace

void RestoreLists(const WCHAR* dataPath, const WCHAR* listPath, bool wholeSet)
{
    RestoreRun run;
    run.dataFile = CreateFileW(dataPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (run.dataFile == INVALID_HANDLE_VALUE) {
        ReportNothingRestored(GetLastError());
        SetCursor(nullptr);
        return;
    }
    if (wholeSet)
        ReportDataWithoutEntry(run.dataFile, listPath);
    ReportRunBegins(RunRestores, listPath);
    (void)DeclareTemporaryFile(TemporaryStreamPath);
    StartPipelineThread();
    RestoreItems(run);
    StopPipelineThread();
    (void)WithdrawTemporaryFile(TemporaryStreamPath);
    CloseHandle(run.dataFile);
    (void)FlushChangedVolumes();  // the run ends when all is on the disk; the platform reports a failure
    EndRun();
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
}

DWORD RestoreSet(const WCHAR* dataPath, const WCHAR* listPath, DWORD mode)
{
    if (!ShowRestoreDialog(LOWORD(mode), listPath))
        return 0;
    if (NothingIsMarked())
        return ShowNothingToRestore(listPath, LOWORD(mode));
    RestoreLists(dataPath, listPath, LOWORD(mode) == RestoreFull);
    return 1;
}

DWORD RunRestore(DWORD mode)
{
    gSavedRegistryMarked = gRegistryMarked;
    gRegistryMarked = 0;
    const DWORD result = ChooseAndRestore(mode);
    gRegistryMarked = gSavedRegistryMarked;
    return result;
}
