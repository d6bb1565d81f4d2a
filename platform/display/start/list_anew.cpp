#include "start/list_anew.h"

#include "tree_control/tree_display.h"
#include "window/display.h"

namespace platform::display {

bool listAnew()
{
    for (const HWND top : window::topLevelWindows()) {
        window::WindowState state;
        if (!window::readWindow(top, state) || state.kind != window::WindowKind::Main)
            continue;
        for (const HWND child : window::childrenOf(top)) {
            if (window::readWindow(child, state) && state.kind == window::WindowKind::TreeView)
                return window::postTreeRelist(child);
        }
    }
    return true;
}

}  // namespace platform::display
