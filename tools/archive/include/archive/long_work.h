// long_work.h - lets the user stop long work by Ctrl-C, and shows the progress of the work.
#pragma once

#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace archive {

// From now on SIGINT, SIGTERM and SIGHUP make checkStop() throw, so that the destructors delete unfinished files. If
// the same signal comes a second time, it ends the process at once.
void catchSignals();

// The exception that ends long work.
class Stopped : public std::runtime_error {
public:
    Stopped() : std::runtime_error("stopped") {}
};

// Throws the exception Stopped if the user has asked to stop the work (JobIsToStop in ce/outcome.h). After
// catchSignals(), the signals SIGINT, SIGTERM and SIGHUP are such requests. Everything that reads sets calls
// checkStop() for each item and each block.
void checkStop();

// Ends the process by raising the signal that was caught after catchSignals(), or SIGINT if none was. So the shell sees
// which signal ended the process. Call it after the exception Stopped was caught.
[[noreturn]] void endBySignal();

// A line on standard error that shows the progress. A newer line overwrites it. It is shown only if standard error is a
// terminal. The destructor removes it.
class Progress {
public:
    explicit Progress(std::size_t total) : total_(total) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { clear(); }

    // Begins the next of the `total` parts and shows `name`.
    void begin(const std::string& name);
    // Shows `done` as a percentage of `ofAll`, or no percentage if `ofAll` is 0. Draws at most one line in 100 ms.
    void at(std::uint64_t done, std::uint64_t ofAll);
    // Removes the line. Call clear() before anything is printed. The next call of begin() or at() shows the line again.
    void clear();

private:
    std::size_t total_;
    std::size_t part_ = 0;
    std::string name_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_{};  // the line isn't drawn before this time
};

}  // namespace archive
