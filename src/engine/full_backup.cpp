#include "engine/backup_run.h"

#include "engine/directory_walker.h"
#include "engine/item_names.h"
#include "engine/options.h"
#include "engine/paths_too_long.h"
#include "engine/questions.h"
#include "set/set_state.h"
#include "thread_ahead.h"

#include "ce/dialog.h"
#include "ce/error.h"
#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/text.h"

namespace {

// The range and the step of the progress bar while a full backup lists the items. The number of files isn't known in
// advance. So when the bar has reached its end, it starts again.
constexpr DWORD ListingRange = 1500;
constexpr DWORD ListingStep = 10;

// Whether the name is that of a set's checksum file, such as QLBX0001.SUM. Other files can end in SUM too, so the
// length and the beginning of the name are tested as well.
bool IsSealName(const WCHAR* name)
{
    const std::u16string_view whole = name;
    return whole.size() == 12 && whole.starts_with(u"QLBX") && whole.ends_with(u".SUM");
}

// Whether the name is that of a set's list file, data file or checksum file. WalkForItems leaves out such files in any
// folder.
bool IsSetFile(const WCHAR* name)
{
    const std::size_t characters = wcslen(name);
    if (characters < 4)
        return false;
    const WCHAR* end = name + characters - 4;
    return lstrcmpW(end, u".QDT") == 0 || lstrcmpW(end, u".QLT") == 0 || IsSealName(name);
}

bool HasAttribute(DWORD attributes, DWORD wanted)
{
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & wanted) != 0;
}

bool gPacksTinyFiles;

bool AddItem(const ItemKind& kind, const WCHAR* name, std::uint64_t bytes)
{
    ItemList* list = *kind.list;
    if (list && list->Add(name, NameBytes(name), bytes))
        return true;
    ReportItem(OutcomeNotStored, kind.reportedAs, name, ERROR_NOT_ENOUGH_MEMORY);
    return false;
}

// Reports a file that can't be opened. There are two exceptions: a file that was deleted after its folder was read,
// because it isn't part of the backup, and a module in ROM, because no program can read it.
void ReportUnreadable(const WCHAR* path, DWORD attributes, DWORD error)
{
    const bool gone = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    if (!gone && !HasAttribute(attributes, FILE_ATTRIBUTE_ROMMODULE))
        ReportItem(OutcomeNotStored, OutcomeFile, path, error);
}

