// backup_dialogs.cpp - dialogs 108 and 109: the comment of a new set, and what it will hold.

#include "dialogs.h"
#include "engine/questions.h"
#include "item_rows.h"
#include "set/item_kinds.h"

#include "ce/controls.h"

namespace {

constexpr WORD FullBackupDialog = 108;
constexpr WORD SelectedItemsDialog = 109;

WCHAR* gBackupComment;

// The check boxes are clear at first, whatever the last full backup chose, and the comment is empty. In dialog 108 the
// id of the list box is that of a check box, which ignores the messages that add rows.
void ShowItems(HWND dialog)
{
    HWND listBox = GetDlgItem(dialog, ItemListBoxId);
    if (!listBox)
        return;
    AddItemRows(listBox);
    SetFocus(GetDlgItem(dialog, CommentId));
}

// If the dialog doesn't have the control, the flag stays as it is. In dialog 109 two of the ids are those of a list box
// and a label. They set their flags to 0, which has no effect, since only a full backup reads the flags.
void TakeFlag(HWND dialog, int id, DWORD& flag)
{
    if (HWND box = GetDlgItem(dialog, id))
        flag = SendMessageW(box, BM_GETCHECK, 0, 0) == BST_CHECKED ? 1 : 0;
}

void TakeAnswers(HWND dialog)
{
    for (const ItemKind& kind : ItemKinds)
        TakeFlag(dialog, kind.fullBackupBox, *kind.inFullBackup);
    GetDlgItemTextW(dialog, CommentId, gBackupComment, TextChars);
    EndDialog(dialog, 1);
}

INT_PTR BackupDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        gBackupComment = reinterpret_cast<WCHAR*>(lParam);
        ShowItems(dialog);
    }
    HandleAnswer(dialog, message, wParam, TakeAnswers);
    return FALSE;
}

}  // namespace

INT_PTR ShowBackupDialog(WORD kind, WCHAR* comment)
{
    const WORD dialog = kind == FullBackupKind ? FullBackupDialog : SelectedItemsDialog;
    return RunDialog(dialog, gMainWindow, BackupDialogProc, reinterpret_cast<LPARAM>(comment)) == 1;
}
