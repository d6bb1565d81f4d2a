// record_rows.h - the rows of one database's records, in their order, which is that of their oids.
#pragma once

#include "database/connection.h"
#include "record_bytes.h"

#include "ce/store.h"

#include <optional>

namespace platform::store {

// A row that was looked for, or how looking for it failed.
template <class Row>
struct Found {
    std::optional<Row> row;
    DWORD error = 0;  // with no row: 0 there is none, otherwise the platform's number
};

// Where it stands in the table. Read and let go before anything is changed.
struct RecordRow {
    CEOID oid;
    RecordView properties;  // good as long as `row` lives
    database::Statement row;
};

// The platform's number for a step that failed.
[[nodiscard]] DWORD errorOf(database::Step step);

// The record of that oid, if it is one of the owner's; and the first one whose oid is at least `from`.
[[nodiscard]] Found<RecordRow> recordAt(database::Connection& connection, CEOID owner, std::int64_t oid);
[[nodiscard]] Found<RecordRow> recordFrom(database::Connection& connection, CEOID owner, std::int64_t from);

// The oid of the record `skipped` further on from the first one at or behind `from`, or back from the last
// one before it.
[[nodiscard]] Found<CEOID> oidFrom(database::Connection& connection, CEOID owner, std::int64_t from,
                                   std::int64_t skipped);
[[nodiscard]] Found<CEOID> oidBefore(database::Connection& connection, CEOID owner, std::int64_t before,
                                     std::int64_t skipped);

// How many records stand before `oid`: counts them one by one.
[[nodiscard]] Found<DWORD> countBefore(database::Connection& connection, CEOID owner, std::int64_t oid);

// How many records there are: known without counting.
[[nodiscard]] Found<DWORD> countOf(database::Connection& connection, CEOID owner);

// 31 if a walk over the records doesn't deliver as many: then some are missing, or aren't its own. Otherwise 0.
[[nodiscard]] DWORD faultOfCount(database::Connection& connection, CEOID owner);

}  // namespace platform::store
