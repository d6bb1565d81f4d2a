// changing_copy.h - the copy of a device's database on which a change is made that counts as a whole or not at all.
//
// It lies beside the database and is as large. Only who has the device's lock may touch it, so one that is found when
// the device is opened is a killed process's.
#pragma once

#include <filesystem>

namespace platform::device {

// `database` is the file itself, not a link to it.
[[nodiscard]] std::filesystem::path changingCopyOf(const std::filesystem::path& database);

// Takes the copy away, with the log and journal that belong to it. False if some of it can't be deleted.
[[nodiscard]] bool removeChangingCopyOf(const std::filesystem::path& database);

}  // namespace platform::device
