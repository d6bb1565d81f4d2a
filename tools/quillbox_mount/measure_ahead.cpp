#include "measure_ahead.h"

#include <algorithm>
#include <exception>

namespace quillbox_mount {

namespace {

// What a client that stops has made us do in vain, and what the cache of blocks can keep until the files are read.
constexpr std::uint32_t MostFiles = 4096;
constexpr std::uint64_t MostBytes = 16 * 1024 * 1024;

}  // namespace

MeasureAhead::MeasureAhead(ShownSets& sets) : sets_(sets), thread_([this] { work(); }) {}

MeasureAhead::~MeasureAhead()
{
    {
        const platform::kernel::MutexLock lock(mutex_);  // or the thread could begin to wait after it looked
        ends_ = true;
        changed_.notifyAll();
    }
    thread_.join();
}

void MeasureAhead::after(Place file)
{
    const platform::kernel::MutexLock lock(mutex_);
    start_ = file;
    const std::uint32_t ahead = measured_.node - file.node;  // of a file beyond measured_: a very large number
    if (file.set != measured_.set || ahead < MostFiles / 2 || ahead > MostFiles)
        changed_.notifyAll();
}

void MeasureAhead::work()
{
    for (Place start; !(start = next(start)).isTop();) {
        try {
            measureAfter(start);
        } catch (const std::exception&) {
            // There is too little memory, and the listing does it.
        }
    }
}

// Waits for another place than the one that is done. The top is the end of the work.
Place MeasureAhead::next(Place done)
{
    const platform::kernel::MutexLock lock(mutex_);
    measured_ = end_;
    while (start_ == done && !ends_)
        changed_.wait(mutex_);
    return ends_ ? Place{} : start_;
}

void MeasureAhead::measureAfter(Place start)
{
    if (start.set != end_.set || start.node < begin_ || start.node > end_.node) {
        begin_ = start.node;
        end_ = start;
        bytes_ = 0;
    }
    while (begin_ < start.node)
        bytes_ -= std::min(bytes_, bytesOf({start.set, ++begin_}).value_or(0));
    while (end_.node - begin_ < MostFiles && bytes_ < MostBytes && !ends_) {
        const auto bytes = bytesOf({end_.set, end_.node + 1});
        if (!bytes)
            return;
        bytes_ += *bytes;
        end_.node++;
    }
}

// Nothing if the set ends before.
std::optional<std::uint64_t> MeasureAhead::bytesOf(Place file)
{
    Attributes found{};
    return sets_.attributes(file, Sizes::IfQuick, found) == 0 ? std::optional(found.bytes) : std::nullopt;
}

}  // namespace quillbox_mount
