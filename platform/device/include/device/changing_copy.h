// changing_copy.h - the path of a copy of a device's database, and the deletion of the copy. A large change is made in
// the copy, which then replaces the database.
//
// The copy is in the folder of the database, so the disk of this folder needs room for both. Only the process that has
// locked the device uses the copy. So a copy that exists when a process opens the device was left by a killed process.
#pragma once

#include <filesystem>

namespace platform::device {

// The path of the copy. `database` is the path of the database file itself, not of a link to it.
[[nodiscard]] std::filesystem::path changingCopyOf(const std::filesystem::path& database);

// Deletes the copy and the files that SQLite may have left beside the copy: the write-ahead log, the index of this log,
// and the rollback journal. Returns false if a file exists and can't be deleted.
[[nodiscard]] bool removeChangingCopyOf(const std::filesystem::path& database);

}  // namespace platform::device
