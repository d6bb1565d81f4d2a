// registry_store.h - the registry's keys and values in the device's database.
#pragma once

#include <filesystem>
#include <string>

namespace platform::registry {

// Opens the device's database, which contains the registry, and creates it if it is missing. If a registry file is
// staged beside it, the file replaces the registry. A damaged one is renamed instead. Afterwards programs can look up
// RegCopyFile and RegRestoreFile. False with a sentence for the user if the database or the staged file can't be used.
// Then the registry is unchanged. On success `sentence` is empty or a warning that names the renamed file.
[[nodiscard]] bool openRegistry(const std::filesystem::path& database, std::string& sentence);

// Closes the database. Keys that are still open become invalid, and stay so when it is opened again.
void closeRegistry();

}  // namespace platform::registry
