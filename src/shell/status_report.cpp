#include "status_report.h"

#include "engine/directory_walker.h"
#include "engine/options.h"
#include "set/set_state.h"

#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/status.h"
#include "ce/text.h"
#include "ce/time.h"

namespace {

constexpr DWORD CardAttributes = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY;

WCHAR gNewestSet[MAX_PATH];
FILETIME gNewestSetTime;
DWORD gJobs;

BOOL CompareSet(const WCHAR* name, const WCHAR* folder, DWORD /*attributes*/, UINT_PTR /*context*/)
{
    if (CompareFileTime(&gWalkedEntry.written, &gNewestSetTime) <= 0 || !JoinPath(gNewestSet, folder, name))
        return TRUE;
    gNewestSetTime = gWalkedEntry.written;
    return TRUE;
}

void LookOnStorage(const WCHAR* storageRoot)
{
    WCHAR folder[MAX_PATH];
    if (JoinPath(folder, storageRoot, u"\\QUILBOX\\"))
        WalkDirectory(folder, u"QLBX*.QLT", FALSE, FALSE, CompareSet, 0);
}

BOOL LookOnCard(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR /*context*/)
{
    WCHAR path[MAX_PATH];
    if ((attributes & CardAttributes) == CardAttributes && JoinPath(path, folder, name))
        LookOnStorage(path);
    return TRUE;
}

}  // namespace

void FindNewestSet()
{
    gNewestSet[0] = 0;
    gNewestSetTime = {};
    SearchForChoices(TRUE);
    LookOnStorage(u"");
    WalkDirectory(u"\\", nullptr, FALSE, TRUE, LookOnCard, 0);
    SearchForChoices(FALSE);
}

void ReportStatusToHost()
{
    ProgramStatus status = {};
    status.markedFiles = CountOf(gFileList);
    status.markedBytes = gFileList ? gFileList->ContentBytes() : 0;
    status.markedDatabases = CountOf(gDatabaseList);
    status.registryMarked = gRegistryMarked != 0;
    status.shownExtensions = gOptions.extensionFilterOn ? gOptions.extensions : nullptr;
    if (gOptions.newerThanOn)
        status.shownSince = gOptions.newerThan;
    status.hiddenAttributes = gOptions.hideByAttribute ? gOptions.hiddenAttributes : 0;
    status.deletesStored = gOptions.deleteBackedUp != 0;
    status.newestSet = gNewestSet;
    status.newestSetTime = gNewestSetTime;
    status.jobs = gJobs;
    ReportStatus(status);
}

void ReportJobEnd()
{
    gJobs++;
    FindNewestSet();
    ReportStatusToHost();
}
