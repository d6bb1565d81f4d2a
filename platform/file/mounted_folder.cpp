#include "mounted_folder.h"

#include "host/error.h"
#include "text/host_name.h"

#include "ce/error.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

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
                             std::optional<std::uint64_t> capacity, std::uint64_t used)
    : name_(std::move(name)), hostName_(text::toHostName(name_).value_or("")), folder_(std::move(folder)), card_(card),
      capacity_(capacity), used_(used), own_(std::move(own))
{
}

MountedFolder::MountedFolder(Removable removable, const FileKey& identity)
    : name_(removable.name), hostName_(text::toHostName(name_).value_or("")), card_(true), used_(0),
      own_(std::make_unique<Volume>()), removable_(std::move(removable)), identity_(identity)
{
    own_->device = identity.device;
}

DWORD MountedFolder::beginUse()
{
    const kernel::MutexLock lock(useMutex_);
    if (gone_)
        return ERROR_NOT_READY;
    if (const DWORD error = folder_ ? DWORD{0} : open(); error != 0)
        return error;
    ++uses_;
    lastUse_ = Clock::now();
    return 0;
}

bool MountedFolder::beginUseIfOpen()
{
    const kernel::MutexLock lock(useMutex_);
    if (folder_)
        ++uses_;
    return static_cast<bool>(folder_);
}

void MountedFolder::endUse()
{
    const kernel::MutexLock lock(useMutex_);
    --uses_;
    lastUse_ = Clock::now();
}

DWORD MountedFolder::open()
{
    Descriptor folder(removable_->open());
    if (!folder)
        return folder.get() == -ENOENT ? DWORD{ERROR_NOT_READY} : host::platformError(folder.get());
    auto volume = Volume::of(folder.get());
    HostStatus status = {};
    if (!volume || readStatus(folder.get(), "", status) != 0 || keyOf(status) != identity_)
        return ERROR_NOT_READY;
    folder_ = std::move(folder);
    own_->readable = std::move(volume->readable);
    return 0;
}

void MountedFolder::closeIfUnused(std::chrono::milliseconds time)
{
    const kernel::MutexLock lock(useMutex_);
    if (!removable_ || uses_ != 0 || !folder_)
        return;
    if (!gone_ && (Clock::now() - lastUse_ < time || !changedVolumes().empty()))
        return;
    folder_ = Descriptor();
    own_->readable = Descriptor();
    const std::lock_guard volumesLock(volumesMutex_);
    std::erase_if(furtherVolumes_, [](const auto& volume) { return !volume->changed; });
}

bool MountedFolder::isInPlace()
{
    if (!removable_ || gone_)
        return !gone_;
    HostStatus there = {};
    if (readStatus(AT_FDCWD, removable_->place.c_str(), there) != 0 || keyOf(there) != identity_)
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
    // `bytes` can exceed `used`, because another process may have made the deleted file longer.
    while (!used_.compare_exchange_weak(used, used - std::min(used, bytes))) {
    }
}

void MountedFolder::expectChange(std::uint64_t device, std::string_view path)
{
    if (findVolume(device))
        return;
    auto volume = std::make_unique<Volume>();
    volume->device = device;
    volume->readable =
        Descriptor(openBelow(folder_.get(), path.empty() ? "." : std::string(path).c_str(), O_RDONLY | O_DIRECTORY));
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
