// measure_ahead.h - finds out the sizes of files before a client lists them, on a thread of its own.
//
// The size of a file is known only after its last block was unpacked. A client that goes through the folders in the
// order of the set otherwise waits for that in each folder.
#pragma once

#include "shown_sets.h"

#include "kernel/mutex.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <thread>

namespace quillbox_mount {

class MeasureAhead {
public:
    // Starts the thread. `sets` outlives it.
    explicit MeasureAhead(ShownSets& sets);
    MeasureAhead(const MeasureAhead&) = delete;
    MeasureAhead& operator=(const MeasureAhead&) = delete;
    ~MeasureAhead();

    // Any thread. A client has reached this file, so those that follow it in the set are needed next.
    void after(Place file) EXCLUDES(mutex_);

private:
    void work() EXCLUDES(mutex_);
    Place next(Place done) EXCLUDES(mutex_);
    void measureAfter(Place start) EXCLUDES(mutex_);
    std::optional<std::uint64_t> bytesOf(Place file);

    ShownSets& sets_;

    // Of the thread: it has measured the files after begin_ up to end_, and they have so many bytes.
    std::uint32_t begin_ = 0;
    Place end_ = {};
    std::uint64_t bytes_ = 0;

    platform::kernel::Mutex mutex_;
    platform::kernel::Condition changed_;
    Place start_ GUARDED_BY(mutex_);     // the file that a client has reached
    Place measured_ GUARDED_BY(mutex_);  // end_ when the thread looked for work last
    std::atomic<bool> ends_ = false;
    std::thread thread_;
};

}  // namespace quillbox_mount
