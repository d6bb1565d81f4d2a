// database_commands.h - the commands that list, export and import a device's databases. Each of them throws a Failure,
// and has changed nothing then unless the message says so.
#pragma once

#include "database_import.h"

#include "database_formats/database_format.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quillbox_device {

void listDatabases(const std::filesystem::path& device, bool json);

// Exports the database of this name. Without a name: all databases that the format can hold. Without a format the
// extension of the file selects it. `file`: see Output (archive/host_output.h).
void exportDatabases(const std::filesystem::path& device, const std::optional<std::string>& name,
                     std::optional<database_formats::Format> format, const std::string& file, bool force);

// Imports the databases of a file, all of them or none. `name` and `existing`: see DatabaseImport. Without a format the
// extension of the file selects it. `file`: see Input (host_input.h). Prints what became of each database, and on
// standard error what no database can hold. `columnFile` has the lines of a ColumnMap; empty: there is none.
void importDatabases(const std::filesystem::path& device, const std::optional<std::string>& name,
                     std::optional<database_formats::Format> format, const std::string& file, Existing existing,
                     const std::string& columnFile);

}  // namespace quillbox_device
