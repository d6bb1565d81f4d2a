// registry_store.h - the registry's keys and values in the device's database.
#pragma once

#include <filesystem>
#include <string>

namespace platform::registry {

// Opens the device's database, which contains the registry. Creates the database if it is missing. If RegRestoreFile
// has stored a file beside the database (the staged file), the content of this file replaces the registry. If the
// staged file is damaged, it is renamed and the registry stays. After openRegistry, programs can look up RegCopyFile
// and RegRestoreFile with GetProcAddressW. Returns false with a sentence for the user if the database or the staged
// file can't be used. The registry is then unchanged, with one exception: if the content of the staged file has
// replaced the registry, and only the deletion of the staged file or the flush of this deletion failed, the new content
// stays. On success `sentence` is empty or a warning. The warning names each file that was renamed, which can be the
// staged file or the database's write-ahead log.
[[nodiscard]] bool openRegistry(const std::filesystem::path& database, std::string& sentence);

// Closes the database. Keys that are still open become invalid, and stay invalid when the registry is opened again.
void closeRegistry();

}  // namespace platform::registry
