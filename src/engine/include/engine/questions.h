// questions.h - what the runs ask of the shell: texts, dialogs, progress windows. The shell defines it all, so that
// the runs know nothing of templates and controls.
#pragma once

#include "set/set_questions.h"

#include "ce/window.h"

// The program's instance; set just before the main window is made.
extern HINSTANCE gInstance;

// Asks for the comment (260 characters) and, with kind 1, for what a full backup covers; kind 2 lists the marked items.
// 1 for OK, 0 for Cancel, which changes nothing.
INT_PTR ShowBackupDialog(WORD kind, WCHAR* comment);

// Shows the loaded set's comment. Mode 1: all of the set; any other: on OK the lists, gRegistryMarked and
// gRegistryEntry hold only what the user picked. 1 for OK, 0 for Cancel, which changes nothing.
INT_PTR ShowRestoreDialog(WORD mode, const WCHAR* listPath);

// A modal list over a double-NUL list. 1 with the chosen row's text in `result` (260 characters; a longer text is cut),
// 0 when it was left without a choice: `result` is untouched.
INT_PTR ChooseFromList(HWND owner, const WCHAR* prompt, const WCHAR* choices, WCHAR* result);

// A progress window on a thread of its own. Open returns when the window has taken its texts; null if none could be
// made: every other call then does nothing, so that a run goes on without one.
// Step, SetMessage and SetCount return when the window has taken the value. Animate and Close return at once; the
// handle is dead after Close, and after Animate the window closes itself when its bar has run out.
HWND ProgressOpen(const WCHAR* title, const WCHAR* message, DWORD range, DWORD step);
DWORD ProgressStep(HWND progress, DWORD unused);
DWORD ProgressSetMessage(HWND progress, const WCHAR* text);
DWORD ProgressSetCount(HWND progress, const WCHAR* text);
DWORD ProgressAnimate(HWND progress);
DWORD ProgressClose(HWND progress);
