// dialog_launch.h - opening dialogs from a template that is read already.
#pragma once

#include "dialog_template.h"
#include "window/core.h"

namespace platform::window {

struct DialogLaunch {
    DialogTemplate form;  // places in dialog units, unless inPixels
    bool inPixels = false;
    HINSTANCE instance = nullptr;
    HWND owner = nullptr;
    DLGPROC procedure = nullptr;
    LPARAM parameter = 0;
    bool messageBox = false;
    UINT messageBoxType = 0;
};

// Without the lock.

// Until EndDialog; its value. -1 if the dialog couldn't be made, 0 if it went some other way.
INT_PTR runModal(const DialogLaunch& launch);
[[nodiscard]] HWND openModeless(const DialogLaunch& launch);

// The push button that Enter would press now: the focused one, otherwise the default one. Null if there is
// none. Needs the lock.
[[nodiscard]] Window* buttonForEnter(Window& dialog);

[[nodiscard]] Window* findControl(Window& dialog, int id);  // needs the lock

}  // namespace platform::window
