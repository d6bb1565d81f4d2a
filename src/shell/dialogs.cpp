#include "dialogs.h"

#include "engine/questions.h"

#include "ce/controls.h"
#include "ce/resource.h"

INT_PTR RunDialog(WORD id, HWND owner, DLGPROC procedure, LPARAM parameter)
{
    HRSRC found = FindResourceW(gInstance, MAKEINTRESOURCEW(id), RT_DIALOG);
    const void* dialogTemplate = LoadResource(gInstance, found);
    return DialogBoxIndirectParamW(gInstance, dialogTemplate, owner, procedure, parameter);
}

void HandleAnswer(HWND dialog, UINT message, WPARAM wParam, void (*take)(HWND dialog))
{
    if (message == WM_COMMAND && LOWORD(wParam) == IDOK)
        take(dialog);
    else if ((message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) || message == WM_CLOSE)
        EndDialog(dialog, 0);
}

bool IsChecked(HWND dialog, int id)
{
    return SendDlgItemMessageW(dialog, id, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void SetCheck(HWND dialog, int id, bool checked)
{
    SendDlgItemMessageW(dialog, id, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

INT_PTR AboutDialogProc(HWND dialog, UINT message, WPARAM, LPARAM)
{
    if (message == WM_INITDIALOG)
        return TRUE;
    if (message == WM_COMMAND)
        EndDialog(dialog, 1);
    return FALSE;
}
