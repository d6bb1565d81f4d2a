#include "killed_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <sched.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Calls that change only the process's memory. They aren't counted, for two reasons. Addresses are random, so the
// number of these calls differs from run to run. And a kill before one of them leaves the same files as a kill before
// the next call of another kind.
constexpr std::uint64_t MemoryCalls[] = {SYS_brk,      SYS_mmap,    SYS_mremap, SYS_munmap,
                                         SYS_mprotect, SYS_madvise, SYS_futex};

// Lets the process run until it is about to make the next call that isn't one of MemoryCalls. Returns false if it ends
// before.
bool runToNextCall(pid_t child, int& status)
{
    for (;;) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
        if (!WIFSTOPPED(status))
            return false;
        __ptrace_syscall_info call = {};
        ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof call, &call);
        if (call.op == PTRACE_SYSCALL_INFO_ENTRY && std::ranges::count(MemoryCalls, call.entry.nr) == 0)
            return true;
    }
}

// Keeps this process and its child on one processor. Only one of the two works at a time, and waking the other one on
// another processor takes several times as long.
class OneProcessor {
public:
    OneProcessor()
    {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(sched_getcpu(), &one);
        sched_getaffinity(0, sizeof before_, &before_);
        sched_setaffinity(0, sizeof one, &one);
    }
    OneProcessor(const OneProcessor&) = delete;
    OneProcessor& operator=(const OneProcessor&) = delete;
    ~OneProcessor() { sched_setaffinity(0, sizeof before_, &before_); }

private:
    cpu_set_t before_;
};

}  // namespace

bool killedBeforeCall(int calls, const std::function<void()>& work)
{
    const OneProcessor one;
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(1);  // without tracing, the parent wouldn't see the stops
        raise(SIGSTOP);
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSTOPPED(status)) << "this host allows no tracing";
    // PTRACE_GET_SYSCALL_INFO needs PTRACE_O_TRACESYSGOOD.
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_EXITKILL | PTRACE_O_TRACESYSGOOD);
    for (int call = 0; call <= calls; ++call) {
        if (!runToNextCall(child, status))
            return false;
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
}
