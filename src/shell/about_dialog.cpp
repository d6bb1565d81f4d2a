// about_dialog.cpp - the box that tells what the program is.

#include "program.h"

INT_PTR AboutDialogProc(HWND dialog, UINT message, WPARAM, LPARAM)
{
    if (message == WM_INITDIALOG)
        return TRUE;
    if (message == WM_COMMAND)
        EndDialog(dialog, 1);
    return FALSE;
}
