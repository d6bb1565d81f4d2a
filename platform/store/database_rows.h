// database_rows.h - the rows of the databases themselves: name, type, sort orders, counts.
#pragma once

#include "database/connection.h"
#include "record_rows.h"

#include "ce/store.h"

#include <optional>
#include <span>
#include <string>

namespace platform::store {

// A name as the store takes it: at most 31 characters.
struct DatabaseName {
    std::u16string written;
    std::u16string folded;  // by which it is found

    // Nothing for a name that can't be used.
    [[nodiscard]] static std::optional<DatabaseName> of(const WCHAR* name);
};

// The database with the lowest oid above `after`, of that type; 0 is any.
[[nodiscard]] Found<CEOID> databaseAfter(database::Connection& connection, CEOID after, DWORD type);
// A row that stands under another folded name than its own can't be found: that is an error, not a missing database.
[[nodiscard]] Found<CEOID> databaseNamed(database::Connection& connection, const DatabaseName& name);
[[nodiscard]] Found<CEDBASEINFO> databaseInfo(database::Connection& connection, CEOID oid);
[[nodiscard]] Found<CEOID> ownerOfRecord(database::Connection& connection, CEOID record);

// Several changes: to be called within a transaction.
[[nodiscard]] Found<CEOID> addDatabase(database::Connection& connection, const DatabaseName& name, DWORD type,
                                       std::span<const SORTORDERSPEC> sortOrders);

// With its records, as one change. 0 or the platform's number.
[[nodiscard]] DWORD removeDatabase(database::Connection& connection, CEOID oid);

}  // namespace platform::store
