// shown_folders.h - the folders of the host that an open device shows: its own, the cards, and those of the user.
//
// Any thread: some come and go while the program runs.
#pragma once

#include "host/descriptor.h"
#include "kernel/mutex.h"

#include "device/extra_folder.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace platform::device {

using host::Descriptor;

// A folder of the host that is to be shown.
struct MountPoint {
    std::u16string name;  // in the device's root; empty for the root
    std::filesystem::path folder;
    Descriptor opened;
    bool card = false;
    std::optional<std::uint64_t> capacity;
};

class ShownFolders {
public:
    explicit ShownFolders(std::filesystem::path device) : device_(std::move(device)) {}
    // Unlocks the cards. Remove the folders from the name space before that.
    ~ShownFolders() = default;
    ShownFolders(const ShownFolders&) = delete;
    ShownFolders& operator=(const ShownFolders&) = delete;

    // Throws a Refusal: the name is taken, the folder is shown already, or another device has locked the card. Returns
    // a warning if the folder hides one of the device.
    std::optional<std::string> add(MountPoint mountPoint) EXCLUDES(mutex_);

    // Shows what is mounted in the folder `place` as a card, under the name of that folder, until removeMedium. False
    // if the device shows something of that file system already, or if nothing can be shown.
    [[nodiscard]] bool addMedium(const std::filesystem::path& place) EXCLUDES(mutex_);
    void removeMedium(const std::filesystem::path& place) EXCLUDES(mutex_);

    // A name for a further folder that no folder of the root has: that of the folder, or with a number in brackets.
    std::string freeName(const std::filesystem::path& folder) const EXCLUDES(mutex_);

    // The device's path of an entry of the host, if a shown folder contains it.
    std::optional<std::u16string> pathOf(const std::filesystem::path& entry) const EXCLUDES(mutex_);

    // The device's path of a folder that is shown itself; nothing for any other.
    std::optional<std::u16string> pathOfShown(const std::filesystem::path& folder) const EXCLUDES(mutex_);

    // The host's path of a path on the device, which begins with a backslash; that of the root if it is empty.
    std::filesystem::path hostPathOf(const std::u16string& path) const EXCLUDES(mutex_);

    // The bytes that can still be stored in a shown folder; nothing if the host doesn't say.
    std::optional<std::uint64_t> roomIn(const std::u16string& path) const EXCLUDES(mutex_);

private:
    struct Shown {
        std::u16string name;
        std::filesystem::path folder;
        dev_t device = 0;
        ino_t inode = 0;
        bool medium = false;
        std::optional<std::uint64_t> capacity = {};
    };

    void refuseDouble(const Shown& added) const REQUIRES(mutex_);
    std::string nameFor(const std::filesystem::path& folder) const REQUIRES(mutex_);
    const Shown* find(const std::u16string& name) const REQUIRES(mutex_);
    bool isTaken(const std::u16string& name) const REQUIRES(mutex_);
    [[nodiscard]] std::optional<std::string> whatIsHiddenBy(const MountPoint& mountPoint) const;

    const std::filesystem::path device_;
    mutable kernel::Mutex mutex_;
    std::vector<Shown> shown_ GUARDED_BY(mutex_);
    std::vector<Descriptor> cardLocks_ GUARDED_BY(mutex_);
};

// Opens the folder that `extra` names. Throws a Refusal.
MountPoint mountPointOf(const ExtraFolder& extra);

}  // namespace platform::device
