// stored_databases.h - the databases of the open device.
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

// All databases, the oldest first. Throws a Failure.
std::vector<StoredDatabase> storedDatabases();

// The name is compared without case. Nothing if the device has no such database. Throws a Failure.
std::optional<StoredDatabase> databaseNamed(const std::u16string& name);

database_formats::DatabaseHead headOf(const CEDBASEINFO& info);

// A line about it, without a line end.
std::string textOf(const StoredDatabase& database);
nlohmann::ordered_json jsonOf(const StoredDatabase& database);

}  // namespace quillbox_device
