#include "volume_flush.h"

#include "host/error.h"
#include "mounts.h"
#include "open_files.h"

#include <cerrno>

namespace platform::file {

using host::ioError;

namespace {

struct Changed {
    MountedFolder* mount = nullptr;
    Volume* volume = nullptr;
};

std::vector<MountedFolder*> allMounts()
{
    std::vector<MountedFolder*> all;
    if (MountedFolder* const root = rootMount())
        all.push_back(root);
    for (std::size_t i = 0; MountedFolder* const mount = mountAt(i); ++i)
        all.push_back(mount);
    return all;
}

// Clears the marks of all folders on one file system, which needs one flush for all of them. This comes before the
// flush, so that a change during the flush sets the mark again.
std::vector<Volume*> takeMarks(const std::vector<Changed>& changed, std::uint64_t device)
{
    std::vector<Volume*> taken;
    for (const Changed& each : changed) {
        if (each.volume->device == device && each.volume->changed.exchange(false))
            taken.push_back(each.volume);
    }
    return taken;
}

}  // namespace

std::vector<FailedFlush> flushChangedVolumes()
{
    std::vector<FailedFlush> failed;
    if (const DWORD error = OpenFiles::instance().nameAll(); error != 0)
        failed.push_back({rootMount(), error});
    std::vector<Changed> changed;
    for (MountedFolder* const mount : allMounts()) {
        if (const DWORD error = OpenFiles::instance().writeOutAll(*mount); error != 0)
            failed.push_back({mount, error});
        for (Volume* const volume : mount->changedVolumes())
            changed.push_back({mount, volume});
    }
    std::vector<Volume*> stillChanged;
    for (const Changed& each : changed) {
        const std::vector<Volume*> taken = takeMarks(changed, each.volume->device);
        if (taken.empty())
            continue;
        const Descriptor& readable = each.volume->readable;
        const int result = readable ? flushFileSystem(readable.get()) : -EOPNOTSUPP;
        if (result == 0)
            continue;
        failed.push_back({each.mount, ioError(result)});
        stillChanged.insert(stillChanged.end(), taken.begin(), taken.end());
    }
    for (Volume* const volume : stillChanged)
        volume->changed = true;
    return failed;
}

}  // namespace platform::file
