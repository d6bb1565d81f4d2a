// class_state.h - the description of a window class, and the data and behaviour that a class adds to its windows.
//
// The window core contains no code for particular classes. Where the behaviour depends on the class, the window core
// calls a virtual function of the window's ClassState. So the window core includes no headers of the controls and
// dialogs.
#pragma once

#include "window/display.h"

#include "ce/window.h"

#include <memory>
#include <string>

namespace platform::window {

struct Window;

// The data that a window has because of its class. Controls and dialogs derive their own structs from this one. A
// window whose class the program registered has a plain ClassState. The parameter `window` is always the window to
// which the state belongs.
struct ClassState {
    ClassState() = default;
    ClassState(const ClassState&) = delete;
    ClassState& operator=(const ClassState&) = delete;
    virtual ~ClassState() = default;

    // Sets those fields of `state` that depend on the data of this class.
    virtual void describe(const Window& /*window*/, WindowState& /*state*/) const REQUIRES(coreMutex) {}
    // Can this window have the keyboard focus? Called only if WindowClass::takesFocus is true.
    virtual bool acceptsFocus(const Window& /*window*/) const REQUIRES(coreMutex) { return true; }
    // Does the window edit text? The window core sends typed text to such a window in one message. Typing into the
    // window never starts long work, such as a backup.
    virtual bool editsText() const REQUIRES(coreMutex) { return false; }
    // Must the window be laid out again when its parent gets a new size? If so, the window core sends the message
    // ParentSized (window/input.h) to the window.
    virtual bool followsParentSize() const REQUIRES(coreMutex) { return false; }
    // Does the window contain a disabled toolbar button for the command?
    virtual bool disablesCommand(const Window& /*window*/, WORD /*id*/) const REQUIRES(coreMutex) { return false; }

    // Did the dialog manager create the window?
    virtual bool isDialog() const REQUIRES(coreMutex) { return false; }
    // Returns the push button of a dialog that Enter would press now, or null if there is none.
    virtual const Window* buttonForEnter(const Window& /*window*/) const REQUIRES(coreMutex) { return nullptr; }
    // Returns the window that a modal dialog disabled when it opened. The caller must enable that window. Returns null
    // if the dialog disabled none, and in every call after the first.
    [[nodiscard]] virtual HWND takeOwnerToEnable() REQUIRES(coreMutex) { return nullptr; }
};

struct WindowClass {
    std::u16string name;
    WNDPROC procedure = nullptr;
    WindowKind kind = WindowKind::Main;
    bool takesFocus = false;
    std::unique_ptr<ClassState> (*makeState)(DWORD style) = nullptr;  // null: windows get a plain ClassState
    WORD iconId = 0;
};

template <class State>
std::unique_ptr<ClassState> makeStateOf(DWORD)
{
    return std::make_unique<State>();
}

}  // namespace platform::window
