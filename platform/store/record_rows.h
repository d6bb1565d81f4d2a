// record_rows.h - finds and counts the rows of the table store_record that belong to one database, in the order of
// their oids.
#pragma once

#include "database/connection.h"
#include "record_bytes.h"

#include "ce/store.h"

#include <optional>

namespace platform::store {

// The result of a search for one row.
template <class Row>
struct Found {
    std::optional<Row> row;
    DWORD error = 0;  // without a row: 0 if none was found, otherwise the platform's error number
};

// A record in the table. Destroy the object before any change of the store.
struct RecordRow {
    CEOID oid;
    RecordView properties;  // valid while `row` lives
    database::Statement row;
};

// The platform's error number for a step that failed.
[[nodiscard]] DWORD errorOf(database::Step step);

// recordAt finds the record with this oid in the database `owner`. recordFrom finds the first record of that database
// whose oid is at least `from`.
[[nodiscard]] Found<RecordRow> recordAt(database::Connection& connection, CEOID owner, std::int64_t oid);
[[nodiscard]] Found<RecordRow> recordFrom(database::Connection& connection, CEOID owner, std::int64_t from);

// oidFrom starts at the first record whose oid is at least `from` and goes `skipped` records forward. oidBefore starts
// at the last record whose oid is below `before` and goes `skipped` records back.
[[nodiscard]] Found<CEOID> oidFrom(database::Connection& connection, CEOID owner, std::int64_t from,
                                   std::int64_t skipped);
[[nodiscard]] Found<CEOID> oidBefore(database::Connection& connection, CEOID owner, std::int64_t before,
                                     std::int64_t skipped);

// Number of records before `oid`. Counts them one by one.
[[nodiscard]] Found<DWORD> countBefore(database::Connection& connection, CEOID owner, std::int64_t oid);

// Reads the number of records from the database's row, where it is stored. Doesn't count the rows of the records.
[[nodiscard]] Found<DWORD> countOf(database::Connection& connection, CEOID owner);

// Counts the rows of the database's records. Returns error 31 if their number differs from countOf. In that case
// records are missing or belong to another database. Otherwise returns 0, or the error of the count.
[[nodiscard]] DWORD faultOfCount(database::Connection& connection, CEOID owner);

}  // namespace platform::store
