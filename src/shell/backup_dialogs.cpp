// backup_dialogs.cpp - dialogs 108 and 109: the comment and the content of a new set.

#include "dialogs.h"
#include "engine/questions.h"
#include "item_rows.h"
#include "set/item_kinds.h"

#include "ce/controls.h"

namespace {

constexpr WORD FullBackupDialog = 108;
constexpr WORD SelectedItemsDialog = 109;

WCHAR* gBackupComment;

// Shows the items in the list box of dialog 109. In dialog 108 a check box has the id of the list box, and ignores the
// messages that add rows. The comment and the check boxes aren't set. So each dialog opens with an empty comment and
// clear boxes, whatever the user chose for the last full backup.
void ShowItems(HWND dialog)
{
    HWND listBox = GetDlgItem(dialog, ItemListBoxId);
    if (!listBox)
        return;
    AddItemRows(listBox);
    SetFocus(GetDlgItem(dialog, CommentId));
}

// Sets the flag to the state of a check box. If the dialog has no control with this id, the flag is unchanged. In
// dialog 109 a list box and a label have two of the ids, so two flags become 0. This has no effect, since only a full
// backup reads the flags.
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
