// window_life.h - creating and destroying windows.
#pragma once

#include "window/core.h"

namespace platform::window {

// The arguments of CreateWindowExW, with texts that need no NUL.
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
    std::unique_ptr<ClassState> state;  // null: as the class makes it
};

// The screen of the device, in virtual pixels.
inline constexpr int ScreenWidth = 640;
inline constexpr int ScreenHeight = 480;

// Null with the last error: 1407 no such class, 1400 no such parent or one of another thread. Null as well if WM_CREATE
// answered -1 or the window was destroyed meanwhile.
[[nodiscard]] HWND createWindow(Creation creation) EXCLUDES(coreMutex);

// Destroys the windows in Thread::toDestroy. The mutex is free while their procedures run.
void destroyPending(Thread& self) REQUIRES(coreMutex);

}  // namespace platform::window
