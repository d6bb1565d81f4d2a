// fresh_device.h - finds out whether a folder is a device, empty or something else, and turns an empty folder into a
// device.
#pragma once

#include <filesystem>

namespace platform::device {

enum class FolderKind {
    Missing,
    Empty,   // empty, or has only files that an interrupted first start left
    Device,  // has an object store
    Other,   // contains something else
};

// Throws a Refusal if the folder can't be read, or isn't a folder.
[[nodiscard]] FolderKind kindOf(const std::filesystem::path& folder);

// Turns an empty folder into a device, with demonstration content if `demonstration` is true. If the process is killed
// before the device is complete, kindOf returns Empty for the folder. No database of a device may be open during the
// call. Throws a Refusal if the device can't be written.
void makeDevice(const std::filesystem::path& folder, bool demonstration);

// Deletes what killed processes have left in a device: the folder of an unfinished first start, and an unfinished copy
// of the database. The caller must have locked the device. Throws a Refusal if the folder can't be deleted. If the copy
// can't be deleted, this isn't an error, because the copy does no harm.
void clearLeftovers(const std::filesystem::path& folder);

}  // namespace platform::device
