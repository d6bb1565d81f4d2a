// database_rows.h - the rows that describe databases: name, type, sort orders, counts.
#pragma once

#include "database/connection.h"
#include "record_rows.h"

#include "ce/store.h"

#include <optional>
#include <span>
#include <string>

namespace platform::store {

// The name of a database, cut to 31 characters.
struct DatabaseName {
    std::u16string written;
    std::u16string folded;  // without case, the key of the row

    // Nothing for a name that can't be used.
    [[nodiscard]] static std::optional<DatabaseName> of(const WCHAR* name);
};

// The database of that type with the lowest oid above `after`. Type 0 is any.
[[nodiscard]] Found<CEOID> databaseAfter(database::Connection& connection, CEOID after, DWORD type);
// If only a row with a wrong folded name has that name, the result is an error, not a missing database.
[[nodiscard]] Found<CEOID> databaseNamed(database::Connection& connection, const DatabaseName& name);
[[nodiscard]] Found<CEDBASEINFO> databaseInfo(database::Connection& connection, CEOID oid);
[[nodiscard]] Found<CEOID> ownerOfRecord(database::Connection& connection, CEOID record);

// Makes several changes, so call it within a transaction.
[[nodiscard]] Found<CEOID> addDatabase(database::Connection& connection, const DatabaseName& name, DWORD type,
                                       std::span<const SORTORDERSPEC> sortOrders);

// Deletes the database with its records in one statement. 0 or the platform's error number.
[[nodiscard]] DWORD removeDatabase(database::Connection& connection, CEOID oid);

}  // namespace platform::store
