// notify.h - messages from a control to its parent, and the answers to WM_GETDLGCODE.
#pragma once

#include "window/core.h"

namespace platform::window {

// Sends WM_COMMAND with the control's id and the code to the parent.
void notifyCommand(HWND control, WORD code) EXCLUDES(coreMutex);
// Sends WM_NOTIFY to the parent and returns the parent's answer, or 0 without a parent. `header` is the first field of
// the notification's structure. The caller sets the code in it, and this function sets the window and the id.
LRESULT notifyParent(HWND control, NMHDR& header) EXCLUDES(coreMutex);

// The bits of the answer to WM_GETDLGCODE.
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
