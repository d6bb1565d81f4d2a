// full_backup.cpp - see full_backup.h.

#include "engine/full_backup.h"

#include "engine/backup_run.h"
#include "engine/directory_walker.h"
#include "engine/paths_too_long.h"
#include "engine/questions.h"
#include "run_progress.h"
#include "set/set_state.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/store.h"
#include "ce/text.h"

namespace {

constexpr WORD FullBackupKind = 1;
// The number of files isn't known beforehand: past its top the bar starts over.
constexpr DWORD ListingRange = 1500;
constexpr DWORD ListingStep = 10;

// The files of earlier sets, by the end of their names, in any folder.
bool IsSetFile(const WCHAR* name)
{
    const std::size_t characters = wcslen(name);
    if (characters < 4)
        return false;
    const WCHAR* end = name + characters - 4;
    return lstrcmpW(end, u".QDT") == 0 || lstrcmpW(end, u".QLT") == 0;
}

bool HasAttribute(DWORD attributes, DWORD wanted)
{
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & wanted) != 0;
}

// The folder that was asked about last in this walk: files come folder by folder, so the answer serves nearly all of
// them.
struct AskedFolder {
    WCHAR path[MAX_PATH];
    DWORD attributes;
};
AskedFolder gAskedFolder;

bool LiesDirectlyInCard(const WCHAR* folder)
{
    if (lstrcmpW(gAskedFolder.path, folder) != 0) {
        CopyText(gAskedFolder.path, folder);
        gAskedFolder.attributes = GetFileAttributesW(folder);
    }
    return HasAttribute(gAskedFolder.attributes, FILE_ATTRIBUTE_TEMPORARY);
}

void AddItem(ItemList* list, BYTE kind, const WCHAR* name)
{
    if (!list || !list->Add(name, NameBytes(name)))
        ReportItem(OutcomeNotStored, kind, name, ERROR_NOT_ENOUGH_MEMORY);
}

// What went away since the folder was read is no part of the backup, nor is a module in ROM, which nobody can read.
void ReportUnreadable(const WCHAR* path, DWORD attributes, DWORD error)
{
    const bool gone = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    if (!gone && !HasAttribute(attributes, FILE_ATTRIBUTE_ROMMODULE))
        ReportItem(OutcomeNotStored, OutcomeFile, path, error);
}

// Opening it is the only test whether a file can be read at all; one in use stays out.
void AddIfReadable(const WCHAR* path, DWORD attributes)
{
    HANDLE file = CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        ReportUnreadable(path, attributes, GetLastError());
        return;
    }
    AddItem(gFileList, ItemKindFile, path);
    CloseHandle(file);
}

BOOL AddFullBackupFile(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR context)
{
    // Folders are walked, not listed; files in ROM stay out.
    if (HasAttribute(attributes, FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_INROM))
        return TRUE;
    // What lies directly in a card stays out, what lies in its folders doesn't.
    if (LiesDirectlyInCard(folder) || IsSetFile(name))
        return TRUE;
    WCHAR path[MAX_PATH];
    if (!JoinPath(path, folder, name)) {
        NotePathTooLong(folder, name);
        return TRUE;
    }
    AddIfReadable(path, attributes);
    ProgressStep(reinterpret_cast<HWND>(context), 0);
    return TRUE;
}

HWND OpenListingProgress(UINT title)
{
    return ProgressOpen(LoadText(title, gTextA), LoadText(TextComputingList, gTextB), ListingRange, ListingStep);
}

void ListAllFiles()
{
    HWND progress = OpenListingProgress(TextConstructFileList);
    SetWaitCursor();
    gAskedFolder = {};
    gPathsTooLong = {};
    gPathsTooLong.areItems = TRUE;
    WalkDirectory(u"\\", nullptr, TRUE, FALSE, AddFullBackupFile, reinterpret_cast<UINT_PTR>(progress));
    gPathsTooLong.areItems = FALSE;
    SetCursor(nullptr);
    ProgressAnimate(progress);
}

void AddDatabase(CEOID oid)
{
    CEOIDINFO info = {};
    if (!CeOidGetInfo(oid, &info) || info.wObjType != OBJTYPE_DATABASE)
        return;  // deleted since the enumeration gave it
    const WCHAR* name = info.infDatabase.szDbaseName;
    if (name[0] != u'\\')
        AddItem(gDatabaseList, ItemKindDatabase, name);
}

void ListAllDatabases()
{
    HWND progress = OpenListingProgress(TextConstructDatabaseList);
    SetWaitCursor();
    HANDLE enumeration = CeFindFirstDatabase(0);
    if (enumeration != INVALID_HANDLE_VALUE) {
        while (const CEOID oid = CeFindNextDatabase(enumeration)) {
            AddDatabase(oid);
            ProgressStep(progress, 0);
        }
        CloseHandle(enumeration);
    }
    SetCursor(nullptr);
    ProgressAnimate(progress);
}

}  // namespace

DWORD RunFullBackup()
{
    if (!ShowBackupDialog(FullBackupKind, gComment))
        return 0;

    RenewLists();
    PathsTooLong left = {};
    if (gFullFiles) {
        ListAllFiles();
        left = gPathsTooLong;
    }
    if (gFullDatabases)
        ListAllDatabases();

    const DWORD registryMarked = gRegistryMarked;
    gRegistryMarked = gFullRegistry ? 1 : 0;
    const bool nothing = CountOf(gFileList) == 0 && CountOf(gDatabaseList) == 0 && !gRegistryMarked;
    RunBackup(BackupListedItems);
    gRegistryMarked = registryMarked;
    RenewLists();
    // After the run, so that the set stands whatever becomes of the message; and not for one that was cancelled.
    if (gLastSetNumber != 0 || nothing)
        TellPathsTooLong(left);
    return 1;
}
