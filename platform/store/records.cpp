// The object store's calls on records, and on the handle through which they go.
#include "ce/store.h"

#include "database_rows.h"
#include "device_database.h"
#include "object_store.h"
#include "open_database.h"
#include "record_bytes.h"
#include "record_rows.h"

#include <memory>
#include <new>

using platform::database::Connection;
using platform::database::DatabaseUse;
using platform::database::Gathered;
using platform::database::Step;
using namespace platform::store;

namespace {

// What a call found, or the error that it has to tell.
struct Outcome {
    CEOID oid = 0;
    DWORD error = 0;
};

Outcome failed(DWORD error)
{
    return {0, error};
}

// Makes one call on an open handle, which is its thread's alone meanwhile. No fault of memory leaves it.
template <class Call>
CEOID onHandle(HANDLE database, Call call)
{
    const auto open = platform::kernel::findHandle<OpenDatabase>(database);
    const DatabaseUse use(Gathered::GoOn);
    Outcome outcome;
    try {
        outcome = !open ? failed(ERROR_INVALID_PARAMETER) : !use ? failed(ERROR_GEN_FAILURE) : call(*use, *open);
    } catch (const std::bad_alloc&) {
        outcome = failed(ERROR_NOT_ENOUGH_MEMORY);
    }
    if (outcome.error != 0)
        SetLastError(outcome.error);
    return outcome.oid;
}

// The record at the pointer.
Found<RecordRow> currentRecord(Connection& connection, const OpenDatabase& open)
{
    auto found = recordFrom(connection, open.database(), open.pointer.from);
    if (!found.row && found.error == 0)
        found.error = ERROR_NO_MORE_ITEMS;
    if (found.row && open.pointer.exact && found.row->oid != open.pointer.from && !open.autoIncrement())
        return {std::nullopt, ERROR_KEY_DELETED};
    return found;
}

// Makes the caller's block large enough. 0 or the platform's number.
DWORD provideBlock(std::size_t bytes, DWORD flags, BYTE** buffer, DWORD* size)
{
    if (*buffer != nullptr ? *size >= bytes : bytes == 0)
        return 0;
    if ((flags & CEDB_ALLOWREALLOC) == 0)
        return ERROR_INSUFFICIENT_BUFFER;
    if (bytes > 0xFFFFFFFF)
        return ERROR_NOT_ENOUGH_MEMORY;
    void* const larger = LocalAlloc(LMEM_FIXED, bytes);
    if (larger == nullptr)
        return ERROR_NOT_ENOUGH_MEMORY;
    LocalFree(*buffer);
    *buffer = static_cast<BYTE*>(larger);
    *size = static_cast<DWORD>(bytes);
    return 0;
}

// The record itself, wherever the pointer stands; a missing one is the caller's mistake.
Found<RecordRow> recordOf(Connection& connection, const OpenDatabase& open, CEOID oid)
{
    auto found = recordFrom(connection, open.database(), oid);
    if (found.error != 0 || (found.row && found.row->oid == oid))
        return found;
    return {std::nullopt, ERROR_INVALID_PARAMETER};
}

Outcome addRecord(Connection& connection, OpenDatabase& open, const RecordBytes& record)
{
    const Step step = connection.prepare("INSERT INTO store_record (database, properties) VALUES (?, ?)")
                          .bind(open.database(), RecordView(record))
                          .step();
    if (step == Step::Done)
        return {static_cast<CEOID>(connection.lastInsertId()), 0};
    if (step == Step::Failed && countOf(connection, open.database()).row == CEDB_MAXRECORDS)
        return failed(ERROR_DISK_FULL);
    return failed(errorOf(step));
}

Outcome replaceRecord(Connection& connection, CEOID oid, const RecordBytes& record)
{
    const Step step =
        connection.prepare("UPDATE store_record SET properties = ? WHERE oid = ?").bind(RecordView(record), oid).step();
    return step == Step::Done ? Outcome{oid, 0} : failed(errorOf(step));
}

Outcome writeRecord(Connection& connection, OpenDatabase& open, CEOID oid, std::span<const CEPROPVAL> changes)
{
    RecordRow old;
    if (oid != 0) {
        auto found = recordOf(connection, open, oid);
        if (!found.row)
            return failed(found.error);
        old = std::move(*found.row);
    }
    const auto properties = propertiesOf(old.properties);
    if (!properties)
        return failed(ERROR_GEN_FAILURE);
    const auto record = withChanges(*properties, changes);
    if (!record)
        return failed(ERROR_INVALID_PARAMETER);
    if (const DWORD error = open.beginChange(connection))
        return failed(error);
    const Outcome written = oid == 0 ? addRecord(connection, open, *record) : replaceRecord(connection, oid, *record);
    if (written.oid != 0)
        open.countChange(record->size());
    (void)connection.isGathering();  // a full disk may have undone all: that is told from here on
    return written;
}

Outcome removeRecord(Connection& connection, OpenDatabase& open, CEOID oid)
{
    const auto found = oidFrom(connection, open.database(), oid, 0);
    if (found.row != oid)
        return failed(found.error != 0 ? found.error : ERROR_INVALID_PARAMETER);
    if (const DWORD error = open.beginChange(connection))
        return failed(error);
    const Step step = connection.prepare("DELETE FROM store_record WHERE oid = ?").bind(oid).step();
    if (step != Step::Done)
        return failed(errorOf(step));
    open.countChange(0);
    ++storeState().recordsRemoved;
    return {oid, 0};
}

}  // namespace

