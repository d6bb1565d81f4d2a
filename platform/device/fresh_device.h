// fresh_device.h - what a folder is before it is opened as a device, and how an empty one becomes one.
#pragma once

#include <filesystem>

namespace platform::device {

enum class FolderKind {
    Missing,
    Empty,   // or left by a first start that was broken off
    Device,  // has an object store
    Other,   // holds something else
};

// Throws a Refusal if the folder can't be read, or isn't a folder.
[[nodiscard]] FolderKind kindOf(const std::filesystem::path& folder);

// Makes an empty folder a device, whole or not at all: a kill in between leaves one that kindOf calls empty.
// No device's database may be open. Throws a Refusal if it can't be written.
void makeDevice(const std::filesystem::path& folder, bool demonstration);

// Deletes what killed processes have left in a device: the folder of an unfinished first start, and an unfinished copy
// of the database. The caller has the device's lock. Throws a Refusal if the folder can't be deleted. The copy does no
// harm.
void clearLeftovers(const std::filesystem::path& folder);

}  // namespace platform::device
