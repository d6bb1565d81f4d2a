#include "stored_databases.h"

#include "failure.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include <algorithm>
#include <span>

namespace quillbox_device {

std::vector<StoredDatabase> storedDatabases()
{
    std::vector<StoredDatabase> databases;
    const HANDLE walk = CeFindFirstDatabase(0);
    bool whole = walk != INVALID_HANDLE_VALUE;
    while (const CEOID oid = CeFindNextDatabase(walk)) {
        CEOIDINFO info{};
        whole &= CeOidGetInfo(oid, &info) && info.wObjType == OBJTYPE_DATABASE;
        databases.push_back({oid, info.infDatabase});
    }
    whole &= GetLastError() == ERROR_NO_MORE_ITEMS;
    CloseHandle(walk);
    if (!whole)
        throw Failure("The device's databases can't be read.");
    return databases;
}

std::optional<StoredDatabase> databaseNamed(const std::u16string& name)
{
    CEOID oid = 0;
    const HANDLE opened = CeOpenDatabase(&oid, name.c_str(), 0, 0, nullptr);
    CEOIDINFO info{};
    if (opened == INVALID_HANDLE_VALUE && GetLastError() == ERROR_GEN_FAILURE)
        throw Failure("The database \"" + screen_text::onScreen(name) + "\" can't be read.");
    if (opened == INVALID_HANDLE_VALUE)
        return std::nullopt;
    CloseHandle(opened);
    if (!CeOidGetInfo(oid, &info))
        return std::nullopt;
    return StoredDatabase{oid, info.infDatabase};
}

database_formats::DatabaseHead headOf(const CEDBASEINFO& info)
{
    const auto orders = std::span(info.rgSortSpecs, std::min(info.wNumSortOrder, CEDB_MAXSORTORDER));
    return {info.szDbaseName, info.dwDbaseType, {orders.begin(), orders.end()}};
}

std::string textOf(const StoredDatabase& database)
{
    return "database " + screen_text::onScreen(database.info.szDbaseName) + ": type " +
           std::to_string(database.info.dwDbaseType) + ", " + screen_text::counted(database.info.wNumRecords, "record");
}

nlohmann::ordered_json jsonOf(const StoredDatabase& database)
{
    return {{"name", platform::text::toUtf8(database.info.szDbaseName)},
            {"type", database.info.dwDbaseType},
            {"recordCount", database.info.wNumRecords}};
}

}  // namespace quillbox_device
