// measure.cpp - runs one command and reports its time and memory.
//
//     quillbox-bench-launcher DESCRIPTOR [--no-flush] COMMAND [ARGUMENT...]
//
// With --no-flush, each call of the command that flushes a file or a file system returns 0 and does nothing. Prints one
// line to the open descriptor: wall seconds, processor seconds, largest resident memory in kilobytes. The command
// doesn't inherit the descriptor.
//
// The kernel keeps the memory maximum of a process when the process executes another program. So the process that
// starts the command must be small. If a script's interpreter started it, the interpreter's maximum would count as that
// of the command.
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr int ExitUsage = 2;
constexpr int ExitCannotRun = 127;

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

int exitCodeOf(int status)
{
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Filters the system calls of this process and of what it executes. Returns whether the filter is set.
bool skipFlushes()
{
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fsync, 3, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fdatasync, 2, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_syncfs, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO),  // with error number 0: the call returns 0
    };
    const sock_fprog filter = {.len = std::size(steps), .filter = steps};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

}  // namespace

int main(int count, char* arguments[])
{
    const bool flushes = count < 3 || arguments[2] != std::string_view("--no-flush");
    char** const command = arguments + (flushes ? 2 : 3);
    const auto report = count < (flushes ? 3 : 4) ? -1 : static_cast<int>(std::strtol(arguments[1], nullptr, 10));
    if (report <= STDERR_FILENO || ::fcntl(report, F_SETFD, FD_CLOEXEC) != 0) {
        std::fputs("usage: quillbox-bench-launcher DESCRIPTOR [--no-flush] COMMAND [ARGUMENT...]\n", stderr);
        return ExitUsage;
    }
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        if (flushes || skipFlushes())
            ::execvp(*command, command);
        std::perror(*command);
        ::_exit(ExitCannotRun);
    }
    int status = 0;
    rusage usage = {};
    pid_t ended = child;
    do {
        ended = child < 0 ? child : ::wait4(child, &status, 0, &usage);
    } while (ended < 0 && errno == EINTR);
    if (ended < 0) {
        std::perror("quillbox-bench-launcher");
        return ExitCannotRun;
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    ::dprintf(report, "%.6f %.6f %ld\n", wall.count(), secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
              usage.ru_maxrss);
    return exitCodeOf(status);
}
