// stored_databases.h - the databases of the open device.
#pragma once

#include "database_formats/database_format.h"

#include "ce/store.h"

#include <optional>
#include <string>
#include <vector>

namespace quillbox_device {

struct StoredDatabase {
    CEOID oid = 0;
    CEDBASEINFO info{};
};

// The oldest first. Throws a Failure.
[[nodiscard]] std::vector<StoredDatabase> storedDatabases();

// Names are compared without case. Throws a Failure.
[[nodiscard]] std::optional<StoredDatabase> databaseNamed(const std::u16string& name);

[[nodiscard]] database_formats::DatabaseHead headOf(const CEDBASEINFO& info);

// One line.
void print(const StoredDatabase& database);

}  // namespace quillbox_device
