#include "mounted_folder.h"

#include "attributes.h"
#include "text/host_name.h"

#include <fcntl.h>

#include <algorithm>

namespace platform::file {

std::unique_ptr<Volume> Volume::of(int folder)
{
    auto volume = std::make_unique<Volume>();
    volume->readable = Descriptor(openBelow(folder, ".", O_RDONLY | O_DIRECTORY));
    HostStatus status = {};
    if (!volume->readable || readStatus(volume->readable.get(), "", status) != 0)
        return nullptr;
    volume->device = deviceOf(status);
    return volume;
}

MountedFolder::MountedFolder(std::u16string name, Descriptor folder, std::unique_ptr<Volume> own, bool card,
                             std::optional<std::uint64_t> capacity, std::uint64_t used, std::string place)
    : name_(std::move(name)), hostName_(text::toHostName(name_).value_or("")), folder_(std::move(folder)), card_(card),
      capacity_(capacity), used_(used), place_(std::move(place)), own_(std::move(own))
{
}

bool MountedFolder::isInPlace()
{
    if (place_.empty())
        return true;
    HostStatus own = {};
    HostStatus there = {};
    if (!gone_ && (readStatus(folder_.get(), "", own) != 0 || readStatus(AT_FDCWD, place_.c_str(), there) != 0 ||
                   keyOf(own) != keyOf(there)))
        gone_ = true;
    return !gone_;
}

std::uint64_t MountedFolder::takeRoom(std::uint64_t bytes)
{
    if (!capacity_)
        return bytes;
    std::uint64_t used = used_.load();
    std::uint64_t taken = 0;
    do {
        taken = used < *capacity_ ? std::min(bytes, *capacity_ - used) : 0;
    } while (!used_.compare_exchange_weak(used, used + taken));
    return taken;
}

void MountedFolder::giveBackRoom(std::uint64_t bytes)
{
    if (!capacity_)
        return;
    std::uint64_t used = used_.load();
    // Another process can have made a deleted file longer, so this can be more than was taken.
    while (!used_.compare_exchange_weak(used, used - std::min(used, bytes))) {
    }
}

void MountedFolder::expectChange(std::uint64_t device, const std::string& path)
{
    if (findVolume(device))
        return;
    auto volume = std::make_unique<Volume>();
    volume->device = device;
    volume->readable = Descriptor(openBelow(folder_.get(), path.c_str(), O_RDONLY | O_DIRECTORY));
    const std::lock_guard lock(volumesMutex_);
    furtherVolumes_.push_back(std::move(volume));
}

void MountedFolder::noteChange(std::uint64_t device)
{
    if (Volume* const volume = findVolume(device); volume && !volume->changed)
        volume->changed = true;
}

std::vector<Volume*> MountedFolder::changedVolumes()
{
    std::vector<Volume*> changed;
    if (own_->changed)
        changed.push_back(own_.get());
    const std::lock_guard lock(volumesMutex_);
    for (const auto& volume : furtherVolumes_) {
        if (volume->changed)
            changed.push_back(volume.get());
    }
    return changed;
}

Volume* MountedFolder::findVolume(std::uint64_t device)
{
    if (device == own_->device)
        return own_.get();
    const std::lock_guard lock(volumesMutex_);
    const auto found = std::ranges::find(furtherVolumes_, device, &Volume::device);
    return found == furtherVolumes_.end() ? nullptr : found->get();
}

}  // namespace platform::file
