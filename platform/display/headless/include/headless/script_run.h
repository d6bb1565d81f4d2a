// script_run.h - the program without a screen, its user's actions read from a script.
//
// docs/script.md describes the actions for people.
#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>

namespace platform::headless {

struct ScriptOptions {
    // How long an action may wait until it can be done; zero is for ever. A run in progress never counts.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    std::ostream* output = nullptr;      // what `print` writes
    std::ostream* errors = nullptr;      // "line N: ..."
    std::ostream* transcript = nullptr;  // if given: every window, text and answer, a line each, as it comes
};

// Starts `program` on a thread of its own, does the script's actions in it, closes the main window after
// the last line (or after the first one that fails) and waits for the program's end.
// 0 every line was done; 1 one failed; 2 the script can't be read or a line is not an action: then the
// program isn't started.
int runScript(const std::function<int()>& program, std::istream& script, const ScriptOptions& options);

}  // namespace platform::headless
