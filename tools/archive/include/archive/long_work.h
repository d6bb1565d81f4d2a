// long_work.h - long work can be stopped by Ctrl-C, and shows its progress.
#pragma once

#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace archive {

// From now on SIGINT, SIGTERM and SIGHUP make checkStop() throw, so that the destructors delete unfinished files. A
// second signal ends the process at once.
void catchSignals();

class Stopped : public std::runtime_error {
public:
    Stopped() : std::runtime_error("stopped") {}
};

// Throws a Stopped after such a signal, or when the job of the platform is to stop. Everything that reads sets calls it
// for each item and each block.
void checkStop();

// Ends the process by the signal that catchSignals() has caught, as the shell expects it. Call it after the handling of
// a Stopped.
[[noreturn]] void endBySignal();

// One line on standard error that is overwritten, if that is a terminal. The destructor removes it.
class Progress {
public:
    explicit Progress(std::size_t total) : total_(total) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { clear(); }

    // The next of `total` parts begins. `name` is printed.
    void begin(const std::string& name);
    // How much of the part is done.
    void at(std::uint64_t done, std::uint64_t ofAll);
    // Removes the line before something else is printed. The next call of at() shows it again.
    void clear();

private:
    std::size_t total_;
    std::size_t part_ = 0;
    std::string name_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_{};  // when the line is drawn again
};

}  // namespace archive
