// notify.h - what controls tell their parents.
#pragma once

#include "window/core.h"

namespace platform::window {

// WM_COMMAND with the control's id and the code.
void notifyCommand(HWND control, WORD code) EXCLUDES(coreMutex);
// WM_NOTIFY. `header` is the first field of whatever the notification carries; its window and id are
// filled in here.
LRESULT notifyParent(HWND control, NMHDR& header) EXCLUDES(coreMutex);

// What WM_GETDLGCODE answers.
inline constexpr LRESULT WantsArrows = 1;       // DLGC_WANTARROWS
inline constexpr LRESULT WantsTab = 2;          // DLGC_WANTTAB
inline constexpr LRESULT WantsAllKeys = 4;      // DLGC_WANTALLKEYS
inline constexpr LRESULT HasSelection = 8;      // DLGC_HASSETSEL
inline constexpr LRESULT IsPushButton = 0x20;   // DLGC_UNDEFPUSHBUTTON
inline constexpr LRESULT IsRadioButton = 0x40;  // DLGC_RADIOBUTTON
inline constexpr LRESULT WantsCharacters = 0x80;
inline constexpr LRESULT IsStatic = 0x100;
inline constexpr LRESULT IsButton = 0x2000;

}  // namespace platform::window
