#include "kernel/job.h"

#include "ce/outcome.h"

#include <atomic>

#include <signal.h>

namespace platform::kernel {

namespace {

// A signal handler may use only lock-free atomics.
std::atomic<std::uint64_t> jobsSoFar = 0;
std::atomic<std::uint64_t> current = 0;
std::atomic<std::uint64_t> stopped = 0;  // the number of the job that was asked to stop
std::atomic<bool> everyJobStopped = false;
std::atomic<void (*)()> afterSignal = nullptr;
static_assert(std::atomic<std::uint64_t>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

}  // namespace

void noteJobBegin()
{
    current = ++jobsSoFar;
}

void noteJobEnd()
{
    current = 0;
}

std::uint64_t currentJob()
{
    return current;
}

void stopJob()
{
    stopped = current.load();
}

void stopEveryJob()
{
    everyJobStopped = true;
}

void stopEveryJobAtSignal(void (*then)())
{
    afterSignal = then;
    struct sigaction action = {};
    action.sa_handler = [](int) {
        stopEveryJob();
        if (void (*const call)() = afterSignal)
            call();
    };
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        // nohup, for example, starts the process with SIGHUP ignored. Such a signal must stay ignored.
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            (void)::sigaction(signal, &action, nullptr);
    }
}

}  // namespace platform::kernel

BOOL JobIsToStop()
{
    using namespace platform::kernel;
    return everyJobStopped || (current != 0 && stopped == current);
}
