// run_progress.h - tells a display how far the current run (ce/progress.h) has come.
#pragma once

#include "ce/types.h"

#include <array>
#include <chrono>
#include <string>

namespace platform::kernel {

struct RunProgress {
    unsigned number = 0;    // the number of the run, counted from 1; 0 before the first run
    DWORD run = 0;          // RunStores or RunRestores
    bool underway = false;  // false: no run is in progress, and the other members describe the last one
    std::u16string listPath;
    DWORD items = 0;  // the number of items of the whole run
    std::uint64_t bytes = 0;
    DWORD itemsDone = 0;
    std::uint64_t bytesDone = 0;    // bytes of the done items and of the current one
    std::uint64_t storedBytes = 0;  // bytes at the start of the data file that are written and won't change
    std::array<DWORD, 3> made{};    // items that are complete in the set or on the device: files, databases, registry
    std::chrono::steady_clock::duration time{};  // since the run began, or the duration of the ended run
};

// Returns the progress of the current run, or of the last one if no run is in progress. Any thread may call this
// function. The numbers are read one by one while the run goes on, so they can be from different moments.
[[nodiscard]] RunProgress runProgress();

}  // namespace platform::kernel
