// existing_device.h - the device that a command works on, opened for as long as the command runs.
#pragma once

#include "device/device.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace quillbox_device {

// Opens a folder that is a device already. Throws a Failure.
[[nodiscard]] std::unique_ptr<platform::device::Device> openExisting(const std::filesystem::path& folder);

// Runs `change` on a copy of the device's database, which takes the old one's place when it returns: all of the change
// or nothing, also when the process is killed. `device` can't be used any more afterwards.
void changeAsAWhole(const platform::device::Device& device, const std::function<void()>& change);

}  // namespace quillbox_device
