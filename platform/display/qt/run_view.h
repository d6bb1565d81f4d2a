// run_view.h - the part of a run that is done, and an estimate of how long the rest will take. A run is a backup or a
// restore.
#pragma once

#include "kernel/run_progress.h"

#include <chrono>
#include <optional>

namespace platform::qt {

struct RunView {
    kernel::RunProgress progress;
    double share = 0;  // the part of the work that is done, from 0 to 1
    // Empty while too little is done for an estimate.
    std::optional<std::chrono::seconds> remaining;
    bool closesAfterwards = false;  // the user has asked to close the window
};

// Estimates the time that a run still takes. The time that a question waits for the user doesn't count as work.
class RunClock {
public:
    using Duration = std::chrono::steady_clock::duration;

    // Called repeatedly while a run is underway. `waits` is true if a question is open.
    [[nodiscard]] RunView look(const kernel::RunProgress& progress, bool waits);

private:
    unsigned run_ = 0;
    Duration seen_{};    // the run's time at the last call of look()
    Duration worked_{};  // the part of seen_ in which no question was open
};

}  // namespace platform::qt
