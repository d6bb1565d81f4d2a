// Only the thread of the run changes the atomic numbers, so a load and a store are enough to add to a number. A display
// can read the numbers at any time. The mutex guards the data that a run reports only at its beginning and its end.
#include "kernel/run_progress.h"

#include "ce/outcome.h"
#include "ce/progress.h"

#include <atomic>
#include <mutex>

namespace platform::kernel {

namespace {

using Clock = std::chrono::steady_clock;

struct CurrentRun {
    std::mutex mutex;
    RunProgress told;  // everything except the numbers in the atomic members
    unsigned runs = 0;
    Clock::time_point begun;
    std::atomic<DWORD> itemsDone = 0;
    std::array<std::atomic<DWORD>, 3> made{};
    std::atomic<std::uint64_t> bytesOfDone = 0;
    std::atomic<std::uint64_t> bytesOfCurrent = 0;
    std::atomic<std::uint64_t> storedBytes = 0;
};

CurrentRun& currentRun()
{
    static CurrentRun all;
    return all;
}

template <class Number>
void add(std::atomic<Number>& sum, Number more)
{
    sum.store(sum.load(std::memory_order_relaxed) + more, std::memory_order_relaxed);
}

}  // namespace

RunProgress runProgress()
{
    CurrentRun& all = currentRun();
    const std::lock_guard lock(all.mutex);
    RunProgress progress = all.told;
    if (progress.underway)
        progress.time = Clock::now() - all.begun;
    progress.itemsDone = all.itemsDone.load(std::memory_order_relaxed);
    for (std::size_t kind = 0; kind < progress.made.size(); kind++)
        progress.made[kind] = all.made[kind].load(std::memory_order_relaxed);
    progress.bytesDone =
        all.bytesOfDone.load(std::memory_order_relaxed) + all.bytesOfCurrent.load(std::memory_order_relaxed);
    progress.storedBytes = all.storedBytes.load(std::memory_order_relaxed);
    return progress;
}

}  // namespace platform::kernel

using namespace platform::kernel;

void BeginRun(DWORD run, const WCHAR* listPath, DWORD items, std::uint64_t bytes)
{
    CurrentRun& all = currentRun();
    const std::lock_guard lock(all.mutex);
    all.told = {};
    all.told.number = ++all.runs;
    all.told.run = run;
    all.told.underway = true;
    all.told.listPath = listPath;
    all.told.items = items;
    all.told.bytes = bytes;
    all.begun = Clock::now();
    all.itemsDone = 0;
    for (std::atomic<DWORD>& made : all.made)
        made = 0;
    all.bytesOfDone = 0;
    all.bytesOfCurrent = 0;
    all.storedBytes = 0;
}

void ReportItemBytes(std::uint64_t bytes)
{
    currentRun().bytesOfCurrent.store(bytes, std::memory_order_relaxed);
}

void ReportStoredBytes(std::uint64_t bytes)
{
    currentRun().storedBytes.store(bytes, std::memory_order_relaxed);
}

void ReportItemDone(DWORD kind, std::uint64_t bytes, BOOL made)
{
    CurrentRun& all = currentRun();
    all.bytesOfCurrent.store(0, std::memory_order_relaxed);
    add(all.bytesOfDone, bytes);
    add(all.itemsDone, DWORD{1});
    if (made && kind >= OutcomeFile && kind <= all.made.size())
        add(all.made[kind - 1], DWORD{1});
}

void TakeBackItemsMade(DWORD kind, DWORD count)
{
    CurrentRun& all = currentRun();
    if (kind >= OutcomeFile && kind <= all.made.size())
        add(all.made[kind - 1], DWORD{0} - count);
}

void EndRun()
{
    CurrentRun& all = currentRun();
    const std::lock_guard lock(all.mutex);
    if (!all.told.underway)
        return;
    all.told.underway = false;
    all.told.time = Clock::now() - all.begun;
}
