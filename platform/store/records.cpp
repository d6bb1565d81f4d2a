// CeOpenDatabase, and the calls that read, write and delete records.
#include "ce/store.h"

#include "database/device_database.h"
#include "database_rows.h"
#include "open_database.h"
#include "record_bytes.h"
#include "record_rows.h"
#include "store_state.h"
#include "store_trouble.h"

#include <memory>

using platform::database::Connection;
using platform::database::DatabaseUse;
using platform::database::Gathered;
using platform::database::Step;
using namespace platform::store;

namespace {

// The oid that a call returns, or its error.
struct Outcome {
    CEOID oid = 0;
    DWORD error = 0;
};

Outcome failed(DWORD error)
{
    return {0, error};
}

// Runs `call` on an open handle, which no other thread can use meanwhile. If memory runs out, the call fails with error
// 8. `kind` says whether the call reads or writes.
template <class Call>
CEOID onHandle(HANDLE database, Trouble kind, Call call)
{
    const auto open = platform::kernel::findHandle<OpenDatabase>(database);
    const std::u16string_view name = open ? std::u16string_view(open->name()) : std::u16string_view();
    return withinMemory(kind, Troubled::Database, name, CEOID{0}, [&] {
        const DatabaseUse use(Gathered::GoOn);
        const Outcome outcome = !open  ? failed(ERROR_INVALID_PARAMETER)
                                : !use ? failed(ERROR_GEN_FAILURE)
                                       : call(*use, *open);
        if (use && outcome.error != 0)
            (void)use->isGathering();  // if the failure rolled back the pending changes, calls their handler
        if (open)
            noteStoreTrouble(kind, Troubled::Database, name, outcome.error);
        if (outcome.error != 0)
            SetLastError(outcome.error);
        return outcome.oid;
    });
}

// Returns the record at the pointer. If this record was deleted and another one follows, the result depends on the
// handle. With CEDB_AUTOINCREMENT it is the record that follows. Without this flag it is error 1018. If no record
// follows, the result is the error of faultOfCount, or error 259 if faultOfCount finds no fault.
Found<RecordRow> currentRecord(Connection& connection, const OpenDatabase& open)
{
    if (open.pointer.exact) {  // faster than a search for the next record
        auto exact = recordAt(connection, open.database(), open.pointer.from);
        if (exact.row || exact.error != 0)
            return exact;
    }
    auto next = recordFrom(connection, open.database(), open.pointer.from);
    if (!next.row && next.error == 0)
        next.error = faultOfCount(connection, open.database());
    if (!next.row && next.error == 0)
        next.error = ERROR_NO_MORE_ITEMS;
    if (next.row && open.pointer.exact && !open.autoIncrement())
        return {std::nullopt, ERROR_KEY_DELETED};
    return next;
}

// Makes the caller's block large enough. Returns 0 or the platform's error number.
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

struct ChangedRecord {
    std::optional<RecordBytes> bytes;
    DWORD error = 0;  // why there are no bytes
};

// Returns the bytes of a record after the changes. An oid of 0 means a new record.
ChangedRecord changedRecord(Connection& connection, CEOID owner, CEOID oid, std::span<const CEPROPVAL> changes)
{
    if (oid == 0)
        return {withChanges({}, changes), ERROR_INVALID_PARAMETER};
    const auto old = recordAt(connection, owner, oid);
    if (!old.row)
        return {std::nullopt, old.error != 0 ? old.error : ERROR_INVALID_PARAMETER};
    const auto properties = propertiesOf(old.row->properties);
    if (!properties)
        return {std::nullopt, ERROR_GEN_FAILURE};
    return {withChanges(*properties, changes), ERROR_INVALID_PARAMETER};
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
    auto record = changedRecord(connection, open.database(), oid, changes);
    if (!record.bytes)
        return failed(record.error);
    if (const DWORD error = open.beginChange(connection))
        return failed(error);
    const Outcome written =
        oid == 0 ? addRecord(connection, open, *record.bytes) : replaceRecord(connection, oid, *record.bytes);
    if (written.oid != 0)
        open.keepChange({written.oid, std::move(record.bytes)});
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
    open.keepChange({oid, std::nullopt});
    ++storeState().recordsRemoved;
    return {oid, 0};
}

struct Opening {
    std::shared_ptr<OpenDatabase> database;
    DWORD error = 0;  // why the database isn't open
};

Opening openDatabase(Connection& connection, CEOID oid, bool autoIncrement)
{
    const auto info = databaseInfo(connection, oid);
    const auto first = oidFrom(connection, oid, 0, 0);
    if (!info.row || first.error != 0)
        return {nullptr, first.error != 0 ? first.error : ERROR_GEN_FAILURE};
    auto opened = std::make_shared<OpenDatabase>(oid, info.row->szDbaseName, autoIncrement);
    if (first.row)
        opened->pointer = {.from = *first.row, .exact = true};
    return {std::move(opened), 0};
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
    const bool byName = *oid == 0;
    const auto written = byName && name != nullptr ? std::u16string_view(name) : std::u16string_view();
    const Troubled what = byName ? Troubled::Database : Troubled::DatabaseList;
    return withinMemory(Trouble::Reading, what, written, INVALID_HANDLE_VALUE, [&] {
        const auto used = DatabaseName::of(name);
        if (byName && !used)
            return refuse(ERROR_INVALID_PARAMETER);
        const DatabaseUse use(Gathered::GoOn);
        if (!use)
            return refuse(ERROR_GEN_FAILURE);
        const auto found = byName ? databaseNamed(*use, *used) : databaseAfter(*use, *oid - 1, 0);
        Opening opening{nullptr, found.error != 0 ? found.error : ERROR_FILE_NOT_FOUND};
        if (found.row && (byName || *found.row == *oid))
            opening = openDatabase(*use, *found.row, (flags & CEDB_AUTOINCREMENT) != 0);
        if (!opening.database) {
            noteStoreTrouble(Trouble::Reading, what, byName ? used->written : std::u16string(), opening.error);
            return refuse(opening.error);
        }
        unsigned& handles = storeState().openHandles[*found.row];
        const HANDLE handle = platform::kernel::addHandle(std::move(opening.database));
        ++handles;
        *oid = *found.row;
        return handle;
    });
}

CEOID CeReadRecordProps(HANDLE database, DWORD flags, WORD* count, const CEPROPID* ids, BYTE** buffer, DWORD* bytes)
{
    return onHandle(database, Trouble::Reading, [&](Connection& connection, OpenDatabase& open) {
        if (count == nullptr || buffer == nullptr || bytes == nullptr || (flags & ~CEDB_ALLOWREALLOC) != 0)
            return failed(ERROR_INVALID_PARAMETER);
        connection.keepReading();
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
    return onHandle(database, Trouble::Writing, [&](Connection& connection, OpenDatabase& open) {
        if (count == 0 || properties == nullptr)
            return failed(ERROR_INVALID_PARAMETER);
        return writeRecord(connection, open, oid, {properties, count});
    });
}

BOOL CeDeleteRecord(HANDLE database, CEOID oid)
{
    const CEOID removed = onHandle(database, Trouble::Writing, [&](Connection& connection, OpenDatabase& open) {
        return removeRecord(connection, open, oid);
    });
    return removed != 0 ? TRUE : FALSE;
}
