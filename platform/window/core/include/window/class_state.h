// class_state.h - window classes, and what a class adds to each of its windows.
//
// The core treats all windows alike. Where a control, a dialog or the command bands differ, the core asks the window's
// ClassState, so the core needs no header of the rooms above it.
#pragma once

#include "window/display.h"

#include "ce/window.h"

#include <memory>
#include <string>

namespace platform::window {

struct Window;

// What a window holds because of its class. Each control derives its own; a window of the program has this one.
// `window` is always the window that the state is of.
struct ClassState {
    ClassState() = default;
    ClassState(const ClassState&) = delete;
    ClassState& operator=(const ClassState&) = delete;
    virtual ~ClassState() = default;

    // Fills in those fields of `state` that not every window has.
    virtual void describe(const Window& /*window*/, WindowState& /*state*/) const REQUIRES(coreMutex) {}
    // Can the keyboard focus be on it, if its class takes the focus at all?
    virtual bool acceptsFocus(const Window& /*window*/) const REQUIRES(coreMutex) { return true; }
    // Does it edit text? Typed text then arrives as a whole, and handling it never takes long.
    virtual bool editsText() const REQUIRES(coreMutex) { return false; }
    // Is it laid out again when its parent gets a new size? The core then sends it ParentSized (window/input.h).
    virtual bool followsParentSize() const REQUIRES(coreMutex) { return false; }
    // Does it have a disabled button for the command?
    virtual bool disablesCommand(const Window& /*window*/, WORD /*id*/) const REQUIRES(coreMutex) { return false; }

    // Did the dialog manager make it?
    virtual bool isDialog() const REQUIRES(coreMutex) { return false; }
    // Of a dialog: the push button that Enter would press now. Null if there is none.
    virtual const Window* buttonForEnter(const Window& /*window*/) const REQUIRES(coreMutex) { return nullptr; }
    // Of a modal dialog: the window that it disabled, on the first call. Null if there is none.
    [[nodiscard]] virtual HWND takeOwnerToEnable() REQUIRES(coreMutex) { return nullptr; }
};

struct WindowClass {
    std::u16string name;
    WNDPROC procedure = nullptr;
    WindowKind kind = WindowKind::Main;
    bool takesFocus = false;
    std::unique_ptr<ClassState> (*makeState)(DWORD style) = nullptr;  // null: a plain ClassState
    WORD iconId = 0;
};

template <class State>
std::unique_ptr<ClassState> makeStateOf(DWORD)
{
    return std::make_unique<State>();
}

}  // namespace platform::window
