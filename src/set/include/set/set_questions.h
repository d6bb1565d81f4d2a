// set_questions.h - what restoring a database needs from the shell to ask the user.
#pragma once

#include "set/texts.h"

#include "ce/window.h"

// Owner of every question. Null until the main window exists (main_window.cpp of the shell).
extern HWND gMainWindow;

// Shows the wait cursor while a run works. SetCursor(nullptr) removes it.
inline void SetWaitCursor()
{
    SetCursor(LoadCursorW(nullptr, reinterpret_cast<const WCHAR*>(IDC_WAIT)));
}
