// mounted_folder.h - represents a folder of the host (the Linux system) that is mounted in the device's name space.
// Keeps its capacity, and remembers which file systems in it this process has changed.
#pragma once

#include "attributes.h"
#include "host_calls.h"
#include "kept_folder.h"
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
    // A descriptor of a folder on the file system, opened before the first change. A flush through this descriptor
    // reports each write that has failed since the descriptor was opened.
    Descriptor readable;
    std::atomic<bool> changed = false;

    // Makes a Volume for the file system that contains `folder`, an open folder. Null if the folder can't be read.
    static std::unique_ptr<Volume> of(int folder);
};

// A folder of the host that is mounted in the device's name space. The object lives until removeAllMounts. beginUse
// opens the descriptors of a removable folder, and closeIfUnused closes them. The capacity, if there is one, limits the
// total length of the files in the folder.
class MountedFolder {
public:
    // `own` is the Volume for the file system that contains the folder itself.
    MountedFolder(std::u16string name, Descriptor folder, std::unique_ptr<Volume> own, bool card,
                  std::optional<std::uint64_t> capacity, std::uint64_t used);
    // Makes a removable folder. `identity` contains the st_dev and the inode number of the host folder.
    MountedFolder(Removable removable, const FileKey& identity);

    const std::u16string& name() const { return name_; }
    const std::string& hostName() const { return hostName_; }
    // The caller must have a MountUse of this folder.
    int folder() const { return folder_.get(); }
    // See KeptFolder::opened. Always null for a removable folder, because a descriptor would keep its medium in use.
    std::shared_ptr<const Descriptor> keptFolder(std::string_view path)
    {
        return isRemovable() ? nullptr : kept_.opened(folder(), path);
    }
    bool isCard() const { return card_; }
    bool hasCapacity() const { return capacity_.has_value(); }
    std::optional<std::uint64_t> capacity() const { return capacity_; }
    std::uint64_t used() const { return used_.load(); }

    bool isRemovable() const { return removable_.has_value(); }
    // beginUse opens the removable folder if it is closed, and increments the number of uses. Returns 0 or the error.
    // beginUseIfOpen increments the number only if the folder is open, and returns whether it is open.
    [[nodiscard]] DWORD beginUse() EXCLUDES(useMutex_);
    [[nodiscard]] bool beginUseIfOpen() EXCLUDES(useMutex_);
    void endUse() EXCLUDES(useMutex_);
    // Closes a removable folder that nothing uses. If the folder is gone (isGone), closes it at once. Otherwise closes
    // it only if nothing has used it for `time` and all its changes are flushed.
    void closeIfUnused(std::chrono::milliseconds time) EXCLUDES(useMutex_);

    // Notes that the medium of the folder was unmounted. The host may still accept writes to its open files, but the
    // written bytes may be lost.
    void setGone() { gone_ = true; }
    bool isGone() const { return gone_; }
    // Asks the host whether the medium of the folder is still mounted at its path. If it isn't, the folder is gone from
    // then on. Returns false if the folder is gone. If the result is true, everything that was flushed before this call
    // is on the medium. The result is always true for a folder that isn't removable.
    [[nodiscard]] bool isInPlace();

    // Subtracts up to `bytes` bytes from the free capacity. Returns how many bytes it has subtracted. For a folder
    // without a capacity, returns `bytes`.
    [[nodiscard]] std::uint64_t takeRoom(std::uint64_t bytes);
    void giveBackRoom(std::uint64_t bytes);

    // Registers the file system whose st_dev is `device`, so that a later noteChange() can mark it as changed. Call
    // this function before each change. `path` is the path of a folder on the file system, relative to this mounted
    // folder, or empty for this folder. `device` differs from the folder's own st_dev if another file system is mounted
    // below the folder.
    void expectChange(std::uint64_t device, std::string_view path);

    // Marks the registered file system as changed. Call it after the change, not before. Otherwise a flush that runs at
    // the same time could miss the change and still clear the mark.
    void noteChange(std::uint64_t device);

    // Returns the volumes with changes that aren't flushed. The pointers are valid as long as the folder is in use.
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

    KeptFolder kept_;

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

// Refers to a mounted folder, and keeps it open if it is removable. Only uses of removable folders are counted. If uses
// of the root were counted, too, all threads that resolve paths would write to the same counter and slow each other
// down.
class MountUse {
public:
    MountUse() = default;
    // If the folder is removable, the caller has called beginUse.
    explicit MountUse(MountedFolder* folder) : folder_(folder) {}
    MountUse(const MountUse& other) : folder_(other.folder_)
    {
        if (folder_ && folder_->isRemovable())
            (void)folder_->beginUseIfOpen();  // succeeds: `other` keeps the folder open
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
