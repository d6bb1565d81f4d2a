// mounted_folder.h - a host folder of the name space: its capacity, and which of its file systems were changed.
#pragma once

#include "attributes.h"
#include "host_calls.h"
#include "kernel/mutex.h"

#include "file/removable.h"

#include "ce/types.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform::file {

// A file system of the host that holds files of a mounted folder.
struct Volume {
    std::uint64_t device = 0;
    // A folder on it, opened before the first change: a flush by it reports each write that failed since.
    Descriptor readable;
    std::atomic<bool> changed = false;

    // The one of an open folder; null if it can't be read.
    static std::unique_ptr<Volume> of(int folder);
};

// Lives until the name space is taken down. The descriptors of a removable folder are open only while it is used.
class MountedFolder {
public:
    // `own` is the volume of the folder itself.
    MountedFolder(std::u16string name, Descriptor folder, std::unique_ptr<Volume> own, bool card,
                  std::optional<std::uint64_t> capacity, std::uint64_t used);
    // A removable folder; `identity` is that of the host folder.
    MountedFolder(Removable removable, const FileKey& identity);

    const std::u16string& name() const { return name_; }
    const std::string& hostName() const { return hostName_; }
    // The caller has a MountUse.
    int folder() const { return folder_.get(); }
    bool isCard() const { return card_; }
    bool hasCapacity() const { return capacity_.has_value(); }
    std::optional<std::uint64_t> capacity() const { return capacity_; }
    std::uint64_t used() const { return used_.load(); }

    bool isRemovable() const { return removable_.has_value(); }
    // Opens a removable folder, and counts the use. 0 or the error.
    [[nodiscard]] DWORD beginUse() EXCLUDES(useMutex_);
    [[nodiscard]] bool beginUseIfOpen() EXCLUDES(useMutex_);
    void endUse() EXCLUDES(useMutex_);
    // Closes it if nothing uses it, nothing used it for this long, and no change is left to flush.
    void closeIfUnused(std::chrono::milliseconds time) EXCLUDES(useMutex_);

    // The folder was unmounted from its place. Its open files may still work, but nothing written to them is kept.
    void setGone() { gone_ = true; }
    bool isGone() const { return gone_; }
    // Asks the host. What was flushed before this returns true is on the medium. Always true unless removable.
    [[nodiscard]] bool isInPlace();

    // Takes up to `bytes` from the capacity that is left. Returns what it took; all of it if there is no capacity.
    [[nodiscard]] std::uint64_t takeRoom(std::uint64_t bytes);
    void giveBackRoom(std::uint64_t bytes);

    // Call it before a change on the host's device of that number. Folders below this one can be on other devices;
    // `path` is that of a folder on the device.
    void expectChange(std::uint64_t device, const std::string& path);

    // Call it after the change. So a flush at the same time either includes the change or leaves it noted.
    void noteChange(std::uint64_t device);

    // They live as long as the folder.
    std::vector<Volume*> changedVolumes();

private:
    using Clock = std::chrono::steady_clock;

    Volume* findVolume(std::uint64_t device);
    [[nodiscard]] DWORD open() REQUIRES(useMutex_);

    std::u16string name_;
    std::string hostName_;
    Descriptor folder_;
    bool card_;
    std::optional<std::uint64_t> capacity_;
    std::atomic<std::uint64_t> used_;

    const std::unique_ptr<Volume> own_;
    std::mutex volumesMutex_;  // guards the list, not the volumes in it
    std::vector<std::unique_ptr<Volume>> furtherVolumes_;

    const std::optional<Removable> removable_;
    const FileKey identity_;
    std::atomic<bool> gone_ = false;
    kernel::Mutex useMutex_;
    int uses_ GUARDED_BY(useMutex_) = 0;
    Clock::time_point lastUse_ GUARDED_BY(useMutex_);
};

// Refers to a folder, and keeps a removable one open. Other folders aren't counted: each thread that resolves a path
// would write the counter.
class MountUse {
public:
    MountUse() = default;
    // The caller has begun the use of a removable folder.
    explicit MountUse(MountedFolder* folder) : folder_(folder) {}
    MountUse(const MountUse& other) : folder_(other.folder_)
    {
        if (folder_ && folder_->isRemovable())
            (void)folder_->beginUseIfOpen();  // it is open, as the other one keeps it so
    }
    MountUse(MountUse&& other) noexcept : folder_(std::exchange(other.folder_, nullptr)) {}
    MountUse& operator=(MountUse other) noexcept
    {
        std::swap(folder_, other.folder_);
        return *this;
    }
    ~MountUse()
    {
        if (folder_ && folder_->isRemovable())
            folder_->endUse();
    }

    explicit operator bool() const { return folder_ != nullptr; }
    MountedFolder* get() const { return folder_; }
    MountedFolder* operator->() const { return folder_; }
    MountedFolder& operator*() const { return *folder_; }
    bool operator==(const MountUse& other) const { return folder_ == other.folder_; }

private:
    MountedFolder* folder_ = nullptr;
};

}  // namespace platform::file
