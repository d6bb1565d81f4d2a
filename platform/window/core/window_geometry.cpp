#include "window/window_geometry.h"

namespace platform::window {

POINT originOf(const Window& window)
{
    POINT origin{0, 0};
    for (const Window* at = &window; at; at = at->parent) {
        origin.x += at->rectangle.left;
        origin.y += at->rectangle.top;
    }
    return origin;
}

}  // namespace platform::window

using namespace platform::window;

BOOL GetWindowRect(HWND handle, RECT* rectangle)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    if (!window)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const POINT origin = originOf(*window);
    *rectangle = {origin.x, origin.y, origin.x + window->rectangle.right - window->rectangle.left,
                  origin.y + window->rectangle.bottom - window->rectangle.top};
    return TRUE;
}

BOOL ScreenToClient(HWND handle, POINT* point)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    if (!window)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const POINT origin = originOf(*window);
    *point = {point->x - origin.x, point->y - origin.y};
    return TRUE;
}

DWORD GetMessagePos()
{
    const Lock lock(coreMutex);
    const POINT& pointer = currentThread().pointer;
    return MAKELONG(static_cast<WORD>(pointer.x), static_cast<WORD>(pointer.y));
}