// Opens the file, since only this shows whether it can be read. If it can't be opened, for example because it is in
// use, item.error is set, and the backup leaves the file out. A tiny file is packed while it is open.
void TestReadable(AheadItem& item, SmallStreamMemory& memory)
{
    if (item.offer.packs) {
        PackSmallStream(item.path, item.stream, memory, &item.source);
        if (item.stream.state == SmallStreamState::NotOpened)
            item.error = item.stream.error;
        return;
    }
    const HANDLE file = CreateFileW(item.path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        item.error = GetLastError();
    else
        CloseHandle(file);
}

// Takes back the oldest file that was offered to the second thread (thread_ahead.h), and adds it to gFileList if it can
// be read. The walk offers the files in the order in which it finds them, so they are in the same order in gFileList.
void AddNext(HWND progress)
{
    AheadItem& next = TakeAhead();
    if (!next.finished)
        WorkOnTaken(next);
    if (next.error != ERROR_SUCCESS)
        ReportUnreadable(next.path, next.offer.attributes, next.error);
    else if (AddItem(KindOf(ItemKindFile), next.path, next.offer.bytes) &&
             next.stream.state == SmallStreamState::Packed)
        KeepStream(gFileList->Count() - 1, next.stream, next.source);
    DropSmallStream(next.stream);
    ProgressStep(progress, 0);
}

void OfferFile(const WCHAR* path, DWORD attributes, HWND progress)
{
    if (IsAheadFull())
        AddNext(progress);
    OfferAhead(path, {.attributes = attributes,
                      .bytes = gWalkedEntry.bytes,
                      .packs = gPacksTinyFiles && gWalkedEntry.bytes <= MostKeptSourceBytes && IsRoomForKeptStream()});
}

// Returns FALSE if the job is to stop. This result ends the walk through this folder.
BOOL AddFullBackupFile(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR progress)
{
    if (JobIsToStop())
        return FALSE;
    // Folders aren't items, and files in ROM are left out.
    if (HasAttribute(attributes, FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_INROM))
        return TRUE;
    // Files directly in a card's folder are left out, those in its subfolders aren't.
    if (HasAttribute(gWalkedEntry.folderAttributes, FILE_ATTRIBUTE_TEMPORARY) || IsSetFile(name))
        return TRUE;
    WCHAR path[MAX_PATH];
    if (!JoinPath(path, folder, name)) {
        NotePathTooLong(folder, name);
        return TRUE;
    }
    OfferFile(path, attributes, reinterpret_cast<HWND>(progress));
    return TRUE;
}

// Adds a file below a folder that the user named, unless gFileList already contains it. Unlike in a full backup, the
// file may be directly in a card's folder.
BOOL AddFileOfFolder(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR /*unused*/)
{
    if (JobIsToStop())
        return FALSE;
    if (HasAttribute(attributes, FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_INROM) || IsSetFile(name))
        return TRUE;
    WCHAR path[MAX_PATH];
    if (!JoinPath(path, folder, name))
        NotePathTooLong(folder, name);
    else if (!gFileList || !gFileList->Contains(path, NameBytes(path)))
        OfferFile(path, attributes, nullptr);
    return TRUE;
}

void WalkForItems(const WCHAR* root, WalkCallback add, HWND progress)
{
    gPathsTooLong = {};
    gPathsTooLong.areItems = TRUE;
    // If the sources are to be deleted, no file is packed now. Then CompressFile packs each file when the file is
    // stored, and takes the stamp that the deletion needs.
    gPacksTinyFiles = !gOnlyLists && !gOptions.deleteBackedUp && CodecWorks();
    StartAhead(TestReadable, IsRoomForSmallStream);
    WalkDirectory(root, nullptr, TRUE, FALSE, add, reinterpret_cast<UINT_PTR>(progress));
    while (!IsAheadEmpty())
        AddNext(progress);
    StopAhead();
    gPathsTooLong.areItems = FALSE;
}

void ListAllFiles(HWND progress)
{
    WalkForItems(u"\\", AddFullBackupFile, progress);
}

void ListAllNames(const ItemKind& kind, HWND progress)
{
    ForEachName(kind.number, [&](const WCHAR* name) {
        if (name)
            AddItem(kind, name, 0);
        ProgressStep(progress, 0);
    });
}

void ForgetListing()
{
    RenewLists();
    ForgetKeptStreams();
}

void ListAll(const ItemKind& kind)
{
    HWND progress = gRunQuestions.openProgress(LoadText(kind.listing, gTextA), LoadText(TextComputingList, gTextB),
                                               ListingRange, ListingStep);
    SetWaitCursor();
    if (kind.number == ItemKindFile)
        ListAllFiles(progress);
    else
        ListAllNames(kind, progress);
    SetCursor(nullptr);
    ProgressAnimate(progress);
}

}  // namespace

void ListDevice()
{
    ForgetListing();
    gPathsTooLong = {};
    for (const ItemKind& kind : ItemKinds) {
        if (kind.list && *kind.inFullBackup)
            ListAll(kind);
    }
}

void ListPath(const WCHAR* path)
{
    const DWORD attributes = GetFileAttributesW(path);
    if (!HasAttribute(attributes, FILE_ATTRIBUTE_DIRECTORY)) {
        // If the file can't be read, the run reports it.
        if (!gFileList || !gFileList->Contains(path, NameBytes(path)))
            AddItem(KindOf(ItemKindFile), path, BytesOfFile(path));
        return;
    }
    WCHAR root[MAX_PATH];
    if (JoinPath(root, path, u"\\"))
        WalkForItems(root, AddFileOfFolder, nullptr);
}

DWORD RunFullBackup()
{
    if (!ShowBackupDialog(FullBackupKind, gComment))
        return 0;

    ListDevice();
    if (JobIsToStop()) {
        ReportNoSet(u"\\", ERROR_CANCELLED);
        ForgetListing();
        return 0;
    }
    const PathsTooLong left = gPathsTooLong;  // the run's own walk can note further paths

    const DWORD registryMarked = gRegistryMarked;
    gRegistryMarked = gFullRegistry ? 1 : 0;
    const bool nothing = NothingIsMarked();
    RunBackup(BackupListedItems);
    gRegistryMarked = registryMarked;
    ForgetListing();
    // The message is shown after the run, so that the set is complete while the message is open. If the run made no
    // set, the message is shown only if there was nothing to back up.
    if (gLastSetNumber != 0 || nothing)
        ShowPathsTooLong(left);
    return 1;
}
