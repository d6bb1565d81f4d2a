// dialogs.h - what the program's dialogs share, and the procedures of those that the main window opens. The other
// dialogs are opened by the functions of engine/questions.h.
#pragma once

#include "ce/dialog.h"

// Runs dialog `id` of the resources. Returns the result of EndDialog, or 0 or -1 if it can't be shown.
INT_PTR RunDialog(WORD id, HWND owner, DLGPROC procedure, LPARAM parameter);

// For a dialog procedure: OK calls take(dialog), which ends the dialog when it has what it needs; Cancel and the close
// box end it with 0.
void HandleAnswer(HWND dialog, UINT message, WPARAM wParam, void (*take)(HWND dialog));

// Width to which a list box of paths scrolls, in pixels: a path can be wider than the box.
inline constexpr WPARAM PathListExtent = 300;

// The text box of the comment, in the dialogs that choose a set.
inline constexpr int CommentId = 1004;

// Lets the runs ask and show by the windows of the shell. run_windows.cpp
void SetRunWindows();

bool IsChecked(HWND dialog, int id);
void SetCheck(HWND dialog, int id, bool checked);

INT_PTR AboutDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
INT_PTR FilterDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);   // filter_dialog.cpp
INT_PTR OptionsDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);  // options_dialog.cpp