HANDLE CeOpenDatabase(CEOID* oid, const WCHAR* name, CEPROPID sortProperty, DWORD flags, HWND)
{
    const auto refuse = [](DWORD error) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    };
    if (oid == nullptr || sortProperty != 0 || (flags & ~CEDB_AUTOINCREMENT) != 0)
        return refuse(ERROR_INVALID_PARAMETER);
    const auto used = DatabaseName::of(name);
    if (*oid == 0 && !used)
        return refuse(ERROR_INVALID_PARAMETER);
    const DatabaseUse use(Gathered::GoOn);
    if (!use)
        return refuse(ERROR_GEN_FAILURE);
    const auto found = *oid == 0 ? databaseNamed(*use, *used) : databaseAfter(*use, *oid - 1, 0);
    if (!found.row || (*oid != 0 && *found.row != *oid))
        return refuse(found.error != 0 ? found.error : ERROR_FILE_NOT_FOUND);

    const auto open = std::make_shared<OpenDatabase>(*found.row, (flags & CEDB_AUTOINCREMENT) != 0);
    if (const auto first = oidFrom(*use, *found.row, 0, 0); first.row)
        open->pointer = {.from = *first.row, .exact = true};
    else if (first.error != 0)
        return refuse(first.error);
    *oid = *found.row;
    ++storeState().openHandles[*found.row];
    return platform::kernel::addHandle(open);
}

CEOID CeReadRecordProps(HANDLE database, DWORD flags, WORD* count, const CEPROPID* ids, BYTE** buffer, DWORD* bytes)
{
    return onHandle(database, [&](Connection& connection, OpenDatabase& open) {
        if (count == nullptr || buffer == nullptr || bytes == nullptr || (flags & ~CEDB_ALLOWREALLOC) != 0)
            return failed(ERROR_INVALID_PARAMETER);
        const auto record = currentRecord(connection, open);
        if (!record.row)
            return failed(record.error);
        auto properties = propertiesOf(record.row->properties);
        if (!properties)
            return failed(ERROR_GEN_FAILURE);
        if (ids != nullptr)
            properties = pick(*properties, {ids, *count});
        if (!properties)
            return failed(ERROR_NO_DATA);
        if (const DWORD error = provideBlock(blockBytes(*properties), flags, buffer, bytes))
            return failed(error);
        fillBlock(*properties, *buffer);
        *count = static_cast<WORD>(properties->size());
        const CEOID oid = record.row->oid;
        open.pointer = open.autoIncrement() ? RecordPointer{std::int64_t{oid} + 1, false} : RecordPointer{oid, true};
        return Outcome{oid, 0};
    });
}

CEOID CeWriteRecordProps(HANDLE database, CEOID oid, WORD count, const CEPROPVAL* properties)
{
    return onHandle(database, [&](Connection& connection, OpenDatabase& open) {
        if (count == 0 || properties == nullptr)
            return failed(ERROR_INVALID_PARAMETER);
        return writeRecord(connection, open, oid, {properties, count});
    });
}

BOOL CeDeleteRecord(HANDLE database, CEOID oid)
{
    const CEOID removed = onHandle(
        database, [&](Connection& connection, OpenDatabase& open) { return removeRecord(connection, open, oid); });
    return removed != 0 ? TRUE : FALSE;
}
