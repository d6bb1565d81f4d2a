#include "window/images.h"

#include "window/core.h"

#include "ce/controls.h"
#include "ce/resource.h"

#include <optional>

using namespace platform::window;

namespace {

// The upper bits of a handle contain its kind, and the lower 16 bits contain a number. Kinds begin with 1, so no handle
// is null even if its number is 0.
enum class Kind : std::uintptr_t { Icon = 1, Bitmap = 2, ImageList = 3, Cursor = 4, Brush = 5 };

template <class Handle>
Handle makeHandle(Kind kind, std::uintptr_t number)
{
    return reinterpret_cast<Handle>((static_cast<std::uintptr_t>(kind) << 16) | number);
}

// Returns the number in a name that MAKEINTRESOURCEW made, or nothing for any other name. Images in the resources have
// only numbers as names.
std::optional<WORD> numberOf(const WCHAR* name)
{
    const auto number = reinterpret_cast<std::uintptr_t>(name);
    if (number == 0 || number > 0xFFFF)
        return std::nullopt;
    return static_cast<WORD>(number);
}

template <class Handle>
Handle load(Kind kind, WORD type, HINSTANCE instance, const WCHAR* name)
{
    const auto number = numberOf(name);
    if (!number) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return nullptr;
    }
    if (!FindResourceW(instance, name, MAKEINTRESOURCEW(type)))
        return nullptr;
    return makeHandle<Handle>(kind, *number);
}

}  // namespace

namespace platform::window {

WORD resourceIdOf(const void* handle)
{
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    const std::uintptr_t kind = number >> 16;
    const bool known =
        kind >= static_cast<std::uintptr_t>(Kind::Icon) && kind <= static_cast<std::uintptr_t>(Kind::ImageList);
    return known ? static_cast<WORD>(number & 0xFFFF) : WORD{0};
}

bool showsWaitCursor()
{
    const Lock lock(coreMutex);
    return core().waitCursors > 0;
}

}  // namespace platform::window

HICON LoadIconW(HINSTANCE instance, const WCHAR* name)
{
    return load<HICON>(Kind::Icon, RT_GROUP_ICON_ID, instance, name);
}

HANDLE LoadImageW(HINSTANCE instance, const WCHAR* name, UINT type, int, int, UINT)
{
    if (type == IMAGE_ICON)
        return load<HANDLE>(Kind::Icon, RT_GROUP_ICON_ID, instance, name);
    if (type == IMAGE_BITMAP)
        return load<HANDLE>(Kind::Bitmap, RT_BITMAP_ID, instance, name);
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

HIMAGELIST ImageList_LoadImage(HINSTANCE instance, const WCHAR* name, int, int, COLORREF, UINT type, UINT)
{
    if (type == IMAGE_BITMAP)
        return load<HIMAGELIST>(Kind::ImageList, RT_BITMAP_ID, instance, name);
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

HCURSOR LoadCursorW(HINSTANCE instance, const WCHAR* name)
{
    const auto number = numberOf(name);
    if (instance || !number || *number != IDC_WAIT) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return nullptr;
    }
    return makeHandle<HCURSOR>(Kind::Cursor, *number);
}

HCURSOR SetCursor(HCURSOR cursor)
{
    const Lock lock(coreMutex);
    Thread& self = currentThread();
    const HCURSOR before = std::exchange(self.cursor, cursor);
    int& shown = core().waitCursors;
    const bool wasShown = shown > 0;
    shown += (cursor ? 1 : 0) - (before ? 1 : 0);
    if (wasShown != (shown > 0))
        announceGlobal(Change::Cursor);
    return before;
}

HBRUSH GetStockObject(int object)
{
    if (object != WHITE_BRUSH)
        return nullptr;
    return makeHandle<HBRUSH>(Kind::Brush, static_cast<std::uintptr_t>(object));
}
