// options_dialog.cpp - shows dialog 111, in which the user changes all settings except showRomFiles and the filter.

#include "dialogs.h"
#include "engine/options.h"

#include "ce/controls.h"
#include "ce/text.h"

namespace {

constexpr int DeleteBackedUpId = 1022;
constexpr int GenerateLogId = 1026;
constexpr int MaxBackupSizeId = 1027;
constexpr int VerifyBackupId = 1028;
// The ids of the radio buttons are the values of restoreMode.
constexpr WORD RestoreModes[] = {RestoreModeReplace, RestoreModeSkip, RestoreModeAsk};

void ShowOptions(HWND dialog)
{
    if (gOptions.deleteBackedUp)
        SetCheck(dialog, DeleteBackedUpId, true);
    if (gOptions.generateLog)
        SetCheck(dialog, GenerateLogId, true);
    if (gOptions.verifyBackup)
        SetCheck(dialog, VerifyBackupId, true);
    WCHAR size[MAX_PATH];
    wsprintfW(size, u"%d", gOptions.maxBackupSizeMb);
    SetDlgItemTextW(dialog, MaxBackupSizeId, size);
    // The registry can have another value for restoreMode, such as the id of a check box. In that case no button is
    // checked.
    for (const WORD mode : RestoreModes) {
        if (mode == gOptions.restoreMode)
            SetCheck(dialog, mode, true);
    }
}

void TakeOptions(HWND dialog)
{
    gOptions.deleteBackedUp = IsChecked(dialog, DeleteBackedUpId) ? 1 : 0;
    gOptions.generateLog = IsChecked(dialog, GenerateLogId) ? 1 : 0;
    gOptions.verifyBackup = IsChecked(dialog, VerifyBackupId) ? 1 : 0;
    WCHAR size[MAX_PATH];
    GetDlgItemTextW(dialog, MaxBackupSizeId, size, MAX_PATH);
    gOptions.maxBackupSizeMb = static_cast<WORD>(_wtol(size));
    for (const WORD mode : RestoreModes) {
        if (IsChecked(dialog, mode))
            gOptions.restoreMode = mode;
    }
}

}  // namespace

INT_PTR OptionsDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    if (message == WM_INITDIALOG) {
        ShowOptions(dialog);
    } else if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
        TakeOptions(dialog);
        EndDialog(dialog, 1);
    } else if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) {
        EndDialog(dialog, 0);
    }
    return FALSE;
}
