// A database's handle.
#include "open_database.h"

#include "device_database.h"
#include "object_store.h"
#include "record_rows.h"
#include "store_time.h"

#include <utility>

namespace platform::store {

using database::Connection;
using database::DatabaseUse;
using database::Gathered;
using database::Step;

namespace {

// What a kill may cost at most. A flush costs a disk milliseconds, so a few in a second do no harm.
constexpr unsigned GatheredChanges = 4096;
constexpr std::size_t GatheredBytes = std::size_t{8} << 20;
constexpr std::chrono::milliseconds GatheredTime(500);

}  // namespace

DWORD OpenDatabase::beginChange(Connection& connection)
{
    if (closed_)
        return ERROR_INVALID_PARAMETER;
    // Another handle's changes come first.
    if (connection.isGathering() && (!owns_ || gatheredEnough()))
        connection.endGathering();
    if (const DWORD loss = takeUntoldLoss())
        return loss;
    if (connection.isGathering())
        return 0;
    const Step begun = connection.gather([this](Step step) { gatheringEnded(step); });
    if (begun != Step::Done)
        return errorOf(begun);
    owns_ = true;
    changes_ = 0;
    bytes_ = 0;
    begun_ = std::chrono::steady_clock::now();
    const Step marked =
        connection.prepare("UPDATE store_database SET modified = ? WHERE oid = ?").bind(ticksNow(), database_).step();
    return marked == Step::Done ? 0 : errorOf(marked);
}

void OpenDatabase::countChange(std::size_t bytes)
{
    ++changes_;
    bytes_ += bytes;
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
    return changes_ >= GatheredChanges || bytes_ >= GatheredBytes ||
           std::chrono::steady_clock::now() - begun_ >= GatheredTime;
}

void OpenDatabase::gatheringEnded(Step step)
{
    owns_ = false;
    if (step == Step::Done)
        return;
    loss_ = untoldLoss_ = errorOf(step);
    // Records that came are gone again, and removed ones are back.
    ++storeState().recordsRemoved;
}

DWORD OpenDatabase::takeUntoldLoss()
{
    return std::exchange(untoldLoss_, 0);
}

}  // namespace platform::store
