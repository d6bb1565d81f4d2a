// registry_store.h - the registry's keys and values in the device's database.
#pragma once

#include <filesystem>
#include <string>

namespace platform::registry {

// Opens the device's database, which holds the registry, and makes it if it is missing. False with a sentence
// for the user if it can't be used; it is left as it is then.
[[nodiscard]] bool openRegistry(const std::filesystem::path& database, std::string& error);

// Closes the database. Keys that are still open are dead from here on, also when it is opened again.
void closeRegistry();

}  // namespace platform::registry
