// program.h - what the rooms of the shell share: the instance, its windows, the common way to open a dialog.
#pragma once

#include "ce/dialog.h"

extern HWND gMenuBand;
extern HWND gToolBand;

// Runs dialog `id` of the resources: the result of EndDialog, 0 or -1 if it can't be shown.
INT_PTR RunDialog(WORD id, HWND owner, DLGPROC procedure, LPARAM parameter);

INT_PTR AboutDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
INT_PTR FilterDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
INT_PTR OptionsDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// Fills gOptions with what holds before anything was saved.
void SetDefaultOptions();
// From and to the registry. 1 if its key could be opened; otherwise nothing changes.
DWORD LoadOptions();
DWORD SaveOptions();
