#include "controls/control_classes.h"
#include "window/notify.h"

namespace platform::window {

namespace {

LRESULT staticProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    return message == WM_GETDLGCODE ? IsStatic : DefWindowProcW(handle, message, wParam, lParam);
}

}  // namespace

WindowClass staticClass()
{
    return {u"Static", staticProcedure, WindowKind::Static, false, nullptr, 0};
}

}  // namespace platform::window
