// host_faults.h - lets a test choose what happens at the nth system call that the file layer (platform/file) makes on
// files and folders. The call can fail, the process can be killed, a power cut can be simulated, or a function of the
// test can act as another program. Only tests link this (target platform_file_faults).
#pragma once

#include <cstdint>

namespace platform::file {

enum class FaultKind {
    Fail,       // the call isn't made and fails with `error` (an errno)
    Kill,       // the process is killed before the call is made
    PowerCut,   // like Kill, but first the process brings the disk to a state that a power cut could leave. It cuts
                // each file to its size at its last flush or, without a flush, before its first change. It removes the
                // entries that were made since the last flush of their folder, and moves back the entries that were
                // moved since that flush. It doesn't restore deleted entries. A real power cut can restore them, but
                // then less is lost.
    ShortRead,  // if the call reads bytes of a file, it delivers none, as at the end of the file
    Meanwhile,  // before the call is made, the function `meanwhile` runs; it must not call the file layer
};

struct FaultPlan {
    FaultKind kind = FaultKind::Fail;
    std::uint64_t nthCall = 0;  // the first call to which the plan applies (1: the next); 0: calls are only counted
    int error = 0;
    std::uint64_t calls = 1;  // the number of successive calls to which the plan applies
    void (*meanwhile)() = nullptr;
};

// Both can be called on any thread.
void setFaultPlan(const FaultPlan& plan);
void clearFaultPlan();

// The number of system calls from setFaultPlan to clearFaultPlan, or to now if the plan is still set. Includes calls
// that failed because of the plan.
std::uint64_t hostCallsMade();

}  // namespace platform::file
