// host_gate.h - what stands before each host call: the plan of faults.
#pragma once

#include <atomic>

namespace platform::file {

enum class HostCall { Read, Other };

// In an errno's place: the call isn't made and gives no bytes.
inline constexpr int GivesNothing = -1;

namespace detail {
extern std::atomic<bool> faultPlanSet;
[[nodiscard]] int countHostCall(HostCall call);
}  // namespace detail

// 0, or the errno that the next host call has to fail with; for one that reads GivesNothing, too.
[[nodiscard]] inline int passGate(HostCall call = HostCall::Other)
{
    return detail::faultPlanSet.load(std::memory_order_relaxed) ? detail::countHostCall(call) : 0;
}

// Is a plan set that cuts the power, so that what isn't flushed must be known?
[[nodiscard]] bool watchesForPowerCut();

}  // namespace platform::file
