#include "archive/long_work.h"

#include "screen_text/screen_text.h"

#include "kernel/job.h"

#include "ce/outcome.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace archive {

namespace {

constexpr auto BetweenDrawings = std::chrono::milliseconds(100);

volatile std::sig_atomic_t caught = 0;

extern "C" void noteSignal(int number)
{
    caught = number;
    platform::kernel::stopEveryJob();
}

bool isShown()
{
    static const bool terminal = ::isatty(STDERR_FILENO) != 0;
    return terminal;
}

}  // namespace

void catchSignals()
{
    struct sigaction action {};
    action.sa_handler = noteSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction old {};
        // A signal that was ignored when the program was started, for example by nohup, stays ignored.
        if (::sigaction(number, nullptr, &old) == 0 && old.sa_handler != SIG_IGN)
            ::sigaction(number, &action, nullptr);
    }
}

void checkStop()
{
    if (JobIsToStop())
        throw Stopped();
}

void endBySignal()
{
    const int number = caught != 0 ? static_cast<int>(caught) : SIGINT;
    (void)std::signal(number, SIG_DFL);
    (void)std::raise(number);
    std::_Exit(128 + number);
}

void Progress::begin(const std::string& name)
{
    part_++;
    if (!isShown())
        return;
    name_ = screen_text::onScreen(std::string_view(name));
    at(0, 0);
}

void Progress::at(std::uint64_t done, std::uint64_t ofAll)
{
    if (!isShown())
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_)
        return;
    next_ = now + BetweenDrawings;
    std::fprintf(stderr, "\r\033[K[%zu/%zu] ", part_, total_);
    if (ofAll != 0)
        std::fprintf(stderr, "%u %% ",
                     static_cast<unsigned>(static_cast<double>(done) * 100 / static_cast<double>(ofAll)));
    std::fprintf(stderr, "%s", name_.c_str());
    shown_ = true;
}

void Progress::clear()
{
    if (shown_)
        std::fputs("\r\033[K", stderr);
    shown_ = false;
    next_ = {};
}

}  // namespace archive
