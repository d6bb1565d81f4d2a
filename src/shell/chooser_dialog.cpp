// chooser_dialog.cpp - shows dialog 107, a list of texts from which the user chooses one.

#include "dialogs.h"
#include "engine/questions.h"

#include "ce/controls.h"
#include "ce/text.h"

#include <vector>

namespace {

constexpr WORD ChooserDialog = 107;
constexpr int PromptId = 1002;
constexpr int ChoicesId = 1003;

struct ChooserParams {
    const WCHAR* choices;  // each text ends with a NUL, and the list with another
    WCHAR* result;
    const WCHAR* prompt;
    DescribeChoice describe;
};

ChooserParams* gChooserParams;

void AddChoiceWithDetail(HWND dialog, const WCHAR* choice)
{
    const LRESULT row = SendDlgItemMessageW(dialog, ChoicesId, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(choice));
    WCHAR detail[TextChars];
    gChooserParams->describe(choice, detail);
    SendDlgItemMessageW(dialog, ChoicesId, LB_SETROWDETAIL, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(detail));
}

void ShowChoices(HWND dialog)
{
    SendDlgItemMessageW(dialog, ChoicesId, LB_SETHORIZONTALEXTENT, PathListExtent, 0);
    for (const WCHAR* choice = gChooserParams->choices; *choice; choice += wcslen(choice) + 1)
        AddChoiceWithDetail(dialog, choice);
    SetDlgItemTextW(dialog, PromptId, gChooserParams->prompt);
}

void TakeChoice(HWND dialog)
{
    const LRESULT row = SendDlgItemMessageW(dialog, ChoicesId, LB_GETCURSEL, 0, 0);
    if (row == LB_ERR) {
        MessageBoxW(dialog, LoadText(TextNothingSelected, gTextA), nullptr, MB_OK);
        return;
    }
    const auto index = static_cast<WPARAM>(row);
    std::vector<WCHAR> text(static_cast<std::size_t>(SendDlgItemMessageW(dialog, ChoicesId, LB_GETTEXTLEN, index, 0)) +
                            1);
    SendDlgItemMessageW(dialog, ChoicesId, LB_GETTEXT, index, reinterpret_cast<LPARAM>(text.data()));
    CopyText(gChooserParams->result, MAX_PATH, text.data());
    EndDialog(dialog, 1);
}

INT_PTR ChooserDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        gChooserParams = reinterpret_cast<ChooserParams*>(lParam);
        ShowChoices(dialog);
    }
    HandleAnswer(dialog, message, wParam, TakeChoice);
    return FALSE;
}

}  // namespace

INT_PTR ChooseFromList(HWND owner, const WCHAR* prompt, const WCHAR* choices, WCHAR* result, DescribeChoice describe)
{
    ChooserParams params = {choices, result, prompt, describe};
    return RunDialog(ChooserDialog, owner, ChooserDialogProc, reinterpret_cast<LPARAM>(&params)) == 1;
}
