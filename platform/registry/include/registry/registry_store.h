// registry_store.h - the registry's keys and values in the device's database.
#pragma once

#include <filesystem>
#include <string>

namespace platform::registry {

// Opens the device's database, which contains the registry. Creates the database if it is missing. If a registry file
// is staged beside the database, its content replaces the registry. A damaged staged file is renamed instead. After
// openRegistry, programs can look up RegCopyFile and RegRestoreFile with GetProcAddressW. Returns false with a sentence
// for the user if the database or the staged file can't be used. In that case the registry is unchanged. There is one
// exception: if only the deletion of the staged file failed, its content has replaced the registry. On success
// `sentence` is empty or a warning. The warning names each file that was renamed, which can be the staged file or the
// database's write-ahead log.
[[nodiscard]] bool openRegistry(const std::filesystem::path& database, std::string& sentence);

// Closes the database. Keys that are still open become invalid, and stay invalid when the registry is opened again.
void closeRegistry();

}  // namespace platform::registry
