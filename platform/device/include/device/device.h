// device.h - the device: a folder of the host.
//
// object-store/ is the root of the name space, and each folder in cards/ is a card. device.db contains the registry,
// the databases and the remembered folders of the host. Only one process at a time can open a device.
#pragma once

#include "device/extra_folder.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform::device {

struct OpenError {
    std::string sentence;  // for the user, without a final line break
    bool inUse = false;    // another process owns the device or a card
};

// An opened device. Its destructor closes every file and unlocks the device.
class Device {
public:
    virtual ~Device() = default;
    [[nodiscard]] virtual const std::filesystem::path& folder() const = 0;
};

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

// $XDG_DATA_HOME/quillbox/device, or $HOME/.local/share/quillbox/device. A variable without an absolute path is
// ignored, as the XDG rules demand. Nothing if both are ignored.
[[nodiscard]] std::optional<std::filesystem::path> defaultDeviceFolder();

}  // namespace platform::device
