// database_rows.h - finds, adds and removes the rows that describe databases: name, type, sort orders, counts.
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
    std::u16string folded;  // the case-folded name, by which the row is found

    // Nothing if the name is null, empty or not valid UTF-16.
    [[nodiscard]] static std::optional<DatabaseName> of(const WCHAR* name);
};

// Finds the database of this type that has the lowest oid above `after`. Type 0 means any type.
[[nodiscard]] Found<CEOID> databaseAfter(database::Connection& connection, CEOID after, DWORD type);
// Finds a database by its folded name. In a damaged device.db, a row can have the right name but a wrong folded name.
// If only such a row has the name, returns an error, because the database exists and must not count as missing.
[[nodiscard]] Found<CEOID> databaseNamed(database::Connection& connection, const DatabaseName& name);
[[nodiscard]] Found<CEDBASEINFO> databaseInfo(database::Connection& connection, CEOID oid);
[[nodiscard]] Found<CEOID> ownerOfRecord(database::Connection& connection, CEOID record);

// Makes several changes, so call it within a transaction.
[[nodiscard]] Found<CEOID> addDatabase(database::Connection& connection, const DatabaseName& name, DWORD type,
                                       std::span<const SORTORDERSPEC> sortOrders);

// Deletes the database with its records in one statement. Returns 0 or the platform's error number.
[[nodiscard]] DWORD removeDatabase(database::Connection& connection, CEOID oid);

}  // namespace platform::store
