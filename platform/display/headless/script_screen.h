// script_screen.h - holds ScriptScreen, through which a script reads what a user would see and waits for changes.
//
// The window core reports changes on the program's threads, with its mutex held. The script's thread reads the windows
// and waits. Each change that can make an action possible wakes that thread.
#pragma once

#include "transcript.h"
#include "window/display.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace platform::headless {

class ScriptScreen final : public window::Display {
public:
    explicit ScriptScreen(Transcript& transcript) : transcript_(transcript) {}

    void changed(HWND window, window::Change change) REQUIRES(window::coreMutex) override;
    void textChanged(HWND window, std::u16string_view text) REQUIRES(window::coreMutex) override;

    // Both must be called on the program's thread: programBegins() before the program runs, and programEnded() after
    // it.
    void programBegins();
    void programEnded();

    bool hasEnded() const;
    // The number of events so far that wake the script's thread: changes that can make an action possible, the report
    // that the program has become busy, and the end of the program.
    std::uint64_t changes() const;
    // Returns when changes() differs from `seen`, or after `timeout`. Without a timeout, waits without a limit.
    void waitForMore(std::uint64_t seen, std::optional<std::chrono::steady_clock::duration> timeout) const;

    // The foremost visible and enabled window of the program's main thread.
    std::optional<window::WindowState> top() const;
    // The visible top-level windows of other threads, foremost first. They show the progress of a backup or restore.
    std::vector<window::WindowState> progressWindows() const;
    // True if the program's main thread waits for input.
    bool programIsIdle() const;

private:
    struct Shown {
        std::string kind;
        std::string caption;                // quoted
        std::map<HWND, int> controls = {};  // the ids of the controls of a progress window
    };

    void addCreated(HWND window) REQUIRES(window::coreMutex);
    void addShown(HWND window) REQUIRES(window::coreMutex);
    void addGone(HWND window) REQUIRES(window::coreMutex);
    bool isOfProgram(const window::WindowState& state) const;

    Transcript& transcript_;

    mutable std::mutex mutex_;  // guards the next five members
    mutable std::condition_variable more_;
    std::uint64_t changes_ = 0;
    bool ended_ = false;
    HWND firstWindow_ = nullptr;  // the first window of the program's thread; if it is destroyed, the next created one
    std::uint64_t programThread_ = 0;

    std::map<HWND, Shown> shown_ GUARDED_BY(window::coreMutex);
};

}  // namespace platform::headless
