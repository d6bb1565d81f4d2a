// The calls on databases: enumeration, information, creation, deletion.
#include "ce/store.h"

#include "database/device_database.h"
#include "database_rows.h"
#include "database_walk.h"
#include "record_rows.h"
#include "store_state.h"
#include "store_trouble.h"

#include <memory>

using platform::database::Connection;
using platform::database::DatabaseUse;
using platform::database::Gathered;
using platform::database::Step;
using platform::database::Transaction;
using namespace platform::store;

namespace {

template <class Result>
Result fail(DWORD error, Result failed)
{
    SetLastError(error);
    return failed;
}

// Returns 0 if the search found a row, `missing` if there is no such row, and otherwise the error of the search.
template <class Row>
DWORD faultOf(const Found<Row>& found, DWORD missing)
{
    return found.row ? 0 : found.error != 0 ? found.error : missing;
}

Found<CEOID> makeDatabase(Connection& connection, const DatabaseName& name, DWORD type,
                          std::span<const SORTORDERSPEC> sortOrders)
{
    if (const DWORD error = faultOfChange(connection))
        return {std::nullopt, error};
    const auto existing = databaseNamed(connection, name);
    if (existing.row || existing.error != 0)
        return {std::nullopt, existing.row ? ERROR_DUP_NAME : existing.error};
    Transaction transaction(connection);
    if (transaction.begun() != Step::Done)
        return {std::nullopt, errorOf(transaction.begun())};
    const auto made = addDatabase(connection, name, type, sortOrders);
    if (!made.row)
        return made;
    const Step committed = transaction.commit();
    return committed == Step::Done ? made : Found<CEOID>{std::nullopt, errorOf(committed)};
}

DWORD deleteDatabase(Connection& connection, CEOID oid)
{
    if (const DWORD error = faultOfChange(connection))
        return error;
    Transaction transaction(connection);
    if (transaction.begun() != Step::Done)
        return errorOf(transaction.begun());
    if (const DWORD error = removeDatabase(connection, oid))
        return error;
    const Step committed = transaction.commit();
    return committed == Step::Done ? 0 : errorOf(committed);
}

}  // namespace

HANDLE CeFindFirstDatabase(DWORD type)
{
    return withinMemory(Trouble::Reading, Troubled::DatabaseList, {}, INVALID_HANDLE_VALUE, [&] {
        const DatabaseUse use(Gathered::GoOn);
        if (!use)
            return fail(ERROR_GEN_FAILURE, INVALID_HANDLE_VALUE);
        auto walk = std::make_shared<DatabaseWalk>();
        walk->type = type;
        walk->databasesDeleted = storeState().databasesDeleted;
        return platform::kernel::addHandle(std::move(walk));
    });
}

CEOID CeFindNextDatabase(HANDLE enumeration)
{
    const auto walk = platform::kernel::findHandle<DatabaseWalk>(enumeration);
    if (!walk)
        return fail(ERROR_INVALID_PARAMETER, CEOID{0});
    return withinMemory(Trouble::Reading, Troubled::DatabaseList, {}, CEOID{0}, [&] {
        const DatabaseUse use(Gathered::GoOn);
        if (!use)
            return fail(ERROR_GEN_FAILURE, CEOID{0});
        if (walk->databasesDeleted != storeState().databasesDeleted)
            return fail(ERROR_KEY_DELETED, CEOID{0});
        const auto next = databaseAfter(*use, walk->last, walk->type);
        noteStoreTrouble(Trouble::Reading, Troubled::DatabaseList, {}, next.error);
        if (!next.row)
            return fail(faultOf(next, ERROR_NO_MORE_ITEMS), CEOID{0});
        return walk->last = *next.row;
    });
}

BOOL CeOidGetInfo(CEOID oid, CEOIDINFO* info)
{
    if (info == nullptr)
        return fail(ERROR_INVALID_PARAMETER, FALSE);
    return withinMemory(Trouble::Reading, Troubled::DatabaseList, {}, FALSE, [&] {
        const DatabaseUse use(Gathered::GoOn);
        if (!use)
            return fail(ERROR_GEN_FAILURE, FALSE);
        const auto database = databaseInfo(*use, oid);
        noteStoreTrouble(Trouble::Reading, Troubled::DatabaseList, {}, database.error);
        if (database.error != 0)
            return fail(database.error, FALSE);
        if (database.row) {
            *info = {.wObjType = OBJTYPE_DATABASE, .wPad = 0, .infDatabase = *database.row};
            return TRUE;
        }
        const auto owner = ownerOfRecord(*use, oid);
        if (!owner.row)
            return fail(faultOf(owner, ERROR_INVALID_HANDLE), FALSE);
        *info = {.wObjType = OBJTYPE_RECORD, .wPad = 0, .infRecord = {*owner.row}};
        return TRUE;
    });
}

CEOID CeCreateDatabase(const WCHAR* name, DWORD type, WORD sortOrders, const SORTORDERSPEC* specs)
{
    const auto written = name != nullptr ? std::u16string_view(name) : std::u16string_view();
    return withinMemory(Trouble::Writing, Troubled::Database, written, CEOID{0}, [&] {
        const auto used = DatabaseName::of(name);
        if (!used || sortOrders > CEDB_MAXSORTORDER || (sortOrders > 0 && specs == nullptr))
            return fail(ERROR_INVALID_PARAMETER, CEOID{0});
        const DatabaseUse use;
        if (!use)
            return fail(ERROR_GEN_FAILURE, CEOID{0});
        constexpr SORTORDERSPEC DefaultOrder = {};
        const auto made = sortOrders > 0 ? makeDatabase(*use, *used, type, {specs, sortOrders})
                                         : makeDatabase(*use, *used, type, {&DefaultOrder, 1});
        noteStoreTrouble(Trouble::Writing, Troubled::Database, used->written, made.error);
        if (!made.row)
            return fail(made.error, CEOID{0});
        storeState().changedName = used->written;
        SetLastError(ERROR_SUCCESS);
        return *made.row;
    });
}

BOOL CeDeleteDatabase(CEOID oid)
{
    return withinMemory(Trouble::Writing, Troubled::DatabaseList, {}, FALSE, [&] {
        const DatabaseUse use;
        if (!use)
            return fail(ERROR_GEN_FAILURE, FALSE);
        const auto existing = databaseInfo(*use, oid);
        if (!existing.row)
            return fail(faultOf(existing, ERROR_INVALID_PARAMETER), FALSE);
        if (const auto handles = storeState().openHandles.find(oid);
            handles != storeState().openHandles.end() && handles->second > 0)
            return fail(ERROR_SHARING_VIOLATION, FALSE);
        if (const DWORD error = deleteDatabase(*use, oid)) {
            noteStoreTrouble(Trouble::Writing, Troubled::Database, existing.row->szDbaseName, error);
            return fail(error, FALSE);
        }
        ++storeState().databasesDeleted;
        ++storeState().recordsRemoved;
        return TRUE;
    });
}
