// changing_copy.h - a copy of a device's database, in which a large change is made before it replaces the database.
//
// The copy is beside the database and as large. Only the process that has locked the device uses it, so a copy found at
// the opening of the device was left by a killed process.
#pragma once

#include <filesystem>

namespace platform::device {

// `database` is the file itself, not a link to it.
[[nodiscard]] std::filesystem::path changingCopyOf(const std::filesystem::path& database);

// Deletes the copy, its log and its journal. False if one of them can't be deleted.
[[nodiscard]] bool removeChangingCopyOf(const std::filesystem::path& database);

}  // namespace platform::device
