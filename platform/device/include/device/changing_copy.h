// changing_copy.h - the path of a copy of a device's database, and its deletion. A large change is made in the copy,
// which then replaces the database.
//
// The copy is in the folder of the database and has the same size. Only the process that has locked the device uses the
// copy. So a copy that exists when a device is opened was left by a killed process.
#pragma once

#include <filesystem>

namespace platform::device {

// The path of the copy. `database` is the path of the database file itself, not of a link to it.
[[nodiscard]] std::filesystem::path changingCopyOf(const std::filesystem::path& database);

// Deletes the copy, its log and its journal. False if one of them can't be deleted.
[[nodiscard]] bool removeChangingCopyOf(const std::filesystem::path& database);

}  // namespace platform::device
