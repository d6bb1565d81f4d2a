// device_copy.h - opens the databases and the registry of a device without changing the device.
#pragma once

#include "archive/temporary_folder.h"
#include "device_files.h"

#include <filesystem>
#include <vector>

namespace quillbox_device {

// Locks the device so that Quillbox can't start on it. A device without a lock file isn't locked. Copies the database
// and the staged registry of the device to a folder for temporary files, and opens the copy. A staged registry is a
// file from a restore, and replaces the registry at the next start of Quillbox. While a DeviceCopy exists, the
// platform's functions for databases and for the registry use the copy. The destructor closes and deletes the copy.
class DeviceCopy {
public:
    // Throws a Failure if the device can't be locked, or if its database can't be copied or opened. Throws a
    // std::runtime_error if the folder for the copy can't be made.
    explicit DeviceCopy(const std::filesystem::path& device);
    DeviceCopy(const DeviceCopy&) = delete;
    DeviceCopy& operator=(const DeviceCopy&) = delete;
    ~DeviceCopy();

    // Whether one of the copied files was changed after it was copied.
    bool isOutdated() const;

private:
    std::vector<Stamp> stamps() const;

    std::filesystem::path device_;
    platform::host::Descriptor lock_;
    archive::TemporaryFolder folder_;
    std::vector<Stamp> copied_;
};

}  // namespace quillbox_device
