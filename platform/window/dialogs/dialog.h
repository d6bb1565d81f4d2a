// dialog.h - opens dialogs whose templates have been read.
#pragma once

#include "dialog_template.h"
#include "window/core_mutex.h"

#include "ce/dialog.h"

namespace platform::window {

struct DialogLaunch {
    DialogTemplate layout;  // positions and sizes in dialog units, unless inPixels
    bool inPixels = false;
    HINSTANCE instance = nullptr;
    HWND owner = nullptr;
    DLGPROC procedure = nullptr;
    LPARAM parameter = 0;
    bool messageBox = false;
    UINT messageBoxType = 0;
    std::u16string questionKind;  // job_questions.h
};

// Runs the dialog until EndDialog and returns the result that was passed to EndDialog. Returns -1 if the dialog
// couldn't be made, and 0 if it ended without EndDialog.
INT_PTR runModal(const DialogLaunch& launch) EXCLUDES(coreMutex);
// Returns null and sets the last error if the dialog couldn't be made.
[[nodiscard]] HWND openModeless(const DialogLaunch& launch) EXCLUDES(coreMutex);

}  // namespace platform::window
