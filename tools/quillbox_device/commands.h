// commands.h - what the program does, a function a command. Each throws a Failure, and has changed nothing then unless
// the sentence says so.
#pragma once

#include "database_formats/database_format.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace quillbox_device {

// Prints what the device holds.
void show(const std::filesystem::path& device);

// Makes a device of a folder that is missing or empty.
void init(const std::filesystem::path& device, bool demonstration);

// Folders of the host that the device shows in its root at every start.
void listCards(const std::filesystem::path& device);
void addCard(const std::filesystem::path& device, const std::string& name, const std::filesystem::path& folder,
             std::optional<std::uint64_t> capacity, bool plainFolder);
void removeCard(const std::filesystem::path& device, const std::string& name);

// Files are paths of the host, or "-" for standard input and output. An export replaces no file unless `force`;
// what is no file, such as a pipe, it writes to.
void exportRegistry(const std::filesystem::path& device, const std::string& file, bool force);

// Sets what the file names; everything else stays.
void importRegistry(const std::filesystem::path& device, const std::string& file);

void listDatabases(const std::filesystem::path& device);

using database_formats::Format;

// One database, or all that the format holds. `format`: none goes by the file's extension.
void exportDatabases(const std::filesystem::path& device, const std::optional<std::string>& name,
                     std::optional<Format> format, const std::string& file, bool force);

// What becomes of a database that exists already.
enum class Existing { Refused, Replaced, AddedTo };

// Makes the databases of a file. `name` is that of the one that it makes; without one the file tells, or the format.
// Prints what became of each database, and on standard error what none can hold.
void importDatabases(const std::filesystem::path& device, const std::optional<std::string>& name,
                     std::optional<Format> format, const std::string& file, Existing existing);

}  // namespace quillbox_device
