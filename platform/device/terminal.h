// terminal.h - shows the progress of a command and asks questions on a terminal. The caller must first check that there
// is a terminal (standardErrorIsTerminal, userCanBeAsked), so that no progress or question goes to a pipe or a file.
#pragma once

#include "kernel/mutex.h"

#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace platform::device {

[[nodiscard]] bool standardErrorIsTerminal();
// Whether the user can be asked: standard input and standard error are terminals.
[[nodiscard]] bool userCanBeAsked();

// "1 file", "2 files".
[[nodiscard]] std::string counted(std::uint64_t number, const std::string& thing);
// "1.2 MB".
[[nodiscard]] std::string sizeText(std::uint64_t bytes);

// A line on standard error that shows how far the run has come. The destructor removes it.
class ProgressLine {
public:
    // Shows nothing if `shown` is false.
    explicit ProgressLine(bool shown);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    // Removes the line if `paused` is true, so that a question can be shown. If `paused` is false, shows the line
    // again.
    void pause(bool paused);

private:
    void showUntilEnd();

    kernel::Mutex mutex_;
    kernel::Condition changed_;
    bool ending_ GUARDED_BY(mutex_) = false;
    bool paused_ GUARDED_BY(mutex_) = false;
    std::thread thread_;
};

// Asks whether existing items of one kind, files or databases, may be replaced. The user can give one answer for all
// further items.
class ReplaceQuestion {
public:
    explicit ReplaceQuestion(ProgressLine*& line) : line_(line) {}

    // Returns true if the item may be replaced. Returns false if it may not, if the user doesn't answer, or if the user
    // stops the run. `what` describes the item, for example "The file \"\\a\"".
    [[nodiscard]] bool ask(const std::string& what);
    [[nodiscard]] unsigned refused() const { return refused_; }

private:
    [[nodiscard]] bool answer(const std::string& what);

    ProgressLine*& line_;  // null while no line is shown
    std::optional<bool> forAll_;
    unsigned refused_ = 0;
};

}  // namespace platform::device
