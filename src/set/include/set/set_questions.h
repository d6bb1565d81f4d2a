// set_questions.h - what a run asks and shows while it works.
#pragma once

#include "ce/window.h"

// Owner of every window of a run. Null until the main window exists (main_window.cpp of the shell).
extern HWND gMainWindow;

// The functions that a run calls. The program sets them before the first run, and none is null. The window's show
// message boxes and progress windows (run_windows.cpp of the shell), a command's answer by its options.
struct RunQuestions {
    // Whether the set of this list file may be replaced by a new one.
    bool (*mayReplaceSet)(const WCHAR* listPath);
    // Whether a restore may replace this file or database.
    bool (*mayReplaceFile)(const WCHAR* path);
    bool (*mayReplaceDatabase)(const WCHAR* name);
    // Says that the registry was restored.
    void (*showRegistryRestored)();
    // ProgressOpen (engine/questions.h). Null if the run has no progress window.
    HWND (*openProgress)(const WCHAR* title, const WCHAR* message, DWORD range, DWORD step);
};
inline RunQuestions gRunQuestions;

// Shows the wait cursor while a run works. SetCursor(nullptr) removes it.
inline void SetWaitCursor()
{
    SetCursor(LoadCursorW(nullptr, reinterpret_cast<const WCHAR*>(IDC_WAIT)));
}
