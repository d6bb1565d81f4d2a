#include "engine/item_names.h"

#include "set/item_kinds.h"

#include "ce/handle.h"
#include "ce/store.h"

namespace {

void ForEachDatabase(const std::function<void(const WCHAR*)>& visit)
{
    HANDLE enumeration = CeFindFirstDatabase(0);
    if (enumeration == INVALID_HANDLE_VALUE)
        return;
    while (const CEOID oid = CeFindNextDatabase(enumeration)) {
        CEOIDINFO info = {};
        // The call fails if the database was deleted after the enumeration returned it. The names of system databases
        // begin with a backslash. No backup includes system databases.
        const bool there = CeOidGetInfo(oid, &info) && info.wObjType == OBJTYPE_DATABASE;
        const WCHAR* name = info.infDatabase.szDbaseName;
        visit(there && name[0] != u'\\' ? name : nullptr);
    }
    CloseHandle(enumeration);
}

}  // namespace

void ForEachName(BYTE kind, const std::function<void(const WCHAR*)>& visit)
{
    if (kind == ItemKindDatabase)
        ForEachDatabase(visit);
}
