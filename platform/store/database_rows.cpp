#include "database_rows.h"

#include "store_state.h"
#include "store_time.h"
#include "text/case_folding.h"
#include "text/utf.h"

#include "ce/text.h"

#include <algorithm>

namespace platform::store {

using database::Connection;
using database::Statement;
using database::Step;

namespace {

bool isText(std::u16string_view name)
{
    while (!name.empty()) {
        const text::Decoded decoded = text::decodeUtf16(name);
        if (decoded.units == 0)
            return false;
        name.remove_prefix(decoded.units);
    }
    return true;
}

Found<CEOID> foundOid(Statement& statement)
{
    const Step step = statement.step();
    if (step == Step::Row)
        return {static_cast<CEOID>(statement.integer(0)), 0};
    return {std::nullopt, step == Step::Done ? 0 : errorOf(step)};
}

std::u16string cutName(const WCHAR* name)
{
    WCHAR cut[CEDB_MAXDBASENAMELEN];
    CopyText(cut, name);
    return cut;
}

// Fills StoreState::misplaced with the databases that have a wrong folded name. Returns 0 or the error of the search.
DWORD findMisplaced(Connection& connection)
{
    std::unordered_map<CEOID, std::u16string> found;
    Statement statement = connection.prepare("SELECT oid, name, folded FROM store_database");
    Step step = statement.step();
    for (; step == Step::Row; step = statement.step()) {
        const std::u16string name = statement.text(1);
        const auto own = DatabaseName::of(name.c_str());
        if (!own || own->folded != statement.text(2))
            found.emplace(static_cast<CEOID>(statement.integer(0)), cutName(name.c_str()));
    }
    if (step != Step::Done)
        return errorOf(step);
    storeState().misplaced = std::move(found);
    return 0;
}

// Returns error 31 if a row has the name `written` but a wrong folded name. Such a database exists, so it must not
// count as missing. Otherwise returns 0, or the error of findMisplaced. Call this function after a search for the
// folded name has found no row.
DWORD misplaced(Connection& connection, const std::u16string& written)
{
    if (!storeState().misplaced)
        if (const DWORD error = findMisplaced(connection))
            return error;
    const bool isThere =
        std::ranges::any_of(*storeState().misplaced, [&](const auto& each) { return each.second == written; });
    return isThere ? ERROR_GEN_FAILURE : 0;
}

DWORD readSortOrders(Connection& connection, CEOID oid, CEDBASEINFO& info)
{
    Statement statement =
        connection.prepare("SELECT property, flags FROM store_sort_order WHERE database = ? ORDER BY place LIMIT 4");
    statement.bind(oid);
    Step step = statement.step();
    for (; step == Step::Row; step = statement.step())
        info.rgSortSpecs[info.wNumSortOrder++] = {static_cast<CEPROPID>(statement.integer(0)),
                                                  static_cast<DWORD>(statement.integer(1))};
    return step == Step::Done ? 0 : errorOf(step);
}

}  // namespace

std::optional<DatabaseName> DatabaseName::of(const WCHAR* name)
{
    if (name == nullptr)
        return std::nullopt;
    DatabaseName result{.written = cutName(name), .folded = {}};
    result.folded = result.written;
    if (result.written.empty() || !isText(result.written))
        return std::nullopt;
    std::ranges::transform(result.written, result.folded.begin(), text::foldCase);
    return result;
}

Found<CEOID> databaseAfter(Connection& connection, CEOID after, DWORD type)
{
    Statement statement = connection.prepare(
        "SELECT oid FROM store_database WHERE oid > ?1 AND (?2 = 0 OR type = ?2) ORDER BY oid LIMIT 1");
    return foundOid(statement.bind(after, type));
}

Found<CEOID> databaseNamed(Connection& connection, const DatabaseName& name)
{
    Statement statement = connection.prepare("SELECT oid FROM store_database WHERE folded = ?");
    const auto found = foundOid(statement.bind(name.folded));
    return found.row || found.error != 0 ? found : Found<CEOID>{std::nullopt, misplaced(connection, name.written)};
}

Found<CEDBASEINFO> databaseInfo(Connection& connection, CEOID oid)
{
    Statement statement =
        connection.prepare("SELECT name, type, records, bytes, modified FROM store_database WHERE oid = ?");
    const Step step = statement.bind(oid).step();
    if (step != Step::Row)
        return {std::nullopt, step == Step::Done ? 0 : errorOf(step)};
    CEDBASEINFO info = {};
    info.dwFlags = CEDB_VALIDNAME | CEDB_VALIDTYPE | CEDB_VALIDSORTSPEC | CEDB_VALIDMODTIME;
    CopyText(info.szDbaseName, statement.text(0).c_str());
    info.dwDbaseType = static_cast<DWORD>(statement.integer(1));
    info.wNumRecords = static_cast<WORD>(statement.integer(2));
    info.dwSize = static_cast<DWORD>(std::clamp<std::int64_t>(statement.integer(3), 0, 0xFFFFFFFF));
    info.ftLastModified = fileTimeOf(statement.integer(4));
    if (const DWORD error = readSortOrders(connection, oid, info))
        return {std::nullopt, error};
    return {info, 0};
}

Found<CEOID> ownerOfRecord(Connection& connection, CEOID record)
{
    Statement statement = connection.prepare("SELECT database FROM store_record WHERE oid = ?");
    return foundOid(statement.bind(record));
}

Found<CEOID> addDatabase(Connection& connection, const DatabaseName& name, DWORD type,
                         std::span<const SORTORDERSPEC> sortOrders)
{
    Statement statement =
        connection.prepare("INSERT INTO store_database (name, folded, type, modified) VALUES (?, ?, ?, ?)");
    if (const Step step = statement.bind(name.written, name.folded, type, ticksNow()).step(); step != Step::Done)
        return {std::nullopt, errorOf(step)};
    const auto oid = static_cast<CEOID>(connection.lastInsertId());
    int rank = 0;
    for (const SORTORDERSPEC& spec : sortOrders) {
        Statement added =
            connection.prepare("INSERT INTO store_sort_order (database, place, property, flags) VALUES (?, ?, ?, ?)");
        if (const Step step = added.bind(oid, rank++, spec.propid, spec.dwFlags).step(); step != Step::Done)
            return {std::nullopt, errorOf(step)};
    }
    return {oid, 0};
}

DWORD removeDatabase(Connection& connection, CEOID oid)
{
    const Step step = connection.prepare("DELETE FROM store_database WHERE oid = ?").bind(oid).step();
    // The deletion can still be rolled back. So the next search looks for such rows again.
    if (storeState().misplaced && storeState().misplaced->contains(oid))
        storeState().misplaced.reset();
    return step == Step::Done ? 0 : errorOf(step);
}

}  // namespace platform::store
