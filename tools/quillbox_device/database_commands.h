// database_commands.h - the commands that list, export and import a device's databases. A command that fails throws a
// Failure or another std::runtime_error, and leaves the device unchanged unless the message says otherwise.
#pragma once

#include "database_import.h"

#include "database_formats/database_format.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quillbox_device {

void listDatabases(const std::filesystem::path& device, bool json);

// Exports the database `name`. If `name` is missing, exports all databases that the format can hold. If `format` is
// missing, the extension of the file selects the format. `file` is the path of the new file, or "-" for standard
// output. If `force` is false and there already is a regular file or a block device at the path `file`, the function
// throws and writes nothing.
void exportDatabases(const std::filesystem::path& device, const std::optional<std::string>& name,
                     std::optional<database_formats::Format> format, const std::string& file, bool force);

// Imports the databases of a file, all of them or none. If `name` is given, the file must contain one database, and
// this database is imported under `name`. `existing` says what happens if the device already has a database of the same
// name. `file` is a path, or "-" for standard input. If `format` is missing, the extension of the file selects the
// format. Prints what was done to each database. Prints on standard error which fields and items of the file were left
// out, which fields were read with a guessed character set, and which imported names can't be file names. `columnFile`
// is the path of a file with the lines of a ColumnMap, or empty.
void importDatabases(const std::filesystem::path& device, const std::optional<std::string>& name,
                     std::optional<database_formats::Format> format, const std::string& file, Existing existing,
                     const std::string& columnFile);

}  // namespace quillbox_device
