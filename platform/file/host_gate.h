// host_gate.h - what stands before each host call: the plan of faults.
#pragma once

#include <atomic>

namespace platform::file {

namespace detail {
extern std::atomic<bool> faultPlanSet;
[[nodiscard]] int countHostCall();
}  // namespace detail

// 0, or the errno that the next host call has to fail with.
[[nodiscard]] inline int passGate()
{
    return detail::faultPlanSet.load(std::memory_order_relaxed) ? detail::countHostCall() : 0;
}

// Is a plan set that cuts the power, so that what isn't flushed must be known?
[[nodiscard]] bool watchesForPowerCut();

}  // namespace platform::file
