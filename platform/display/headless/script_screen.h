// script_screen.h - the display without a screen: notes what changes, and answers what a user would see.
//
// The core calls it under its lock; the script's thread asks and waits. No polling: each change that may
// make an action possible wakes the waiting thread.
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

    // On the program's thread, before its first and after its last step.
    void programBegins();
    void programEnded();

    [[nodiscard]] bool hasEnded() const;
    // How often something has changed that may make an action possible.
    [[nodiscard]] std::uint64_t changes() const;
    // Until there are more than `seen`, or `patience` is over. No patience: for ever.
    void waitForMore(std::uint64_t seen, std::optional<std::chrono::steady_clock::duration> patience) const;

    // The window in front of the program's main thread that takes a user's input: visible and enabled.
    [[nodiscard]] std::optional<window::WindowState> top() const;
    // Visible top-level windows of other threads: they show how far a run is. Foremost first.
    [[nodiscard]] std::vector<window::WindowState> progressWindows() const;
    // Does the program's main thread wait for its user?
    [[nodiscard]] bool programRests() const;

private:
    struct Shown {
        std::string kind;
        std::string caption;                // quoted
        std::map<HWND, int> controls = {};  // of a progress window: their ids
    };

    void noteCreated(HWND window) REQUIRES(window::coreMutex);
    void noteShown(HWND window) REQUIRES(window::coreMutex);
    void noteGone(HWND window) REQUIRES(window::coreMutex);
    [[nodiscard]] bool isOfProgram(const window::WindowState& state) const;

    Transcript& transcript_;

    mutable std::mutex mutex_;
    mutable std::condition_variable more_;
    std::uint64_t changes_ = 0;
    bool ended_ = false;
    HWND firstWindow_ = nullptr;  // of the program's thread
    std::uint64_t programThread_ = 0;

    std::map<HWND, Shown> shown_ GUARDED_BY(window::coreMutex);
};

}  // namespace platform::headless
