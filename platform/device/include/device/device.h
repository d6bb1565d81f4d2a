// device.h - the device: a folder of the host.
//
// object-store/ is the root of the name space, and each folder in cards/ is a card. device.db contains the registry,
// the databases and the remembered folders of the host. Only one process at a time can open a device.
#pragma once

#include "device/extra_folder.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform::device {

struct OpenError {
    std::string sentence;  // for the user, without a final line break
    bool inUse = false;    // another process owns the device or a card
};

// A set that the program can restore from.
struct ShownSet {
    std::u16string listFile;  // its path on the device
    std::string error;        // a sentence for the user if it can't be shown; empty otherwise
};

// A folder in which sets are stored.
struct ShownStorage {
    std::u16string path;  // on the device; empty for its root
    bool isNew = false;   // the device has shown it only since this call
    OpenError error;      // with a sentence if it can't be shown
};

// An opened device. Its destructor closes every file and unlocks the device. Any thread can make the calls.
class Device {
public:
    virtual ~Device() = default;
    [[nodiscard]] virtual const std::filesystem::path& folder() const = 0;

    // Shows a folder of the host in the root, now and at every start, under its own name or with a number after it.
    // Returns a sentence for the user on failure, otherwise an empty text.
    [[nodiscard]] virtual std::string showFolder(const std::filesystem::path& folder, bool card) = 0;

    // Shows the storage of a set until the device is closed, as a card, unless the device shows it already. `listFile`
    // is on the host.
    [[nodiscard]] virtual ShownSet showSet(const std::filesystem::path& listFile) = 0;

    // Shows a folder of the host as a storage until the device is closed: as a card, unless the device shows it
    // already.
    [[nodiscard]] virtual ShownStorage showStorage(const std::filesystem::path& folder) = 0;

    // The host's path of a path on the device, which begins with a backslash; that of the root if it is empty.
    [[nodiscard]] virtual std::filesystem::path hostPath(const std::u16string& path) const = 0;
    // The bytes that can still be stored in a folder that the root shows; nothing if the host doesn't say.
    [[nodiscard]] virtual std::optional<std::uint64_t> roomIn(const std::u16string& path) const = 0;

    // Shows each medium as a card while it is mounted directly in one of `folders`. After one was mounted or unmounted,
    // another thread calls `changed` repeatedly until it returns true.
    virtual void showMedia(std::vector<std::filesystem::path> folders, std::function<bool()> changed) = 0;
};

// Where the desktop mounts the media of this user.
[[nodiscard]] std::vector<std::filesystem::path> usualMediaFolders();

struct OpenResult {
    std::unique_ptr<Device> device;  // null on failure
    OpenError error;
    std::vector<std::string> warnings;  // sentences for the user of a device that is open
};

// Opens the device in `folder`: from then on the process uses its name space, registry and cards. A folder with an
// object-store/ is a device, and its missing parts are created. A folder that doesn't exist or is empty becomes a
// device, with demonstration content if `demonstration`, otherwise empty. Any other folder is refused, because it may
// contain the user's own files.
[[nodiscard]] OpenResult openDevice(const std::filesystem::path& folder, const std::vector<ExtraFolder>& extras,
                                    bool demonstration);

// The folder that this variable of the environment names, or `usual` below the user's home. A variable without an
// absolute path is ignored, as the XDG rules demand. Nothing if both are ignored.
[[nodiscard]] std::optional<std::filesystem::path> userFolder(const char* variable, const char* usual);

// $XDG_DATA_HOME/quillbox/device, or $HOME/.local/share/quillbox/device.
[[nodiscard]] std::optional<std::filesystem::path> defaultDeviceFolder();

}  // namespace platform::device
