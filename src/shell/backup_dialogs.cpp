// backup_dialogs.cpp - shows the dialog before a backup, in which the user enters the comment of the new set. Before a
// full backup it is dialog 108, in which the user also chooses the kinds of items to back up. Otherwise it is dialog
// 109, which lists the marked items.

#include "dialogs.h"
#include "engine/questions.h"
#include "item_rows.h"
#include "set/item_kinds.h"

#include "ce/controls.h"

namespace {

constexpr WORD FullBackupDialog = 108;
constexpr WORD SelectedItemsDialog = 109;

WCHAR* gBackupComment;

// Shows the items in the list box of dialog 109. This function is called for dialog 108, too. There the control with
// the id of the list box is a check box, which ignores the messages that add rows. The function sets neither the
// comment nor the check boxes. So each dialog opens with an empty comment and clear boxes, whatever the user chose for
// the last full backup.
void ShowItems(HWND dialog)
{
    HWND listBox = GetDlgItem(dialog, ItemListBoxId);
    if (!listBox)
        return;
    AddItemRows(listBox);
    SetFocus(GetDlgItem(dialog, CommentId));
}

// Sets the flag to the state of the check box with this id. If the dialog has no control with this id, the flag is
// unchanged. Dialog 109 has no check boxes. But its list box and one of its labels have the same ids as two check boxes
// of dialog 108, those for databases and for the registry. These two controls never count as checked. So dialog 109
// sets gFullDatabases and gFullRegistry to 0. This has no effect, since only a full backup reads the flags.
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
