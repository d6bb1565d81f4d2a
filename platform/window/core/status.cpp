#include "window/program_status.h"

#include "window/core.h"

#include "ce/status.h"

namespace platform::window {

namespace {

std::vector<std::u16string> textsOf(const WCHAR* list)
{
    std::vector<std::u16string> texts;
    for (; *list; list += texts.back().size() + 1)
        texts.emplace_back(list);
    return texts;
}

std::uint64_t ticksOf(const FILETIME& time)
{
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

// Stores the status, and reports it to the display if it differs from the stored one. The program's main window reports
// its status twice a second, usually an unchanged one.
void take(StatusState status) REQUIRES(coreMutex)
{
    if (core().status == status)
        return;
    core().status = std::move(status);
    announceGlobal(Change::Status);
}

}  // namespace

StatusState programStatus()
{
    const Lock lock(coreMutex);
    return core().status;
}

void setDeviceName(std::u16string name)
{
    const Lock lock(coreMutex);
    StatusState status = core().status;
    status.device = std::move(name);
    take(std::move(status));
}

}  // namespace platform::window

using namespace platform::window;

void ReportStatus(const ProgramStatus& reported)
{
    StatusState status;
    status.markedFiles = reported.markedFiles;
    status.markedBytes = reported.markedBytes;
    status.markedDatabases = reported.markedDatabases;
    status.registryMarked = reported.registryMarked != FALSE;
    if (reported.shownExtensions)
        status.shownExtensions = textsOf(reported.shownExtensions);
    status.shownSince = ticksOf(reported.shownSince);
    status.hiddenAttributes = reported.hiddenAttributes;
    status.deletesStored = reported.deletesStored != FALSE;
    status.newestSet = reported.newestSet;
    status.newestSetTime = ticksOf(reported.newestSetTime);
    status.jobs = reported.jobs;
    const Lock lock(coreMutex);
    status.device = core().status.device;
    take(std::move(status));
}
