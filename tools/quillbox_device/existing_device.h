// existing_device.h - opens the device of a command, and changes its database completely or not at all.
#pragma once

#include "device/device.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace quillbox_device {

// Opens a device. Unlike the program it makes none of a missing or empty folder. Throws a Failure.
std::unique_ptr<platform::device::Device> openExisting(const std::filesystem::path& folder);

// Runs `change` on a copy of the device's database, and then replaces the database by the copy. So a change is made
// completely or not at all, even if the process is killed. Throws a Failure. Afterwards `device` can't be used any
// more.
void changeAsAWhole(const platform::device::Device& device, const std::function<void()>& change);

}  // namespace quillbox_device
