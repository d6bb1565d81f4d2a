#include "window/window_class.h"

#include "window/core.h"
#include "window/images.h"

#include "text/case_folding.h"

#include "ce/controls.h"

#include <utility>

namespace platform::window {

namespace {

// Classes get their atoms in the order of registration. The built-in classes are registered first.
constexpr ATOM FirstAtom = 0xC000;

void registerBuiltIn(Core& all) REQUIRES(coreMutex)
{
    if (!all.classes.empty())
        return;
    for (WindowClass& builtIn : builtInClasses())
        all.classes.push_back(std::move(builtIn));
}

}  // namespace

const WindowClass* findClass(std::u16string_view name)
{
    Core& all = core();
    registerBuiltIn(all);
    for (const WindowClass& known : all.classes)
        if (text::compareWithoutCase(known.name, name) == 0)
            return &known;
    return nullptr;
}

}  // namespace platform::window

using namespace platform::window;

ATOM RegisterClassW(const WNDCLASSW* windowClass)
{
    if (!windowClass || !windowClass->lpfnWndProc || !windowClass->lpszClassName || !*windowClass->lpszClassName)
        return static_cast<ATOM>(fail(ERROR_INVALID_PARAMETER));
    const Lock lock(coreMutex);
    if (findClass(windowClass->lpszClassName))
        return static_cast<ATOM>(fail(ERROR_CLASS_ALREADY_EXISTS));
    WindowClass added;
    added.name = windowClass->lpszClassName;
    added.procedure = windowClass->lpfnWndProc;
    added.iconId = resourceIdOf(windowClass->hIcon);
    core().classes.push_back(std::move(added));
    return static_cast<ATOM>(FirstAtom + core().classes.size());
}

// Registers nothing, because the classes of all controls exist from the start. So a dialog opens even if the program
// hasn't called this function.
BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* classes)
{
    return classes && classes->dwSize == sizeof *classes ? TRUE : fail(ERROR_INVALID_PARAMETER);
}
