// stored_databases.h - finds and describes the databases of the open device.
#pragma once

#include "database_formats/database_format.h"

#include "ce/store.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

namespace quillbox_device {

struct StoredDatabase {
    CEOID oid = 0;
    CEDBASEINFO info{};
};

// Returns all databases, the oldest first. Throws a Failure if the list of databases can't be read.
std::vector<StoredDatabase> storedDatabases();

// Returns the database of this name, or nothing if there is none. Names are compared without case. Throws a Failure if
// the database can't be read.
std::optional<StoredDatabase> databaseNamed(const std::u16string& name);

database_formats::DatabaseHead headOf(const CEDBASEINFO& info);

// Returns a line about the database, without a line end.
std::string textOf(const StoredDatabase& database);
nlohmann::ordered_json jsonOf(const StoredDatabase& database);

}  // namespace quillbox_device
