// stored_databases.h - the databases of the open device.
#pragma once

#include "ce/store.h"

#include <string>
#include <vector>

namespace quillbox_device {

struct StoredDatabase {
    CEOID oid = 0;
    CEDBASEINFO info{};
};

// The oldest first. Throws a Failure.
[[nodiscard]] std::vector<StoredDatabase> storedDatabases();

// One line.
void print(const StoredDatabase& database);

}  // namespace quillbox_device
