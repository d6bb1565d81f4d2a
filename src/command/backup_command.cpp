#include "ce/command.h"

#include "engine/backup_run.h"
#include "engine/directory_walker.h"
#include "engine/item_names.h"
#include "engine/options.h"
#include "engine/set_paths.h"
#include "engine/stored_digests.h"
#include "run_plans.h"
#include "set/block_pipeline.h"
#include "set/set_state.h"
#include "set_verification.h"
#include "storages.h"

#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/store.h"
#include "ce/text.h"

namespace {

// The request of the run that was prepared last.
BackupRequest gBackupRequest;

RunPlan RefuseStorage(const std::u16string& storage)
{
    std::u16string sentence = u"There is no card \"" + storage + u"\" on the device.";
    const std::vector<std::u16string> cards = Cards();
    for (const std::u16string& card : cards)
        sentence += (card == cards.front() ? u" It has " : u", ") + card;
    return RefusedPlan(sentence + (cards.empty() ? u"" : u"."));
}

bool HasSet(const std::u16string& storage, DWORD number)
{
    WCHAR path[MAX_PATH];
    FormatListPath(path, storage.c_str(), number);
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

bool HasFreeNumber(const std::u16string& storage)
{
    for (DWORD number = FirstSetNumber; number <= LastSetNumber; number++) {
        if (!HasSet(storage, number))
            return true;
    }
    return false;
}

// Checks that the storage exists. If the request replaces a set, checks that this set exists. Otherwise checks that the
// storage has a free number for a new set. If a check fails, the returned plan is refused.
RunPlan CheckTarget(const BackupRequest& request)
{
    if (!IsStorage(request.storage))
        return RefuseStorage(request.storage);
    WCHAR folder[MAX_PATH];
    FormatSetFolder(folder, request.storage.c_str());
    if (request.replaced != 0 && !HasSet(request.storage, request.replaced)) {
        WCHAR sentence[2 * MAX_PATH];
        wsprintfW(sentence, u"There is no set %u to replace in \"%s\".", request.replaced, folder);
        return RefusedPlan(sentence);
    }
    RunPlan plan;
    if (request.replaced == 0 && !HasFreeNumber(request.storage)) {
        ReportNoSet(folder, ERROR_FILE_EXISTS);
        plan.refused = true;
    }
    return plan;
}

// Returns the name that the database has in the store. `wanted` may differ from that name in case. Returns an empty
// text if there is no such database.
std::u16string StoredName(const std::u16string& wanted)
{
    std::u16string found;
    ForEachName(ItemKindDatabase, [&](const WCHAR* name) {
        if (name && lstrcmpiW(name, wanted.c_str()) == 0)
            found = name;
    });
    return found;
}

bool ListDatabase(const std::u16string& wanted)
{
    const std::u16string name = StoredName(wanted);
    if (name.empty())
        return false;
    const DWORD bytes = NameBytes(name.c_str());
    if (!gDatabaseList || (!gDatabaseList->Contains(name.c_str(), bytes) && !gDatabaseList->Add(name.c_str(), bytes)))
        ReportItem(OutcomeNotStored, OutcomeDatabase, name.c_str(), ERROR_NOT_ENOUGH_MEMORY);
    return true;
}

// Whether the request asks for all items of this kind. BackupRequest has a member for each value of `reportedAs`.
bool AsksForAllOf(const BackupRequest& request, const ItemKind& kind)
{
    return kind.reportedAs == OutcomeFile       ? request.files
           : kind.reportedAs == OutcomeDatabase ? request.databases
                                                : request.registry;
}

// Fills the lists with the items of the request. Returns the first path or database name of the request that doesn't
// exist, or an empty text if all exist.
std::u16string ListItems(const BackupRequest& request)
{
    for (const ItemKind& kind : ItemKinds)
        *kind.inFullBackup = AsksForAllOf(request, kind);
    const std::u16string storage = request.storage + u"\\";
    gFolderLeftOut = request.leavesStorageOut ? storage.c_str() : nullptr;
    ListDevice();
    gFolderLeftOut = nullptr;
    for (const std::u16string& path : request.paths) {
        if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
            return path;
        ListPath(path.c_str());
    }
    for (const std::u16string& name : request.databaseNames) {
        if (!ListDatabase(name))
            return name;
    }
    gRegistryMarked = request.registry;
    return {};
}

// Returns the size of all listed databases. The size of a database is the size of its records.
std::uint64_t BytesOfDatabases()
{
    std::uint64_t bytes = 0;
    ForEachEntry(gDatabaseList, [&](const EntryBuffer& entry) {
        CEOID oid = 0;
        const HANDLE database = CeOpenDatabase(&oid, entry.name, 0, 0, nullptr);
        CEOIDINFO info = {};
        if (database != INVALID_HANDLE_VALUE && CeOidGetInfo(oid, &info))
            bytes += info.infDatabase.dwSize;
        if (database != INVALID_HANDLE_VALUE)
            CloseHandle(database);
    });
    return bytes;
}

bool NamesSingleItems(const BackupRequest& request)
{
    return !request.paths.empty() || !request.databaseNames.empty();
}

}  // namespace

RunPlan PrepareBackup(const BackupRequest& request)
{
    gBackupRequest = request;
    gOptions.deleteBackedUp = request.deletesSources;
    gOptions.generateLog = request.writesLog;
    gDigestsBlocks = request.verifies;
    gOnlyLists = request.onlyPlans;
    RunPlan plan = CheckTarget(request);
    if (plan.refused)
        return plan;
    const std::u16string missing = ListItems(request);
    if (!missing.empty())
        return RefusedPlan(u"There is no \"" + missing + u"\" on the device.");
    if (NothingIsMarked())
        return RefusedPlan(u"There is nothing to back up.");
    plan = PlanOfLists();
    plan.bytes += BytesOfDatabases();
    return plan;
}

DWORD PerformBackup()
{
    gStoredDigests.clear();
    CopyText(gComment, gBackupRequest.comment.c_str());
    ComposeComment();
    BackupTarget target = {};
    CopyText(target.root, gBackupRequest.storage.c_str());
    target.replaced = gBackupRequest.replaced;
    // With BackupSelectedItems the run reports a file that is deleted before it is read. This is right for a file that
    // the user named, but not for one that a full backup found.
    BackUpTo(target, NamesSingleItems(gBackupRequest) ? BackupSelectedItems : BackupListedItems);
    if (gBackupRequest.verifies && gLastSetNumber != 0) {
        WCHAR listPath[MAX_PATH];
        FormatListPath(listPath, target.root, gLastSetNumber);
        VerifyStoredSet(listPath);
    }
    RenewLists();
    gRegistryMarked = 0;
    return gLastSetNumber;
}
