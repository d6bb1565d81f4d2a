// dialogs.h - functions that the program's dialogs share, and the procedures of the dialogs that the main window opens.
// The functions of engine/questions.h open the other dialogs.
#pragma once

#include "ce/dialog.h"

// Runs dialog `id` of the resources. Returns the value that was passed to EndDialog, or 0 or -1 if the dialog can't be
// shown.
INT_PTR RunDialog(WORD id, HWND owner, DLGPROC procedure, LPARAM parameter);

// Handles the messages of OK, Cancel and the close box for a dialog procedure. For OK it calls take(dialog), which ends
// the dialog if the input is complete. For Cancel and the close box it ends the dialog with the result 0.
void HandleAnswer(HWND dialog, UINT message, WPARAM wParam, void (*take)(HWND dialog));

// The width in pixels to which a list box of paths scrolls. A path can be wider than the list box.
inline constexpr WPARAM PathListExtent = 300;

// The text box of the comment, in the dialogs before a backup or restore.
inline constexpr int CommentId = 1004;

// Sets gRunQuestions to the message boxes and progress windows of the shell. Defined in run_windows.cpp.
void SetRunWindows();

bool IsChecked(HWND dialog, int id);
void SetCheck(HWND dialog, int id, bool checked);

INT_PTR AboutDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
INT_PTR FilterDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);   // filter_dialog.cpp
INT_PTR OptionsDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);  // options_dialog.cpp
