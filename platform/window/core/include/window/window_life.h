// window_life.h - how windows come and go, for the core's other files.
#pragma once

#include "window/core.h"

namespace platform::window {

// What CreateWindowExW takes, with texts that are bounded and a class by name.
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

// Where windows of their own size stand: virtual pixels.
inline constexpr int ScreenWidth = 640;
inline constexpr int ScreenHeight = 480;

// Null with 1407, 1400 or what WM_CREATE refused.
[[nodiscard]] HWND createWindow(Creation creation) EXCLUDES(coreMutex);

// Destroys the windows in Thread::toDestroy. The mutex is free while their procedures run.
void destroyPending(Thread& self) REQUIRES(coreMutex);

}  // namespace platform::window
