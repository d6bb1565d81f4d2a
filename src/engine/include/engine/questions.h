// questions.h - the dialogs before a run and its progress windows. The shell defines them, in the sources that are
// named below, so that the engine doesn't depend on templates and controls. A run opens a progress window by
// gRunQuestions, which also has the questions that it asks while it runs.
#pragma once

#include "set/set_questions.h"
#include "set/texts.h"

#include "ce/window.h"

// The program's instance. Set just before the main window is made (main_window.cpp).
extern HINSTANCE gInstance;

// `kind` of ShowBackupDialog.
inline constexpr WORD FullBackupKind = 1;
inline constexpr WORD SelectedItemsKind = 2;

// Asks for the comment (260 characters). For a full backup it also asks what to include (gFullFiles and so on), for
// selected items it shows them. 1 for OK, 0 for Cancel, which changes nothing. backup_dialogs.cpp
INT_PTR ShowBackupDialog(WORD kind, WCHAR* comment);

// Shows the comment of the loaded set and, unless `mode` is 1, its items to choose from: after OK the lists,
// gRegistryMarked and gRegistryEntry are reduced to those chosen. 1 for OK, 0 for Cancel, which changes nothing.
// restore_dialog.cpp
INT_PTR ShowRestoreDialog(WORD mode, const WCHAR* listPath);

// Fills in what the user should know of a choice, or leaves `detail` empty.
using DescribeChoice = void (*)(const WCHAR* choice, WCHAR (&detail)[TextChars]);

// Lets the user choose from a double-NUL list, where `describe` gives the details. 1 with the chosen text in `result`
// (260 characters; a longer text is cut). 0 if the dialog was left without a choice, and then `result` is unchanged.
// chooser_dialog.cpp
INT_PTR ChooseFromList(HWND owner, const WCHAR* prompt, const WCHAR* choices, WCHAR* result, DescribeChoice describe);

// A progress window, which runs on a thread of its own. progress_window.cpp
// ProgressOpen returns when the window shows its texts. It returns null if no window could be made: with null the other
// calls do nothing, so that a run needs no window.
// ProgressStep, ProgressSetMessage and ProgressSetCount return when the window shows the value. ProgressAnimate and
// ProgressClose return at once. The handle is invalid after ProgressClose. After ProgressAnimate the bar runs to its
// end, and then the window closes.
HWND ProgressOpen(const WCHAR* title, const WCHAR* message, DWORD range, DWORD step);
DWORD ProgressStep(HWND progress, DWORD unused);
DWORD ProgressSetMessage(HWND progress, const WCHAR* text);
DWORD ProgressSetCount(HWND progress, const WCHAR* text);
DWORD ProgressAnimate(HWND progress);
DWORD ProgressClose(HWND progress);
