#include "file/host_faults.h"

#include "host_gate.h"
#include "power_cut.h"

#include <csignal>
#include <mutex>
#include <optional>

namespace platform::file {

namespace {

class FaultPlanWatcher final : public HostCallWatcher {
public:
    void set(const FaultPlan& plan)
    {
        const std::lock_guard lock(mutex_);
        plan_ = plan;
        calls_ = 0;
    }

    std::uint64_t calls()
    {
        const std::lock_guard lock(mutex_);
        return calls_;
    }

    int beforeCall(HostCall call) override;

    void beforeChange(int file) override
    {
        if (recordsChanges())
            noteChange(file);
    }
    void afterResize(int file, std::uint64_t size) override
    {
        if (recordsChanges())
            noteResize(file, size);
    }
    void afterMaking(int folder, const char* path) override
    {
        if (recordsChanges())
            noteMaking(folder, path);
    }
    void afterMove(int folder, const char* name, int newFolder, const char* newName) override
    {
        if (recordsChanges())
            noteMove(folder, name, newFolder, newName);
    }
    void afterFlush(int fileOrFolder) override
    {
        if (recordsChanges())
            noteFlush(fileOrFolder);
    }
    void afterFileSystemFlush(int fileOrFolder) override
    {
        if (recordsChanges())
            noteFileSystemFlush(fileOrFolder);
    }

private:
    // Counts a call. If the plan is to be carried out at this call, returns the plan.
    [[nodiscard]] std::optional<FaultPlan> countCall()
    {
        const std::lock_guard lock(mutex_);
        ++calls_;
        const bool isDue = plan_.nthCall != 0 && calls_ >= plan_.nthCall && calls_ - plan_.nthCall < plan_.calls;
        return isDue ? std::optional(plan_) : std::nullopt;
    }

    // Changes are recorded only for a simulated power cut, because recording takes time.
    bool recordsChanges()
    {
        const std::lock_guard lock(mutex_);
        return plan_.kind == FaultKind::PowerCut;
    }

    std::mutex mutex_;
    FaultPlan plan_;
    std::uint64_t calls_ = 0;
};

int FaultPlanWatcher::beforeCall(HostCall call)
{
    const std::optional<FaultPlan> plan = countCall();
    if (!plan)
        return 0;
    switch (plan->kind) {
    case FaultKind::Fail:
        return plan->error;
    case FaultKind::ShortRead:
        return call == HostCall::Read ? GivesNothing : 0;
    case FaultKind::Meanwhile:
        plan->meanwhile();
        return 0;
    case FaultKind::PowerCut:
        undoUnflushed();
        break;
    case FaultKind::Kill:
        break;
    }
    (void)std::raise(SIGKILL);
    return 0;
}

constinit FaultPlanWatcher theWatcher;

}  // namespace

void setFaultPlan(const FaultPlan& plan)
{
    theWatcher.set(plan);
    forgetUnflushed();
    hostCallWatcher.store(&theWatcher, std::memory_order_release);
}

void clearFaultPlan()
{
    hostCallWatcher.store(nullptr, std::memory_order_release);
    forgetUnflushed();
}

std::uint64_t hostCallsMade()
{
    return theWatcher.calls();
}

}  // namespace platform::file
