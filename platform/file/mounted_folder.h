// mounted_folder.h - one host folder of the name space, and how much its files may hold.
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
    // A folder on it, opened before the first change: the host tells of what it couldn't write since.
    Descriptor readable;
    std::atomic<bool> changed = false;
};

class MountedFolder {
public:
    // `own` is the volume of the folder itself.
    MountedFolder(std::u16string name, Descriptor folder, std::unique_ptr<Volume> own, bool card,
                  std::optional<std::uint64_t> capacity, std::uint64_t used);

    [[nodiscard]] const std::u16string& name() const { return name_; }
    [[nodiscard]] const std::string& hostName() const { return hostName_; }
    [[nodiscard]] int folder() const { return folder_.get(); }
    [[nodiscard]] bool isCard() const { return card_; }
    [[nodiscard]] bool hasCapacity() const { return capacity_.has_value(); }
    [[nodiscard]] std::uint64_t used() const { return used_.load(); }

    // Takes up to `bytes` of the room that is left and gives what it took; all of it without a capacity.
    [[nodiscard]] std::uint64_t takeRoom(std::uint64_t bytes);
    void giveBackRoom(std::uint64_t bytes);

    // Before something is changed on the host's device of that number: one below the folder may be another file
    // system's. `path` is that of a folder on it.
    void expectChange(std::uint64_t device, const std::string& path);

    // After that, so that a flush at the same time finds it either on the host or noted.
    void noteChange(std::uint64_t device);

    // They stay as long as the folder.
    [[nodiscard]] std::vector<Volume*> changedVolumes();

private:
    [[nodiscard]] Volume* findVolume(std::uint64_t device);

    std::u16string name_;
    std::string hostName_;
    Descriptor folder_;
    bool card_;
    std::optional<std::uint64_t> capacity_;
    std::atomic<std::uint64_t> used_;

    const std::unique_ptr<Volume> own_;
    std::mutex volumesMutex_;  // guards the list, not the volumes in it
    std::vector<std::unique_ptr<Volume>> furtherVolumes_;
};

// The mounts do not change while the program runs, so reading them takes no lock.

// The root; null before there is one.
[[nodiscard]] std::shared_ptr<MountedFolder> rootMount();

// The folder mounted under that name; null if there is none.
[[nodiscard]] std::shared_ptr<MountedFolder> findMount(std::u16string_view name);

// The nth folder mounted in the root, from 0; null behind the last.
[[nodiscard]] std::shared_ptr<MountedFolder> mountAt(std::size_t index);

// Does a mounted folder hide the root's entry of that host name?
[[nodiscard]] bool hiddenByMount(std::string_view hostName);

}  // namespace platform::file
