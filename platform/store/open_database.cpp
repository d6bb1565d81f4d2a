#include "open_database.h"

#include "database/device_database.h"
#include "record_rows.h"
#include "store_state.h"
#include "store_time.h"
#include "store_trouble.h"

#include <new>
#include <utility>

namespace platform::store {

using database::Connection;
using database::DatabaseUse;
using database::Gathered;
using database::Step;
using database::Transaction;

namespace {

// The limits of a handle's pending changes. If the process is killed, the pending changes are lost. A flush takes
// milliseconds, so a few flushes per second don't slow a backup or restore down.
constexpr unsigned GatheredChanges = 4096;
constexpr std::size_t GatheredBytes = std::size_t{8} << 20;
constexpr std::chrono::milliseconds GatheredTime(500);

Step markModified(Connection& connection, CEOID database)
{
    return connection.prepare("UPDATE store_database SET modified = ? WHERE oid = ?").bind(ticksNow(), database).step();
}

Step changeAgain(Connection& connection, CEOID database, const GatheredChange& change)
{
    if (!change.bytes)
        return connection.prepare("DELETE FROM store_record WHERE oid = ?").bind(change.record).step();
    return connection
        .prepare("INSERT INTO store_record (oid, database, properties) VALUES (?1, ?2, ?3) "
                 "ON CONFLICT (oid) DO UPDATE SET properties = ?3")
        .bind(change.record, database, RecordView(*change.bytes))
        .step();
}

}  // namespace

DWORD OpenDatabase::beginChange(Connection& connection)
{
    if (closed_)
        return ERROR_INVALID_PARAMETER;
    if (storeState().changeIsOpen)
        return joinChange(connection);
    // The pending changes of another handle must be on the disk before this handle changes anything. Those of this
    // handle are committed when they reach a limit.
    if (connection.isGathering() && (!owns_ || gatheredEnough()))
        connection.endGathering();
    if (changes_.size() == changes_.capacity())  // so that keepChange can't run out of memory after the change
        changes_.reserve(2 * changes_.size() + 16);
    if (connection.isGathering())
        return 0;
    const Step begun = connection.gather([this, &connection](Step step) { gatheringEnded(connection, step); });
    if (begun != Step::Done)
        return errorOf(begun);
    owns_ = true;
    begun_ = std::chrono::steady_clock::now();
    const Step marked = markModified(connection, database_);
    return marked == Step::Done ? 0 : errorOf(marked);
}

DWORD OpenDatabase::joinChange(Connection& connection)
{
    if (const DWORD error = faultOfChange(connection))
        return error;
    if (joined_ == storeState().changes)
        return 0;
    const Step marked = markModified(connection, database_);
    if (marked != Step::Done)
        return errorOf(marked);
    joined_ = storeState().changes;
    return 0;
}

void OpenDatabase::keepChange(GatheredChange change)
{
    if (!owns_)
        return;
    bytes_ += change.bytes ? change.bytes->size() : 0;
    changes_.push_back(std::move(change));
}

DWORD OpenDatabase::close()
{
    const DatabaseUse use(Gathered::GoOn);
    if (closed_)
        return 0;
    closed_ = true;
    if (use && owns_)
        use->endGathering();
    auto& handles = storeState().openHandles;
    if (const auto count = handles.find(database_); count != handles.end() && --count->second == 0)
        handles.erase(count);
    return loss_;
}

bool OpenDatabase::gatheredEnough() const
{
    return changes_.size() >= GatheredChanges || bytes_ >= GatheredBytes ||
           std::chrono::steady_clock::now() - begun_ >= GatheredTime;
}

void OpenDatabase::gatheringEnded(Connection& connection, Step step)
{
    owns_ = false;
    bytes_ = 0;
    const auto changes = std::exchange(changes_, {});
    if (step == Step::Done)
        return;
    // The rollback removed new records and restored deleted ones. So the positions of records (KnownPosition) that were
    // determined before the rollback are no longer valid.
    ++storeState().recordsRemoved;
    try {
        if (step == Step::Full)
            changeWhatFits(connection, changes);
        else if (!changes.empty())
            noteLoss(step);
    } catch (const std::bad_alloc&) {
        loss_ = ERROR_NOT_ENOUGH_MEMORY;
    }
}

// Repeats the changes in one transaction: all of them or none.
Step OpenDatabase::changeTogether(Connection& connection, std::span<const GatheredChange> changes) const
{
    Transaction transaction(connection);
    Step step = transaction.begun();
    if (step == Step::Done)
        step = markModified(connection, database_);
    for (auto change = changes.begin(); step == Step::Done && change != changes.end(); ++change)
        step = changeAgain(connection, database_, *change);
    return step == Step::Done ? transaction.commit() : step;
}

// Repeats the changes that SQLite rolled back because the disk was full. If the disk has no room for all of them
// together, tries each half separately, down to single changes. A new record is inserted with the oid that it had
// before the rollback. No other record has taken this oid, because nothing but these changes was made since the
// rollback.
void OpenDatabase::changeWhatFits(Connection& connection, std::span<const GatheredChange> changes)
{
    if (changes.empty())
        return;
    const Step step = changeTogether(connection, changes);
    if (step == Step::Full && changes.size() > 1) {
        const std::size_t half = changes.size() / 2;
        changeWhatFits(connection, changes.first(half));
        changeWhatFits(connection, changes.subspan(half));
    } else if (step != Step::Done) {
        noteLoss(step);
    }
}

void OpenDatabase::noteLoss(Step step)
{
    loss_ = errorOf(step);
    noteStoreTrouble(Trouble::Writing, Troubled::Database, name_, loss_);
}

}  // namespace platform::store
