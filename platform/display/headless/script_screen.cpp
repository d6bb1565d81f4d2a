#include "script_screen.h"

#include "reading.h"
#include "snapshot.h"

#include "ce/window.h"

namespace platform::headless {

using window::Change;
using window::WindowKind;
using window::WindowState;

namespace {

// True on the thread that runs the program.
thread_local bool isProgramThread = false;

// Returns true if the change can make an action possible. Also returns true for Idle and Busy, because only the time
// between an Idle and the next Busy counts for the timeout of an action.
bool wakes(Change change)
{
    switch (change) {
    case Change::Shown:
    case Change::Destroyed:
    case Change::Enabled:
    case Change::Foreground:
    case Change::Idle:
    case Change::Busy:
        return true;
    default:
        return false;
    }
}

}  // namespace

void ScriptScreen::changed(HWND window, Change change)
{
    if (change == Change::Created)
        addCreated(window);
    if (change == Change::Shown && transcript_.isEnabled())
        addShown(window);
    if (change == Change::Destroyed)
        addGone(window);
    if (!wakes(change))
        return;
    {
        const std::lock_guard guard(mutex_);
        ++changes_;
        if (change == Change::Destroyed && window == firstWindow_)
            firstWindow_ = nullptr;
    }
    more_.notify_all();
}

void ScriptScreen::textChanged(HWND window, std::u16string_view text)
{
    if (!transcript_.isEnabled())
        return;
    for (auto& [top, shown] : shown_) {
        if (top == window) {
            transcript_.add("caption " + shown.caption + " " + quoted(text));
            shown.caption = quoted(text);
            return;
        }
        if (const auto control = shown.controls.find(window); control != shown.controls.end()) {
            transcript_.add("text " + shown.caption + " " + std::to_string(control->second) + " " + quoted(text));
            return;
        }
    }
}

void ScriptScreen::programBegins()
{
    isProgramThread = true;
}

void ScriptScreen::programEnded()
{
    {
        const std::lock_guard guard(mutex_);
        ended_ = true;
        ++changes_;
    }
    more_.notify_all();
}

bool ScriptScreen::hasEnded() const
{
    const std::lock_guard guard(mutex_);
    return ended_;
}

std::uint64_t ScriptScreen::changes() const
{
    const std::lock_guard guard(mutex_);
    return changes_;
}

void ScriptScreen::waitForMore(std::uint64_t seen, std::optional<std::chrono::steady_clock::duration> timeout) const
{
    std::unique_lock lock(mutex_);
    const auto isMore = [&] { return changes_ != seen; };
    if (timeout)
        more_.wait_for(lock, *timeout, isMore);
    else
        more_.wait(lock, isMore);
}

std::optional<WindowState> ScriptScreen::top() const
{
    for (const HWND window : window::topLevelWindows()) {
        WindowState state;
        if (window::readWindow(window, state) && state.visible && state.enabled && isOfProgram(state))
            return state;
    }
    return std::nullopt;
}

std::vector<WindowState> ScriptScreen::progressWindows() const
{
    std::vector<WindowState> windows;
    for (const HWND window : window::topLevelWindows()) {
        WindowState state;
        if (window::readWindow(window, state) && state.visible && !isOfProgram(state))
            windows.push_back(std::move(state));
    }
    return windows;
}

bool ScriptScreen::programIsIdle() const
{
    HWND first = nullptr;
    {
        const std::lock_guard guard(mutex_);
        first = firstWindow_;
    }
    return first && window::takesInput(first);
}

void ScriptScreen::addCreated(HWND window)
{
    const std::optional<Snapshot> snapshot = isProgramThread ? snapshotUnderLock(window) : std::nullopt;
    const std::lock_guard guard(mutex_);
    if (firstWindow_ || !snapshot)
        return;
    firstWindow_ = window;
    programThread_ = snapshot->window.thread;
}

void ScriptScreen::addShown(HWND window)
{
    const std::optional<Snapshot> snapshot = snapshotUnderLock(window);
    if (!snapshot || (snapshot->window.style & WS_CHILD) != 0)
        return;
    if ((snapshot->window.style & WS_VISIBLE) == 0) {
        addGone(window);
        return;
    }
    if (shown_.contains(window))
        return;

    Shown shown;
    shown.caption = quoted(snapshot->window.text);
    if (!isOfProgram(snapshot->window)) {
        shown.kind = "progress";
        for (const WindowState& control : snapshot->controls)
            shown.controls[control.window] = control.id;
    } else if (snapshot->window.kind == WindowKind::MessageBox) {
        shown.kind = "message";
    } else {
        shown.kind = snapshot->window.kind == WindowKind::Main ? "main" : "dialog";
    }
    std::string line = "window " + shown.kind + " " + shown.caption;
    if (shown.kind != "main")
        line += " text " + quoted(textsOf(*snapshot));
    if (shown.kind == "message") {
        const Buttons buttons = buttonsOf(*snapshot);
        line += " buttons " + buttons.all + " default " + buttons.defaultButton;
    }
    transcript_.add(line);
    shown_[window] = std::move(shown);
}

void ScriptScreen::addGone(HWND window)
{
    const auto found = shown_.find(window);
    if (found == shown_.end())
        return;
    transcript_.add("gone " + found->second.kind + " " + found->second.caption);
    shown_.erase(found);
}

bool ScriptScreen::isOfProgram(const WindowState& state) const
{
    const std::lock_guard guard(mutex_);
    return state.thread == programThread_;
}

}  // namespace platform::headless
