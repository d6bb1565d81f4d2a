// questions.h - declares the dialogs before a run, and the progress windows. src/shell defines these functions, in the
// source files that are named below. So the engine doesn't depend on dialog templates and controls. A run opens its
// progress window through gRunQuestions, which also has the questions that a run asks while it works.
#pragma once

#include "set/set_questions.h"
#include "set/texts.h"

#include "ce/window.h"

// The program's instance. Set before the main window is made (main_window.cpp), or at the beginning of a command
// (begin_command.cpp).
extern HINSTANCE gInstance;

// The values of `kind` of ShowBackupDialog.
inline constexpr WORD FullBackupKind = 1;
inline constexpr WORD SelectedItemsKind = 2;

// Asks for the comment. `comment` has room for 260 characters. For a full backup the dialog also asks what to include
// (gFullFiles and so on). For selected items the dialog shows the items. Returns 1 for OK, 0 for Cancel. Cancel changes
// nothing. Defined in backup_dialogs.cpp.
INT_PTR ShowBackupDialog(WORD kind, WCHAR* comment);

// Shows the comment of the loaded set. If `mode` isn't RestoreFull, the dialog also shows the set's items, from which
// the user chooses. After OK the lists, gRegistryMarked and gRegistryEntry are reduced to the chosen items. Returns 1
// for OK, 0 for Cancel. Cancel changes nothing. Defined in restore_dialog.cpp.
INT_PTR ShowRestoreDialog(WORD mode, const WCHAR* listPath);

// Writes a text that describes a choice into `detail`. The text can be empty.
using DescribeChoice = void (*)(const WCHAR* choice, WCHAR (&detail)[TextChars]);

// Lets the user choose from a double-NUL list: texts with their NULs, then an empty text. `describe` writes the text
// that is shown beside a choice. After a choice, returns 1 and writes the chosen text into `result`. `result` has room
// for 260 characters, and a longer text is cut. If the dialog was left without a choice, returns 0 and leaves `result`
// unchanged. Defined in chooser_dialog.cpp.
INT_PTR ChooseFromList(HWND owner, const WCHAR* prompt, const WCHAR* choices, WCHAR* result, DescribeChoice describe);

// The calls for a progress window, which has a thread of its own. Defined in progress_window.cpp. ProgressOpen returns
// when the window shows its texts. It returns null if no window could be made. The bar of the window runs from 0 to
// `range`, and ProgressStep moves it by `step`. The calls after ProgressOpen do nothing if `progress` is null, so a run
// needs no window. ProgressStep, ProgressSetMessage and ProgressSetCount return when the window shows the change.
// ProgressAnimate and ProgressClose return at once. After ProgressAnimate the bar runs to its end, and then the window
// closes. The handle is invalid after ProgressClose.
HWND ProgressOpen(const WCHAR* title, const WCHAR* message, DWORD range, DWORD step);
DWORD ProgressStep(HWND progress, DWORD unused);
DWORD ProgressSetMessage(HWND progress, const WCHAR* text);
DWORD ProgressSetCount(HWND progress, const WCHAR* text);
DWORD ProgressAnimate(HWND progress);
DWORD ProgressClose(HWND progress);
