// run_view.h - a run as the window shows it: how much of it is done, and how long the rest will take.
#pragma once

#include "kernel/run_progress.h"

#include <chrono>
#include <optional>

namespace platform::qt {

struct RunView {
    kernel::RunProgress progress;
    double share = 0;  // of the work that is done, from 0 to 1
    std::optional<std::chrono::seconds> remaining;
    bool closesAfterwards = false;  // the user has asked to close the window
};

// Estimates the time that a run still takes. The time that a question waits for the user doesn't count as work.
class RunClock {
public:
    using Duration = std::chrono::steady_clock::duration;

    // Called repeatedly while a run is underway. `waits`: a question is open.
    [[nodiscard]] RunView look(const kernel::RunProgress& progress, bool waits);

private:
    unsigned run_ = 0;
    Duration seen_{};    // of the run, at the last look
    Duration worked_{};  // of that, without the questions
};

}  // namespace platform::qt
