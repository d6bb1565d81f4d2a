// script_run.h - runs the program without a screen. A script replaces the user; docs/script.md describes its language.
#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>

namespace platform::headless {

struct ScriptOptions {
    // How long an action may wait until it is possible; zero for no limit. Time in which the program works doesn't
    // count.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    std::ostream* output = nullptr;      // for the actions `print ...`
    std::ostream* errors = nullptr;      // for "line N: ..."
    std::ostream* transcript = nullptr;  // for a line about each window, text and answer; null for none
};

// Runs `program` on a new thread and does the script's actions. After the last line, or the first line that fails,
// closes the program's windows and waits for its end. 0: every line was done. 1: a line failed, or the program can't be
// closed. 2: the script can't be read or contains an error; the program isn't started.
int runScript(const std::function<int()>& program, std::istream& script, const ScriptOptions& options);

}  // namespace platform::headless
