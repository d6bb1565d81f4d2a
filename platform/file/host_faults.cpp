// host_faults.cpp - counts the host calls while a plan is set, and carries the plan out.
#include "file/host_faults.h"

#include "host_gate.h"
#include "power_cut.h"

#include <csignal>
#include <mutex>

namespace platform::file {

namespace detail {
constinit std::atomic<bool> faultPlanSet = false;
}

namespace {

struct Plan {
    std::mutex mutex;
    FaultPlan plan;
    std::uint64_t calls = 0;
};

constinit Plan current;

}  // namespace

void setFaultPlan(const FaultPlan& plan)
{
    const std::lock_guard lock(current.mutex);
    current.plan = plan;
    current.calls = 0;
    forgetUnflushed();
    detail::faultPlanSet.store(true, std::memory_order_relaxed);
}

void clearFaultPlan()
{
    const std::lock_guard lock(current.mutex);
    detail::faultPlanSet.store(false, std::memory_order_relaxed);
    forgetUnflushed();
}

std::uint64_t hostCallsMade()
{
    const std::lock_guard lock(current.mutex);
    return current.calls;
}

int detail::countHostCall(HostCall call)
{
    FaultPlan plan;
    {
        const std::lock_guard lock(current.mutex);
        ++current.calls;
        plan = current.plan;
        const bool due =
            plan.nthCall != 0 && current.calls >= plan.nthCall && current.calls - plan.nthCall < plan.calls;
        if (!due)
            return 0;
    }
    switch (plan.kind) {
    case FaultKind::Fail:
        return plan.error;
    case FaultKind::ShortRead:
        return call == HostCall::Read ? GivesNothing : 0;
    case FaultKind::Meanwhile:
        plan.meanwhile();
        return 0;
    case FaultKind::PowerCut:
        takeBackUnflushed();
        break;
    case FaultKind::Kill:
        break;
    }
    (void)std::raise(SIGKILL);
    return 0;
}

bool watchesForPowerCut()
{
    if (!detail::faultPlanSet.load(std::memory_order_relaxed))
        return false;
    const std::lock_guard lock(current.mutex);
    return current.plan.kind == FaultKind::PowerCut;
}

}  // namespace platform::file
