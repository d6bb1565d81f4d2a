// device.h - the device: a folder of the host.
//
// object-store/ is the root of the name space, each folder in cards/ is a card, device.db holds the registry
// and what else is to be remembered (further cards with their host folder and capacity). One process owns a
// device at a time.
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

// An opened device. Closing it closes every file and gives the device back.
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

// Opens the device in `folder` and puts its name space, registry and cards in force for the process. A
// folder that has an object-store/ is a device, and what else is missing in it is made. A folder that
// doesn't exist or is empty becomes one: with demonstration content if `demonstration`, otherwise bare.
// Any other folder is refused: Quillbox doesn't spread itself over somebody's files.
[[nodiscard]] OpenResult openDevice(const std::filesystem::path& folder, const std::vector<ExtraFolder>& extras,
                                    bool demonstration);

// $XDG_DATA_HOME/quillbox/device, or $HOME/.local/share/quillbox/device. A variable whose path isn't absolute doesn't
// count, by the rules of the first; nothing if neither does.
[[nodiscard]] std::optional<std::filesystem::path> defaultDeviceFolder();

}  // namespace platform::device
