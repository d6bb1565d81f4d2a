// stored_databases.cpp - see stored_databases.h.

#include "stored_databases.h"

#include "failure.h"

#include "host_name.h"

#include <iostream>

namespace quillbox_device {

std::vector<StoredDatabase> storedDatabases()
{
    std::vector<StoredDatabase> databases;
    const HANDLE walk = CeFindFirstDatabase(0);
    while (const CEOID oid = CeFindNextDatabase(walk)) {
        CEOIDINFO info{};
        if (CeOidGetInfo(oid, &info) && info.wObjType == OBJTYPE_DATABASE)
            databases.push_back({oid, info.infDatabase});
    }
    const bool whole = walk != INVALID_HANDLE_VALUE && GetLastError() == ERROR_NO_MORE_ITEMS;
    CloseHandle(walk);
    if (!whole)
        throw Failure("The device's databases can't be read.");
    return databases;
}

void print(const StoredDatabase& database)
{
    std::cout << "database " << platform::text::toUtf8(database.info.szDbaseName) << ": type "
              << database.info.dwDbaseType << ", " << database.info.wNumRecords << " records\n";
}

}  // namespace quillbox_device
