#include "killed_process.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

bool killedBeforeCall(int calls, const std::function<void()>& work)
{
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
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_EXITKILL);
    // The process stops before and after each call.
    for (int stop = 0; stop <= 2 * calls && WIFSTOPPED(status); ++stop) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    if (!WIFSTOPPED(status))
        return false;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
}
