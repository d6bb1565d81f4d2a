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

// Opens an existing device and prints its warnings. Unlike quillbox, this function doesn't make a device if the folder
// is missing or empty. Throws a Failure if there is no device or it can't be opened.
std::unique_ptr<platform::device::Device> openExisting(const std::filesystem::path& folder);

// Opens a device that a command only reads. If the device can't be written, for example on a read-only medium, its
// database is copied to a temporary folder, and the command reads the copy.
class DeviceToRead {
public:
    // Throws a Failure if there is no device, or if the device, or the needed copy of its database, can't be opened.
    // Throws another std::runtime_error if the temporary folder can't be made.
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
// database by the copy. So a change is made completely or not at all, even if the process is killed. Throws a Failure
// or another std::runtime_error, and passes on what `change` throws. The change isn't made in these cases, unless the
// message says that it is. The call closes the database, so the caller must not use `device` afterwards.
void changeAsAWhole(const platform::device::Device& device, const std::function<void()>& change);

}  // namespace quillbox_device
