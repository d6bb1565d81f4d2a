// window_life.h - creates and destroys windows.
#pragma once

#include "window/core.h"

namespace platform::window {

// The arguments of CreateWindowExW, but the texts need no NUL.
struct Creation {
    std::u16string_view className;
    std::u16string_view title;
    DWORD style = 0;
    DWORD exStyle = 0;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    HWND parent = nullptr;  // with WS_CHILD the parent, otherwise the owner
    int id = 0;
    WORD iconId = 0;
    HINSTANCE instance = nullptr;
    void* parameter = nullptr;
    std::unique_ptr<ClassState> state;  // null: the class makes it
};

// The screen of the device, in virtual pixels.
inline constexpr int ScreenWidth = 640;
inline constexpr int ScreenHeight = 480;

// Returns null and sets the last error to 1407 if the class doesn't exist, or to 1400 if `parent` is neither null nor
// the handle of a window. With WS_CHILD the error is also 1400 if `parent` is null, is being destroyed or belongs to
// another thread. Also returns null if WM_CREATE returned -1 or if the window was destroyed during this call.
[[nodiscard]] HWND createWindow(Creation creation) EXCLUDES(coreMutex);

// Destroys the windows in Thread::toDestroy. The mutex is unlocked while their procedures run.
void destroyPending(Thread& self) REQUIRES(coreMutex);

}  // namespace platform::window
