// CeSeekDatabase: moves the record pointer of a handle.
#include "ce/store.h"

#include "database/device_database.h"
#include "open_database.h"
#include "record_rows.h"
#include "store_state.h"
#include "store_trouble.h"

using platform::database::Connection;
using platform::database::DatabaseUse;
using platform::database::Gathered;
using namespace platform::store;

namespace {

// Performs a seek of a handle. Each function that returns a CEOID moves the pointer and returns the oid of the record
// at the new position. If no record is there, or if reading fails, the function sets the last error and returns 0.
class Seek {
public:
    Seek(Connection& connection, OpenDatabase& open) : connection_(connection), open_(open) {}

    CEOID toRecord(CEOID oid)
    {
        const auto found = oidFrom(connection_, open_.database(), oid, 0);
        return found.row == oid ? stand(oid) : refuse(found.error != 0 ? found.error : ERROR_INVALID_PARAMETER);
    }

    // Finds the first record whose oid is at least `from`, and moves the pointer to the record that is `records` places
    // after it. If there is no such record, moves the pointer after the last record and sets ERROR_SEEK.
    CEOID forward(std::int64_t from, std::int64_t records)
    {
        const auto found = oidFrom(connection_, open_.database(), from, records);
        if (found.row)
            return stand(*found.row);
        if (found.error == 0)
            moveAfterLast();
        return refuse(found.error != 0 ? found.error : ERROR_SEEK);
    }

    // Moves the pointer to a record whose oid is below `from`: to the last of these records if `records` is 1, to the
    // last but one if `records` is 2, and so on. If there is no such record, leaves the pointer unchanged and sets
    // ERROR_SEEK.
    CEOID back(std::int64_t from, std::int64_t records)
    {
        const auto found = oidBefore(connection_, open_.database(), from, records - 1);
        return found.row ? stand(*found.row) : refuse(found.error != 0 ? found.error : ERROR_SEEK);
    }

    // Moves the pointer after the last record. Returns 0, because no record is there. The last error is the result of
    // faultOfCount, which is 0 if no record is missing. A caller that reads from the last record to the first begins
    // with this seek, so this seek checks whether records are missing.
    CEOID afterLast()
    {
        moveAfterLast();
        return refuse(faultOfCount(connection_, open_.database()));
    }

    CEOID refuse(DWORD error)
    {
        error_ = error;
        SetLastError(error);
        return 0;
    }

    // The error of a refused seek, otherwise 0.
    [[nodiscard]] DWORD error() const { return error_; }

private:
    CEOID stand(CEOID oid)
    {
        open_.pointer = {.from = oid, .exact = true};
        return oid;
    }

    void moveAfterLast() { open_.pointer = {.from = RecordPointer::AfterLast, .exact = false}; }

    Connection& connection_;
    OpenDatabase& open_;
    DWORD error_ = 0;
};

CEOID go(Seek& seek, const OpenDatabase& open, DWORD how, DWORD value)
{
    const std::int64_t step = how == CEDB_SEEK_CURRENT ? std::int64_t{static_cast<LONG>(value)} : std::int64_t{value};
    switch (how) {
    case CEDB_SEEK_CEOID:
        return seek.toRecord(value);
    case CEDB_SEEK_BEGINNING:
        return seek.forward(0, step);
    case CEDB_SEEK_END:
        return step == 0 ? seek.afterLast() : seek.back(RecordPointer::AfterLast, step);
    case CEDB_SEEK_CURRENT:
        return step < 0 ? seek.back(open.pointer.from, -step) : seek.forward(open.pointer.from, step);
    default:
        return seek.refuse(ERROR_INVALID_PARAMETER);
    }
}

// Returns the position of `pointer` if it is known without counting the records. If the pointer is after the last
// record, its position is the number of records. The handle also remembers the position that its last seek returned
// (OpenDatabase::known). This position is valid unless a record was removed since then.
std::optional<DWORD> knownPosition(Connection& connection, const OpenDatabase& open, const RecordPointer& pointer)
{
    if (pointer.from == RecordPointer::AfterLast)
        return countOf(connection, open.database()).row;
    if (open.known && open.known->oid == pointer.from && open.known->recordsRemoved == storeState().recordsRemoved)
        return open.known->position;
    return std::nullopt;
}

// Returns the position of the pointer after a seek. `before` is the pointer before the seek. Depending on `how`, the
// seek counted `value` records from `before`, from the first record or back from the end. If the new position isn't
// known, calculates it from `value` and from the position where the seek began to count. If that position isn't known
// either, counts the records before the pointer.
DWORD positionAfter(Connection& connection, OpenDatabase& open, const RecordPointer& before, DWORD how, DWORD value)
{
    std::optional<DWORD> position = knownPosition(connection, open, open.pointer);
    if (!position && how == CEDB_SEEK_BEGINNING)
        position = value;
    if (!position && (how == CEDB_SEEK_CURRENT || how == CEDB_SEEK_END)) {
        const DWORD records = how == CEDB_SEEK_END ? 0 - value : value;
        const RecordPointer start = how == CEDB_SEEK_END ? RecordPointer{RecordPointer::AfterLast, false} : before;
        if (const auto known = knownPosition(connection, open, start))
            position = *known + records;
    }
    if (!position)
        position = countBefore(connection, open.database(), open.pointer.from).row;
    return position.value_or(0);
}

}  // namespace

CEOID CeSeekDatabase(HANDLE database, DWORD how, DWORD value, DWORD* index)
{
    const auto open = platform::kernel::findHandle<OpenDatabase>(database);
    if (!open) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return withinMemory(Trouble::Reading, Troubled::Database, open->name(), CEOID{0}, [&] {
        const DatabaseUse use(Gathered::GoOn);
        if (!use) {
            SetLastError(ERROR_GEN_FAILURE);
            return CEOID{0};
        }
        use->keepReading();
        const RecordPointer before = open->pointer;
        Seek seek(*use, *open);
        const CEOID found = go(seek, *open, how, value);
        noteStoreTrouble(Trouble::Reading, Troubled::Database, open->name(), seek.error());
        if (index != nullptr && (found != 0 || open->pointer.from == RecordPointer::AfterLast)) {
            *index = positionAfter(*use, *open, before, how, value);
            if (found != 0)
                open->known = {found, *index, storeState().recordsRemoved};
        }
        return found;
    });
}
