// mounted_folder.h - a host folder of the name space: its capacity, and which of its file systems were changed.
#pragma once

#include "host_calls.h"

#include "ce/types.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
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

class MountedFolder {
public:
    // `own` is the volume of the folder itself. `place`: where a removable folder is on the host; empty for another
    // one.
    MountedFolder(std::u16string name, Descriptor folder, std::unique_ptr<Volume> own, bool card,
                  std::optional<std::uint64_t> capacity, std::uint64_t used, std::string place = {});

    const std::u16string& name() const { return name_; }
    const std::string& hostName() const { return hostName_; }
    int folder() const { return folder_.get(); }
    bool isCard() const { return card_; }
    bool hasCapacity() const { return capacity_.has_value(); }
    std::uint64_t used() const { return used_.load(); }

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
    Volume* findVolume(std::uint64_t device);

    std::u16string name_;
    std::string hostName_;
    Descriptor folder_;
    bool card_;
    std::optional<std::uint64_t> capacity_;
    std::atomic<std::uint64_t> used_;
    const std::string place_;
    std::atomic<bool> gone_ = false;

    const std::unique_ptr<Volume> own_;
    std::mutex volumesMutex_;  // guards the list, not the volumes in it
    std::vector<std::unique_ptr<Volume>> furtherVolumes_;
};

}  // namespace platform::file
