#include "volume_flush.h"

#include "host/error.h"
#include "mounts.h"
#include "open_files.h"

#include "ce/error.h"

#include <cerrno>

namespace platform::file {

using host::ioError;

namespace {

struct Changed {
    MountedFolder* mount = nullptr;
    Volume* volume = nullptr;
};

// The mounted folders that are open.
std::vector<MountUse> openMounts()
{
    std::vector<MountUse> all;
    if (MountedFolder* const root = rootMount())
        all.emplace_back(root);
    for (MountedFolder* const mount : mountsInRoot()) {
        if (!mount->isRemovable() || mount->beginUseIfOpen())
            all.emplace_back(mount);
    }
    return all;
}

// Adds to `failed` the folders whose medium was removed before all changes were flushed. Each such folder is reported
// once.
void reportLost(std::vector<FailedFlush>& failed)
{
    for (MountedFolder* const mount : mountsInRoot()) {
        if (!mount->isGone())
            continue;
        const std::vector<Volume*> changed = mount->changedVolumes();
        for (Volume* const volume : changed)
            volume->changed = false;
        if (!changed.empty())
            failed.push_back({mount, ERROR_NOT_READY});
    }
}

// Clears Volume::changed for all mounted folders on one file system, and returns the volumes that were changed. One
// flush is enough for all of them. The flags are cleared before the flush, so that a change during the flush sets its
// flag again.
std::vector<Volume*> takeMarks(const std::vector<Changed>& changed, std::uint64_t device)
{
    std::vector<Volume*> taken;
    for (const Changed& each : changed) {
        if (each.volume->device == device && each.volume->changed.exchange(false))
            taken.push_back(each.volume);
    }
    return taken;
}

DWORD flush(const Changed& changed)
{
    const Descriptor& readable = changed.volume->readable;
    const int result = readable ? flushFileSystem(readable.get()) : -EOPNOTSUPP;
    return changed.mount->isInPlace() ? ioError(result) : ERROR_NOT_READY;
}

}  // namespace

std::vector<FailedFlush> flushChangedVolumes()
{
    std::vector<FailedFlush> failed;
    if (const DWORD error = OpenFiles::instance().nameAll(); error != 0)
        failed.push_back({rootMount(), error});
    std::vector<Changed> changed;
    reportLost(failed);
    const std::vector<MountUse> mounts = openMounts();
    for (const MountUse& use : mounts) {
        MountedFolder* const mount = use.get();
        if (mount->isGone())
            continue;
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
        const DWORD error = flush(each);
        if (error == 0)
            continue;
        failed.push_back({each.mount, error});
        if (error != ERROR_NOT_READY)
            stillChanged.insert(stillChanged.end(), taken.begin(), taken.end());
    }
    for (Volume* const volume : stillChanged)
        volume->changed = true;
    return failed;
}

}  // namespace platform::file
