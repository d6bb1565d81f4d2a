// shown_folders.h - the folders of the host that an open device shows: its own folders, the cards, and the folders that
// the user has added.
//
// Any thread may use the object. It changes while the program runs, because media are mounted and unmounted.
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
    // Unlocks the cards that add() has locked. Call file::removeAllMounts() before the destructor runs.
    ~ShownFolders() = default;
    ShownFolders(const ShownFolders&) = delete;
    ShownFolders& operator=(const ShownFolders&) = delete;

    // Shows a folder. Throws a Refusal if the name is taken, the folder is shown already, another device has locked the
    // card, or the file layer can't show the folder. Returns a warning if the folder hides a folder of the device that
    // isn't empty.
    std::optional<std::string> add(MountPoint mountPoint) EXCLUDES(mutex_);

    // Adds a card for the file system that is mounted in the folder `place`. The card gets the name that freeName
    // returns for `place`. removeMedium removes the card. addMedium returns false if the device shows a folder of that
    // file system already, or if the card can't be shown.
    [[nodiscard]] bool addMedium(const std::filesystem::path& place) EXCLUDES(mutex_);
    void removeMedium(const std::filesystem::path& place) EXCLUDES(mutex_);

    // Returns the name under which `folder` can be shown: its own name, followed by a number in brackets if something
    // in the root has that name.
    std::string freeName(const std::filesystem::path& folder) const EXCLUDES(mutex_);

    // Returns the path that a file or folder of the host has on the device. Returns nothing if no shown folder contains
    // it.
    std::optional<std::u16string> pathOf(const std::filesystem::path& entry) const EXCLUDES(mutex_);

    // If `folder` is itself one of the shown folders, returns its path on the device. Returns nothing for any other
    // folder, even if it is inside a shown folder.
    std::optional<std::u16string> pathOfShown(const std::filesystem::path& folder) const EXCLUDES(mutex_);

    // Returns the path that a file or folder of the device has on the host. `path` begins with a backslash, or is empty
    // for the device's root.
    std::filesystem::path hostPathOf(const std::u16string& path) const EXCLUDES(mutex_);

    // Returns how many bytes can still be stored in a shown folder. Returns nothing if no folder is shown at `path`, or
    // if the file system doesn't report a number.
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

// Opens the folder that `extra` names. Throws a Refusal on failure.
MountPoint mountPointOf(const ExtraFolder& extra);

}  // namespace platform::device
