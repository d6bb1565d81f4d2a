// Window classes: those of the program, and the controls', which stand from the start.
#include "control_classes.h"
#include "images.h"
#include "window/core.h"
#include "window_life.h"

#include "text/case_folding.h"

#include "ce/controls.h"

#include <array>

namespace platform::window {

namespace {

// A class is a file of its own, which says all that the others need to know of it.
constexpr std::array BuiltInClasses = {dialogClass,   buttonClass,   staticClass,     editClass,  listBoxClass,
                                       progressClass, treeViewClass, datePickerClass, bandsClass, commandBarClass};

// The classes of the program begin behind those of the core, as their atoms do.
constexpr ATOM FirstAtom = 0xC000;

void registerBuiltIn(Core& all)
{
    if (all.classes.empty())
        for (const auto make : BuiltInClasses)
            all.classes.push_back(make());
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
    const Lock lock = lockCore();
    if (findClass(windowClass->lpszClassName))
        return static_cast<ATOM>(fail(ERROR_CLASS_ALREADY_EXISTS));
    WindowClass added;
    added.name = windowClass->lpszClassName;
    added.procedure = windowClass->lpfnWndProc;
    added.iconId = resourceIdOf(windowClass->hIcon);
    core().classes.push_back(std::move(added));
    return static_cast<ATOM>(FirstAtom + core().classes.size());
}

// All classes stand from the start, so that a dialog with a control that nobody announced comes up too.
BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* classes)
{
    return classes && classes->dwSize == sizeof *classes ? TRUE : fail(ERROR_INVALID_PARAMETER);
}
