// script_run.h - runs the program without a screen. A script replaces the user; docs/script.md describes its language.
#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>

namespace platform::headless {

struct ScriptOptions {
    // How long the script waits until an action is possible, or zero for no limit. Time in which the program is busy
    // doesn't count.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    std::ostream* output = nullptr;      // for the actions `print ...`; null: they write nothing
    std::ostream* errors = nullptr;      // for "line N: ..."; null: no messages
    std::ostream* transcript = nullptr;  // for lines about the screen and the actions; null: no transcript
};

// Runs `program` on a new thread and performs the script's actions. After the last line, or the first line that fails,
// closes the program's windows and waits until the program ends. Returns 0 if every line was done, and 1 if a line
// failed or the program can't be closed. A program that can't be closed continues on its thread. The result of
// `program` is ignored. Returns 2, without starting the program, if the script can't be read or contains an error.
int runScript(const std::function<int()>& program, std::istream& script, const ScriptOptions& options);

}  // namespace platform::headless
