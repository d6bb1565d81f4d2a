// host_faults.h - lets a test make the nth call on the host's files fail, kill the process there, cut the power, or do
// in that moment what another program might do. Every system call that the file layer makes on files and folders passes
// here; without a plan that costs one relaxed load.
#pragma once

#include <cstdint>

namespace platform::file {

enum class FaultKind {
    Fail,       // the call isn't made and gives `error` (an errno)
    Kill,       // the process is killed before the call is made
    PowerCut,   // the same, but what was never flushed is taken off the disk first: bytes of files behind
                // their last flush, entries of folders made since the last flush of the folder. Deleted
                // entries stay deleted: that is the worst that a disk can do.
    ShortRead,  // if the call reads bytes of a file, it gives none, as at the end
    Meanwhile,  // `meanwhile` runs before the call is made; it may not call this room
};

struct FaultPlan {
    FaultKind kind = FaultKind::Fail;
    std::uint64_t nthCall = 0;  // counted from 1 since the plan was set
    int error = 0;
    std::uint64_t calls = 1;  // how many calls one after the other this happens to; a kill comes at the first
    void (*meanwhile)() = nullptr;
};

void setFaultPlan(const FaultPlan& plan);
void clearFaultPlan();

// Calls made since the plan was set; with nthCall 0 a plan only counts.
[[nodiscard]] std::uint64_t hostCallsMade();

}  // namespace platform::file
