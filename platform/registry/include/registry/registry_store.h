// registry_store.h - the registry's keys and values in the device's database.
#pragma once

#include <filesystem>
#include <string>

namespace platform::registry {

// Opens the device's database, which holds the registry, and makes it if it is missing. A registry file that was
// staged beside it comes into force first; a damaged one is put aside. From here on programs find RegCopyFile and
// RegRestoreFile. False with a sentence for the user if the database or the staged file can't be used; the registry is
// left as it is then. With success `sentence` is empty, or a warning that tells what was put aside.
[[nodiscard]] bool openRegistry(const std::filesystem::path& database, std::string& sentence);

// Closes the database. Keys that are still open are dead from here on, also when it is opened again.
void closeRegistry();

}  // namespace platform::registry
