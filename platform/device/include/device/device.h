// device.h - opens a device, which is a folder of the host (the Linux system).
//
// object-store/ is the device's root folder. Each folder in cards/ is a card, which stands for a memory card and
// appears as a folder in the root. device.db contains the registry, the databases, and the list of the host folders
// that the device shows at every start. Only one process at a time can open a device.
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
    bool inUse = false;    // another process uses the device or a card
};

// A set (one backup: a list file and a data file) that the program can restore from.
struct ShownSet {
    std::u16string listFile;  // its path on the device
    std::string error;        // a sentence for the user if the set can't be shown; empty otherwise
};

// A folder in which sets are stored.
struct ShownStorage {
    std::u16string path;  // on the device; empty for its root
    bool isNew = false;   // the device didn't show the folder before showStorage()
    OpenError error;      // has a sentence if the folder can't be shown
};

// An opened device. Its destructor closes every file and unlocks the device. Any thread may call its functions.
class Device {
public:
    virtual ~Device() = default;
    [[nodiscard]] virtual const std::filesystem::path& folder() const = 0;

    // Shows a folder of the host in the device's root, as a card if `card` is true, and remembers the folder for later
    // starts. The device shows it under its own name, followed by a number if that name is taken. Returns an empty
    // text, or a sentence for the user if the folder can't be shown or can't be remembered.
    [[nodiscard]] virtual std::string showFolder(const std::filesystem::path& folder, bool card) = 0;

    // Makes the folder that contains a set appear as a card until the device is closed. If the folder is named QUILBOX,
    // the card is its parent folder. If the device already shows a folder that contains the set, only returns the set's
    // path. `listFile` is the path of the set's list file on the host.
    [[nodiscard]] virtual ShownSet showSet(const std::filesystem::path& listFile) = 0;

    // Makes a folder of the host appear as a card until the device is closed. If the device shows this folder already,
    // only returns its path.
    [[nodiscard]] virtual ShownStorage showStorage(const std::filesystem::path& folder) = 0;

    // Returns the path that a file or folder of the device has on the host. `path` begins with a backslash, or is empty
    // for the device's root.
    [[nodiscard]] virtual std::filesystem::path hostPath(const std::u16string& path) const = 0;
    // Returns how many bytes can still be stored in the root (empty `path`) or in a folder that is shown in the root.
    // Returns nothing if the device shows no folder at `path`, or if the file system doesn't report a number.
    [[nodiscard]] virtual std::optional<std::uint64_t> roomIn(const std::u16string& path) const = 0;

    // While a medium is mounted directly in one of `folders`, the device has a card with the content of the medium,
    // unless it already shows a folder of the same file system. After a medium was mounted or unmounted, another
    // thread calls `changed` repeatedly until `changed` returns true.
    virtual void showMedia(std::vector<std::filesystem::path> folders, std::function<bool()> changed) = 0;
};

// The folders in which the desktop mounts the media of this user.
[[nodiscard]] std::vector<std::filesystem::path> usualMediaFolders();

struct OpenResult {
    std::unique_ptr<Device> device;  // null on failure
    OpenError error;
    std::vector<std::string> warnings;  // sentences for the user if the device was opened
};

// Opens the device in `folder`: from then on the process uses its folders, registry and cards. `extras` are folders
// that the device also shows until it is closed. A folder with an object-store/ is a device, and its missing parts are
// created. A new device is created if the folder doesn't exist, if it is empty, or if it has only the files that an
// interrupted first start left there. The new device has demonstration content if `demonstration` is true, otherwise it
// is empty. Any other folder is refused, because it may contain the user's own files.
[[nodiscard]] OpenResult openDevice(const std::filesystem::path& folder, const std::vector<ExtraFolder>& extras,
                                    bool demonstration);

// Returns the folder that the environment variable names. If the variable doesn't contain an absolute path, it is
// ignored, as the XDG rules demand. In that case the result is `usual` below the user's home. Returns nothing if HOME
// isn't an absolute path either.
[[nodiscard]] std::optional<std::filesystem::path> userFolder(const char* variable, const char* usual);

// Returns $XDG_DATA_HOME/quillbox/device, or $HOME/.local/share/quillbox/device. Returns nothing if neither variable is
// an absolute path.
[[nodiscard]] std::optional<std::filesystem::path> defaultDeviceFolder();

}  // namespace platform::device
