#include "window/core.h"
#include "window/images.h"

#include "text/utf.h"

#include <algorithm>

using namespace platform::window;

namespace {

LRESULT giveText(const Window& window, WPARAM capacity, WCHAR* out) REQUIRES(coreMutex)
{
    if (!out || capacity == 0)
        return 0;
    const std::size_t count = platform::text::wholeUnits(window.text, static_cast<std::size_t>(capacity) - 1);
    std::copy_n(window.text.data(), count, out);
    out[count] = 0;
    return static_cast<LRESULT>(count);
}

LRESULT takeIcon(Window& window, WPARAM size, LPARAM icon) REQUIRES(coreMutex)
{
    if (size == ICON_SMALL) {
        window.iconId = resourceIdOf(reinterpret_cast<const void*>(icon));
        announce(window, Change::Icon);
    }
    return 0;
}

}  // namespace

LRESULT DefWindowProcW(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CLOSE) {
        DestroyWindow(handle);
        return 0;
    }
    const Lock lock(coreMutex);
    Window* window = findWindow(handle);
    if (!window)
        return 0;
    switch (message) {
    case WM_SETTEXT: {
        const auto* text = reinterpret_cast<const WCHAR*>(lParam);
        setText(*window, text ? std::u16string_view(text) : std::u16string_view());
        return TRUE;
    }
    case WM_GETTEXT:
        return giveText(*window, wParam, reinterpret_cast<WCHAR*>(lParam));
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(window->text.size());
    case WM_SETICON:
        return takeIcon(*window, wParam, lParam);
    default:
        return 0;
    }
}
