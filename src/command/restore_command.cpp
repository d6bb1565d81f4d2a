#include "ce/command.h"

#include "engine/options.h"
#include "engine/restore_run.h"
#include "run_plans.h"
#include "set/list_file.h"
#include "set/set_questions.h"
#include "set/set_state.h"

#include "ce/file.h"
#include "ce/store.h"
#include "ce/text.h"

#include <algorithm>

namespace {

// The request of the run that was prepared last.
RestoreRequest gRestoreRequest;

// Says for each name in the request whether the set contains it. KeepEntry fills this structure while the set's list is
// loaded.
struct FoundNames {
    std::vector<bool> paths;
    std::vector<bool> databases;
    bool registry = false;
    bool leftSomethingOut = false;
};

bool IsAtOrBelow(const WCHAR* name, const std::u16string& path)
{
    const std::u16string_view whole = name;
    return whole.starts_with(path) && (whole.size() == path.size() || whole[path.size()] == u'\\');
}

// Returns whether any of the names matches. Sets the element of `found` for each name that matches.
template <class Matches>
bool Find(const std::vector<std::u16string>& names, std::vector<bool>& found, const Matches& matches)
{
    bool any = false;
    for (std::size_t i = 0; i < names.size(); i++) {
        if (!matches(names[i]))
            continue;
        found[i] = true;
        any = true;
    }
    return any;
}

bool IsWanted(BYTE kind, const WCHAR* name, FoundNames& found)
{
    if (kind == ItemKindRegistry) {
        found.registry = true;
        return gRestoreRequest.registry;
    }
    if (gRestoreRequest.everything)
        return true;
    if (kind == ItemKindFile)
        return Find(gRestoreRequest.paths, found.paths, [&](const auto& path) { return IsAtOrBelow(name, path); });
    return Find(gRestoreRequest.databaseNames, found.databases,
                [&](const auto& wanted) { return lstrcmpiW(name, wanted.c_str()) == 0; });
}

bool KeepEntry(BYTE kind, const WCHAR* name, void* context)
{
    FoundNames& found = *static_cast<FoundNames*>(context);
    const bool wanted = IsWanted(kind, name, found);
    found.leftSomethingOut |= !wanted;
    return wanted;
}

// Returns the first name of the request that the set doesn't have. Returns an empty text if the set has all names.
std::u16string MissingName(const FoundNames& found)
{
    for (std::size_t i = 0; i < found.paths.size(); i++) {
        if (!found.paths[i])
            return gRestoreRequest.paths[i];
    }
    for (std::size_t i = 0; i < found.databases.size(); i++) {
        if (!found.databases[i])
            return gRestoreRequest.databaseNames[i];
    }
    return !gRestoreRequest.everything && gRestoreRequest.registry && !found.registry ? u"registry" : u"";
}

bool DatabaseExists(const WCHAR* name)
{
    CEOID oid = 0;
    const HANDLE database = CeOpenDatabase(&oid, name, 0, 0, nullptr);
    if (database == INVALID_HANDLE_VALUE)
        return false;
    CloseHandle(database);
    return true;
}

template <class Exists>
DWORD CountExisting(ItemList* list, std::u16string& first, const Exists& exists)
{
    DWORD count = 0;
    ForEachEntry(list, [&](const EntryBuffer& entry) {
        if (!exists(entry.name))
            return;
        count++;
        if (first.empty())
            first = entry.name;
    });
    return count;
}

RunPlan PlanOfRestore()
{
    RunPlan plan = PlanOfLists();
    plan.existing.files = CountExisting(gFileList, plan.firstExistingFile, [](const WCHAR* path) {
        return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
    });
    plan.existing.databases = CountExisting(gDatabaseList, plan.firstExistingDatabase, DatabaseExists);
    return plan;
}

bool gIsWholeSet;

}  // namespace

RunPlan PrepareRestore(const RestoreRequest& request)
{
    gRestoreRequest = request;
    FoundNames found;
    found.paths.resize(request.paths.size());
    found.databases.resize(request.databaseNames.size());
    gRegistryMarked = 0;
    if (!LoadList(request.listPath.c_str(), KeepEntry, &found))
        return RefusedPlan(u"The set \"" + request.listPath + u"\" can't be read.");
    const std::u16string missing = MissingName(found);
    if (!missing.empty())
        return RefusedPlan(u"There is no \"" + missing + u"\" in the set.");
    if (NothingIsMarked())
        return RefusedPlan(u"There is nothing to restore in the set.");
    gIsWholeSet = !found.leftSomethingOut;
    return PlanOfRestore();
}

void PerformRestore(Existing files)
{
    gOptions.restoreMode = files == Existing::Replace ? RestoreModeReplace
                           : files == Existing::Skip  ? RestoreModeSkip
                                                      : RestoreModeAsk;
    gRunQuestions.mayReplaceFile = [](const WCHAR* path) { return gRestoreRequest.mayReplaceFile(path); };
    gRunQuestions.mayReplaceDatabase = [](const WCHAR* name) { return gRestoreRequest.mayReplaceDatabase(name); };
    WCHAR dataPath[MAX_PATH];
    DataPathOfList(dataPath, gRestoreRequest.listPath.c_str());
    RestoreLists(dataPath, gRestoreRequest.listPath.c_str(), gIsWholeSet);
    RenewLists();
    gRegistryMarked = 0;
}
