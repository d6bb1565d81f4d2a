// measure.cpp - runs one command and reports its time and memory.
//
//     quillbox-bench-launcher DESCRIPTOR COMMAND [ARGUMENT...]
//
// Prints one line to the open descriptor: wall seconds, processor seconds, largest resident memory in kilobytes. The
// command doesn't inherit the descriptor.
//
// The kernel keeps the memory maximum of a process when the process executes another program. So the process that
// starts the command must be small. If a script's interpreter started it, the interpreter's maximum would count as that
// of the command.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>

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

}  // namespace

int main(int count, char* arguments[])
{
    const auto report = count < 3 ? -1 : static_cast<int>(std::strtol(arguments[1], nullptr, 10));
    if (report <= STDERR_FILENO || ::fcntl(report, F_SETFD, FD_CLOEXEC) != 0) {
        std::fputs("usage: quillbox-bench-launcher DESCRIPTOR COMMAND [ARGUMENT...]\n", stderr);
        return ExitUsage;
    }
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        ::execvp(arguments[2], arguments + 2);
        std::perror(arguments[2]);
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
