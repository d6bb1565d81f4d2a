// database_commands.h - the commands that list, export and import a device's databases. A command that fails throws a
// Failure. It has then changed nothing on the device, unless the message says otherwise.
#pragma once

#include "database_import.h"

#include "database_formats/database_format.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quillbox_device {

void listDatabases(const std::filesystem::path& device, bool json);

// Exports the database `name`, or without a name all databases that the format can hold. Without a format, the
// extension of the file selects it. `file` has the same meaning as for an Output (archive/host_output.h).
void exportDatabases(const std::filesystem::path& device, const std::optional<std::string>& name,
                     std::optional<database_formats::Format> format, const std::string& file, bool force);

// Imports the databases of a file, all of them or none. `name` and `existing` have the same meaning as for a
// DatabaseImport, and `file` the same as for an Input (host_input.h). Without a format, the extension of the file
// selects it. Prints what was done to each database. Prints on standard error which fields of the file no database can
// hold. `columnFile` is the path of a file with the lines of a ColumnMap, or empty.
void importDatabases(const std::filesystem::path& device, const std::optional<std::string>& name,
                     std::optional<database_formats::Format> format, const std::string& file, Existing existing,
                     const std::string& columnFile);

}  // namespace quillbox_device
