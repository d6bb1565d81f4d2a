// existing_device.h - opens the device of a command, and changes its database completely or not at all.
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

// Opens a device. Unlike the program it makes none of a missing or empty folder. Throws a Failure.
std::unique_ptr<platform::device::Device> openExisting(const std::filesystem::path& folder);

// A device that a command only reads. One that can't be written, for example on a read-only medium, is read from a copy
// of its database in a temporary folder.
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
    std::unique_ptr<platform::device::Device> device_;  // null for one that can't be written
    platform::host::Descriptor lock_;                   // of such a device, if there is a lock file
    std::optional<archive::TemporaryFolder> copy_;      // has the copy, if there is one
};

// Runs `change` on a copy of the device's database, and then replaces the database by the copy. So a change is made
// completely or not at all, even if the process is killed. Throws a Failure. Afterwards `device` can't be used any
// more.
void changeAsAWhole(const platform::device::Device& device, const std::function<void()>& change);

}  // namespace quillbox_device
