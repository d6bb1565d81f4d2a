// restore_dialog.cpp - shows dialog 109 before a restore, with the comment of the set. For a partial restore, the
// dialog also lists the items of the set, and the user chooses which of them to restore.

#include "dialogs.h"
#include "engine/questions.h"
#include "engine/restore_run.h"
#include "item_rows.h"
#include "set/list_file.h"
#include "set/set_state.h"

#include "ce/controls.h"
#include "ce/text.h"

namespace {

constexpr WORD ItemsDialog = 109;
constexpr int LabelId = 1007;

struct RestoreParams {
    const WCHAR* listPath;
    WORD mode;
};

RestoreParams* gRestoreParams;
WORD gRestoreMode;

bool IsFull()
{
    return gRestoreMode == RestoreFull;
}

void ShowSet(HWND dialog)
{
    if (!IsFull())
        SetDlgItemTextW(dialog, LabelId, LoadText(TextSelectItems, gTextA));
    SendDlgItemMessageW(dialog, CommentId, EM_SETREADONLY, TRUE, 0);
    SetWindowTextW(dialog, LoadText(IsFull() ? TextFullRestore : TextRestoreSelection, gTextA));
    HWND listBox = GetDlgItem(dialog, ItemListBoxId);
    if (IsFull()) {
        ShowWindow(listBox, SW_HIDE);
        ShowWindow(GetDlgItem(dialog, LabelId), SW_HIDE);
    }
    SetDlgItemTextW(dialog, CommentId, gComment);
    if (!IsFull() && listBox)
        AddItemRows(listBox);
}

bool RowIs(HWND listBox, LRESULT row, const WCHAR* text)
{
    WCHAR rowText[RowChars];
    const auto index = static_cast<WPARAM>(row);
    return SendMessageW(listBox, LB_GETTEXTLEN, index, 0) < static_cast<LRESULT>(RowChars) &&
           SendMessageW(listBox, LB_GETTEXT, index, reinterpret_cast<LPARAM>(rowText)) != LB_ERR &&
           lstrcmpW(rowText, text) == 0;
}

// Returns the row that equals the text exactly. The list box searches without regard to case, but two names that differ
// only in case are two items. So this function compares each row that the list box finds with the text. If no row
// equals the text, returns the first row that was found, or LB_ERR if none was found.
LRESULT FindRow(HWND listBox, const WCHAR* text)
{
    const auto search = [&](LRESULT before) {
        return SendMessageW(listBox, LB_FINDSTRINGEXACT, static_cast<WPARAM>(before), reinterpret_cast<LPARAM>(text));
    };
    const LRESULT first = search(-1);
    LRESULT row = first;
    while (row != LB_ERR && !RowIs(listBox, row, text)) {
        row = search(row);
        if (row == first)
            return first;
    }
    return row;
}

bool IsSelected(BYTE kind, const WCHAR* name, void* context)
{
    auto* listBox = static_cast<HWND>(context);
    WCHAR text[RowChars];
    FormatItemRow(text, kind, name);
    const LRESULT row = FindRow(listBox, text);
    return row != LB_ERR && SendMessageW(listBox, LB_GETSEL, static_cast<WPARAM>(row), 0) > 0;
}

// For a partial restore, loads the lists again with the selected entries only. If the list file can no longer be
// opened, the lists keep all entries.
void TakeSelection(HWND dialog)
{
    if (!IsFull())
        LoadList(gRestoreParams->listPath, IsSelected, GetDlgItem(dialog, ItemListBoxId));
    EndDialog(dialog, 1);
}

INT_PTR RestoreDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        gRestoreParams = reinterpret_cast<RestoreParams*>(lParam);
        gRestoreMode = gRestoreParams->mode;
        ShowSet(dialog);
    }
    HandleAnswer(dialog, message, wParam, TakeSelection);
    return FALSE;
}

}  // namespace

INT_PTR ShowRestoreDialog(WORD mode, const WCHAR* listPath)
{
    RestoreParams params = {listPath, mode};
    return RunDialog(ItemsDialog, gMainWindow, RestoreDialogProc, reinterpret_cast<LPARAM>(&params)) == 1;
}
