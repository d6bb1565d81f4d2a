#include "record_rows.h"

#include <utility>

namespace platform::store {

using database::Connection;
using database::Statement;
using database::Step;

namespace {

template <class Row, class Take>
Found<Row> found(Statement& statement, Take take)
{
    switch (const Step step = statement.step()) {
    case Step::Row:
        return {take(statement), 0};
    case Step::Done:
        return {};
    default:
        return {std::nullopt, errorOf(step)};
    }
}

DWORD numberOf(const Statement& statement)
{
    return static_cast<DWORD>(statement.integer(0));
}

Found<RecordRow> foundRecord(Statement&& statement)
{
    const Step step = statement.step();
    if (step != Step::Row)
        return {std::nullopt, step == Step::Done ? 0 : errorOf(step)};
    const CEOID oid = numberOf(statement);
    const RecordView properties = statement.bytes(1);
    return {RecordRow{oid, properties, std::move(statement)}, 0};
}

}  // namespace

DWORD errorOf(Step step)
{
    switch (step) {
    case Step::Full:
        return ERROR_DISK_FULL;
    case Step::NoMemory:
        return ERROR_NOT_ENOUGH_MEMORY;
    default:
        return ERROR_GEN_FAILURE;
    }
}

Found<RecordRow> recordAt(Connection& connection, CEOID owner, std::int64_t oid)
{
    Statement statement =
        connection.prepare("SELECT oid, properties FROM store_record WHERE oid = ?2 AND database = ?1");
    statement.bind(owner, oid);
    return foundRecord(std::move(statement));
}

Found<RecordRow> recordFrom(Connection& connection, CEOID owner, std::int64_t from)
{
    Statement statement = connection.prepare(
        "SELECT oid, properties FROM store_record WHERE database = ? AND oid >= ? ORDER BY oid LIMIT 1");
    statement.bind(owner, from);
    return foundRecord(std::move(statement));
}

Found<CEOID> oidFrom(Connection& connection, CEOID owner, std::int64_t from, std::int64_t skipped)
{
    Statement statement = connection.prepare(
        "SELECT oid FROM store_record WHERE database = ? AND oid >= ? ORDER BY oid LIMIT 1 OFFSET ?");
    statement.bind(owner, from, skipped);
    return found<CEOID>(statement, numberOf);
}

Found<CEOID> oidBefore(Connection& connection, CEOID owner, std::int64_t before, std::int64_t skipped)
{
    Statement statement = connection.prepare(
        "SELECT oid FROM store_record WHERE database = ? AND oid < ? ORDER BY oid DESC LIMIT 1 OFFSET ?");
    statement.bind(owner, before, skipped);
    return found<CEOID>(statement, numberOf);
}

Found<DWORD> countBefore(Connection& connection, CEOID owner, std::int64_t oid)
{
    Statement statement = connection.prepare("SELECT count(*) FROM store_record WHERE database = ? AND oid < ?");
    statement.bind(owner, oid);
    return found<DWORD>(statement, numberOf);
}

Found<DWORD> countOf(Connection& connection, CEOID owner)
{
    Statement statement = connection.prepare("SELECT records FROM store_database WHERE oid = ?");
    statement.bind(owner);
    return found<DWORD>(statement, numberOf);
}

DWORD faultOfCount(Connection& connection, CEOID owner)
{
    Statement statement = connection.prepare("SELECT records = (SELECT count(*) FROM store_record WHERE database = ?1) "
                                             "FROM store_database WHERE oid = ?1");
    statement.bind(owner);
    const auto agrees = found<DWORD>(statement, numberOf);
    return agrees.error != 0 ? agrees.error : agrees.row == 1U ? 0 : ERROR_GEN_FAILURE;
}

}  // namespace platform::store
