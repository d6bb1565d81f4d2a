#include "terminal.h"

#include "background_thread.h"

#include "telling.h"

#include "kernel/run_progress.h"

#include "ce/outcome.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <unistd.h>

namespace platform::device {

namespace {

using namespace std::chrono_literals;
using kernel::MutexLock;

constexpr auto LineInterval = 250ms;
const char* const EraseLine = "\r\033[K";

void put(const std::string& text)
{
    (void)!::write(STDERR_FILENO, text.data(), text.size());  // a failed write is ignored, because no result is lost
}

std::string timeText(double seconds)
{
    const auto whole = static_cast<unsigned long>(std::lround(seconds));
    std::array<char, 48> text{};
    if (whole < 3600)
        (void)std::snprintf(text.data(), text.size(), "%lu:%02lu", whole / 60, whole % 60);
    else
        (void)std::snprintf(text.data(), text.size(), "%lu:%02lu:%02lu", whole / 3600, whole / 60 % 60, whole % 60);
    return text.data();
}

std::string lineOf(const kernel::RunProgress& run)
{
    const double seconds = std::chrono::duration<double>(run.time).count();
    std::string line = std::to_string(run.itemsDone) + " of " + counted(run.items, "item") + ", " +
                       sizeText(run.bytesDone) + " of " + sizeText(std::max(run.bytes, run.bytesDone));
    if (seconds < 1 || run.bytesDone == 0)
        return line;
    const double rate = static_cast<double>(run.bytesDone) / seconds;
    line += ", " + sizeText(static_cast<std::uint64_t>(rate)) + "/s";
    if (run.bytes > run.bytesDone)
        line += ", " + timeText(static_cast<double>(run.bytes - run.bytesDone) / rate) + " left";
    return line;
}

// Reads a line from the terminal. Returns nothing at the end of the input, or if a signal asks to stop the run during
// the question.
std::optional<std::string> readAnswer()
{
    std::string line;
    for (;;) {
        pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
        if (::poll(&input, 1, -1) < 0 && (errno != EINTR || JobIsToStop()))
            return std::nullopt;
        if (JobIsToStop())
            return std::nullopt;
        char byte = 0;
        if (input.revents == 0)
            continue;
        if (::read(STDIN_FILENO, &byte, 1) != 1)
            return std::nullopt;
        if (byte == '\n')
            return line;
        line += byte;
    }
}

}  // namespace

bool standardErrorIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

bool userCanBeAsked()
{
    return ::isatty(STDIN_FILENO) == 1 && standardErrorIsTerminal();
}

std::string counted(std::uint64_t number, const std::string& thing)
{
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

std::string sizeText(std::uint64_t bytes)
{
    constexpr std::array Units = {"KB", "MB", "GB", "TB"};
    if (bytes < 1000)
        return counted(bytes, "byte");
    double size = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    for (; size >= 999.95 && unit + 1 < Units.size(); unit++)
        size /= 1000;
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.1f %s", size, Units[unit]);
    return text.data();
}

ProgressLine::ProgressLine(bool shown)
{
    if (shown)
        thread_ = startBackgroundThread([this] { showUntilEnd(); });
}

ProgressLine::~ProgressLine()
{
    if (!thread_.joinable())
        return;
    {
        const MutexLock lock(mutex_);
        ending_ = true;
        changed_.notifyAll();
    }
    thread_.join();
}

void ProgressLine::pause(bool paused)
{
    if (!thread_.joinable())
        return;
    const MutexLock lock(mutex_);
    paused_ = paused;
    if (paused)
        put(EraseLine);
}

void ProgressLine::showUntilEnd()
{
    const MutexLock lock(mutex_);
    while (!ending_) {
        const kernel::RunProgress run = kernel::runProgress();
        if (run.underway && !paused_)
            put(EraseLine + lineOf(run));
        changed_.waitUntil(mutex_, std::chrono::steady_clock::now() + LineInterval);
    }
    put(EraseLine);
}

bool ReplaceQuestion::answer(const std::string& what)
{
    for (;;) {
        put(onScreen(what) + " exists. Replace it? [y]es, [n]o, [a]ll, n[o]ne: ");
        const auto line = readAnswer();
        if (!line) {
            put("\n");
            return false;
        }
        if (*line == "y" || *line == "yes")
            return true;
        if (*line == "n" || *line == "no")
            return false;
        if (*line == "a" || *line == "all")
            return *(forAll_ = true);
        if (*line == "o" || *line == "none")
            return *(forAll_ = false);
    }
}

bool ReplaceQuestion::ask(const std::string& what)
{
    bool yes = forAll_.value_or(false);
    if (!forAll_ && !JobIsToStop()) {
        if (line_)
            line_->pause(true);
        yes = answer(what);
        if (line_)
            line_->pause(false);
    }
    refused_ += yes ? 0 : 1;
    return yes;
}

}  // namespace platform::device
