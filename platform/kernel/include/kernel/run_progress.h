// run_progress.h - how far the present run has come, for a display that shows it.
#pragma once

#include "ce/types.h"

#include <array>
#include <chrono>
#include <string>

namespace platform::kernel {

struct RunProgress {
    unsigned number = 0;    // of the run, from 1 on; 0 before the first
    DWORD run = 0;          // RunStores or RunRestores
    bool underway = false;  // otherwise it has ended, and the rest describes it
    std::u16string listPath;
    DWORD items = 0;  // in all
    std::uint64_t bytes = 0;
    DWORD itemsDone = 0;
    std::uint64_t bytesDone = 0;    // of these items and of the current one
    std::uint64_t storedBytes = 0;  // of the set's data file that are on the host and stay as they are
    std::array<DWORD, 3> made{};    // items that are whole in the set or on the device: files, databases, registry
    std::chrono::steady_clock::duration time{};  // since the run began, or what it took
};

// The present run, or the one that ended last. Any thread. The numbers are read one by one while the run goes on, so
// they can be from different moments.
[[nodiscard]] RunProgress runProgress();

}  // namespace platform::kernel
