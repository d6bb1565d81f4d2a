// set_questions.h - declares the functions by which a run asks the user and opens windows.
#pragma once

#include "ce/window.h"

// The main window, which owns every window of a run. Null until it exists (shell/main_window.cpp).
extern HWND gMainWindow;

// The functions that a run calls. The program sets all of them before the first run. If the program has a main window,
// the functions show message boxes and progress windows (shell/run_windows.cpp). If the program runs a command instead
// (src/command), it shows no windows, and the functions answer according to the command's options.
struct RunQuestions {
    // Whether the set of this list file may be replaced by a new one.
    bool (*mayReplaceSet)(const WCHAR* listPath);
    // Whether a restore may replace this file or database.
    bool (*mayReplaceFile)(const WCHAR* path);
    bool (*mayReplaceDatabase)(const WCHAR* name);
    // Tells the user that the registry was restored.
    void (*showRegistryRestored)();
    // Opens a progress window (ProgressOpen in engine/questions.h). Returns null if no window could be made, or if the
    // program runs a command.
    HWND (*openProgress)(const WCHAR* title, const WCHAR* message, DWORD range, DWORD step);
};
inline RunQuestions gRunQuestions;

// Shows the wait cursor until SetCursor(nullptr) removes it.
inline void SetWaitCursor()
{
    SetCursor(LoadCursorW(nullptr, reinterpret_cast<const WCHAR*>(IDC_WAIT)));
}
