// existing_device.h - opens the device that a command uses, and changes the device's database completely or not at all.
#pragma once

#include "archive/temporary_folder.h"
#include "device/device.h"
#include "host/descriptor.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillbox_device {

// Opens an existing device. Unlike quillbox, this function doesn't make a device if the folder is missing or empty.
// Throws a Failure.
std::unique_ptr<platform::device::Device> openExisting(const std::filesystem::path& folder);

// Opens a device that a command only reads. If the device can't be written, for example on a read-only medium, its
// database is copied to a temporary folder, and the command reads the copy.
class DeviceToRead {
public:
    // Throws a Failure.
    explicit DeviceToRead(const std::filesystem::path& folder);
    DeviceToRead(const DeviceToRead&) = delete;
    DeviceToRead& operator=(const DeviceToRead&) = delete;
    ~DeviceToRead();

    const std::filesystem::path& folder() const { return folder_; }

private:
    void openCopy();

    std::filesystem::path folder_;
    std::unique_ptr<platform::device::Device> device_;  // null if the device can't be written
    platform::host::Descriptor lock_;                   // open if the device can't be written but has a lock file
    std::optional<archive::TemporaryFolder> copy_;      // contains the copy, if the device can't be written
};

// Makes a copy of the device's database and opens the copy. Calls `change`, which changes the copy. Then replaces the
// database by the copy. So a change is made completely or not at all, even if the process is killed. Throws a Failure.
// Afterwards `device` can't be used any more.
void changeAsAWhole(const platform::device::Device& device, const std::function<void()>& change);

}  // namespace quillbox_device
