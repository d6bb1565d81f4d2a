// small_program.h - a program of a few commands for scripts to drive. It shows dialogs of the embedded resources and
// notes what the user does in them.
#pragma once

#include "ce/types.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace small {

inline constexpr WORD Exit = 40002;       // ends the program
inline constexpr WORD Run = 40003;        // dialog 108, then a run with a progress window and a question
inline constexpr WORD Items = 40005;      // dialog 109 with three rows, several to be selected
inline constexpr WORD Questions = 40006;  // three message boxes, one after the other
inline constexpr WORD Choose = 40007;     // dialog 107 with two rows; refuses OK without a choice
inline constexpr WORD Work = 40009;       // works for a while and answers nothing
inline constexpr WORD Policy = 40010;     // dialog 111
inline constexpr WORD StayOpen = 40011;   // from now on the main window asks when it is closed, and stays
inline constexpr WORD AskMuch = 40012;    // a run with a question for each of 300 files, and the same warning each time

// What the program has met, in order. Any thread.
class Diary {
public:
    void note(std::string line)
    {
        const std::lock_guard guard(mutex_);
        lines_.push_back(std::move(line));
    }
    [[nodiscard]] std::vector<std::string> take()
    {
        const std::lock_guard guard(mutex_);
        return std::exchange(lines_, {});
    }

private:
    std::mutex mutex_;
    std::vector<std::string> lines_;
};

Diary& diary();

int program();

// After StayOpen, when the script has given up: ends the program and waits for it.
void letGo();

}  // namespace small
