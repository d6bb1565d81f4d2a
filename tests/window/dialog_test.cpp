// Dialogs and message boxes, as a user meets them.
#include "test_user.h"

#include <gtest/gtest.h>

namespace platform::window::test {
namespace {

constexpr DWORD Popup = 0x80c808c0;  // caption, system menu, centred, font

// The last command that a test dialog got, and what its procedure does beside.
struct Seen {
    std::vector<int> commands;
    HWND dialog = nullptr;
    INT_PTR initResult = 1;
    std::function<void(HWND)> onInit;
};

Seen* gSeen;

INT_PTR dialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    if (message == WM_INITDIALOG) {
        gSeen->dialog = dialog;
        if (gSeen->onInit)
            gSeen->onInit(dialog);
        return gSeen->initResult;
    }
    if (message == WM_COMMAND) {
        gSeen->commands.push_back(LOWORD(wParam));
        if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL)
            EndDialog(dialog, LOWORD(wParam));
    }
    return FALSE;
}

// Runs a modal dialog on a thread of its own, over a main window of that thread.
class DialogTest : public testing::Test {
protected:
    void open(const std::vector<TestControl>& controls, DWORD style = Popup)
    {
        gSeen = &seen;
        const void* form = makeTemplate(u"Test", controls, style);
        thread_ = std::thread([this, form] {
            const HWND main = makeWindow(windowClass(u"Plain", DefWindowProcW));
            owner = main;
            result = DialogBoxIndirectParamW(nullptr, form, main, dialogProc, 0);
            ownerEnabledAfter = IsWindowEnabled(main);
            focusAfter = GetFocus();
            DestroyWindow(main);
        });
        dialog = user.window(u"Test");
    }

    INT_PTR end()
    {
        thread_.join();
        return result;
    }

    HWND control(int id) { return GetDlgItem(dialog, id); }
    bool focused(int id) { return stateOf(control(id)).focused; }
    void keyUntilFocus(WORD key, int id, bool shift = false)
    {
        user.key(dialog, key, shift);
        user.waitUntil([&] { return takesInput(dialog); });
        EXPECT_TRUE(focused(id)) << id;
    }

    TestUser user;
    Seen seen;
    HWND dialog = nullptr;
    HWND owner = nullptr;
    HWND focusAfter = nullptr;
    BOOL ownerEnabledAfter = FALSE;
    INT_PTR result = -2;

private:
    std::thread thread_;
};

const std::vector<TestControl> EditAndBoxes = {
    {u"Static", u"&Label", -1, 0},
    {u"EDIT", u"", 10, WS_TABSTOP | ES_AUTOHSCROLL},
    {u"BUTTON", u"&Box", 11, WS_TABSTOP | BS_AUTOCHECKBOX},
    {u"BUTTON", u"Hidden by rule", 12, WS_TABSTOP | WS_DISABLED},
    {u"BUTTON", u"&Push", 13, WS_TABSTOP},
};

TEST_F(DialogTest, OwnerIsDisabledMeanwhileAndBackBeforeTheDialogGoes)
{
    open(EditAndBoxes);
    EXPECT_FALSE(IsWindowEnabled(owner));
    EXPECT_FALSE(postCommand(owner, 40003));
    EXPECT_EQ(stateOf(dialog).rectangle.right - stateOf(dialog).rectangle.left, 150);  // 100 units
    EXPECT_EQ(stateOf(control(10)).rectangle.top, 29);                                 // 18 units
    ASSERT_TRUE(postCaptionOk(dialog));
    EXPECT_EQ(end(), IDOK);
    EXPECT_TRUE(ownerEnabledAfter);
    EXPECT_EQ(focusAfter, owner);
}

TEST_F(DialogTest, TabReachesEachControlThatTakesTheKeyboardAndNoOther)
{
    open(EditAndBoxes);
    EXPECT_TRUE(focused(10));
    keyUntilFocus(VK_TAB, 11);
    keyUntilFocus(VK_TAB, 13);
    keyUntilFocus(VK_TAB, 10);
    keyUntilFocus(VK_TAB, 13, true);
    keyUntilFocus(u'L', 10);  // the label's letter means what follows it
    user.key(dialog, VK_ESCAPE);
    EXPECT_EQ(end(), IDCANCEL);
}

// A push button that has it is what Enter presses.
TEST_F(DialogTest, ControlThatLosesTheKeyboardIsAnnouncedToo)
{
    open(EditAndBoxes);
    keyUntilFocus(VK_TAB, 11);
    (void)user.takeFocusChanges();
    keyUntilFocus(VK_TAB, 13);
    EXPECT_TRUE(stateOf(control(13)).defaultButton);
    EXPECT_EQ(user.takeFocusChanges(), (std::set{control(11), control(13)}));
    keyUntilFocus(VK_TAB, 10);
    EXPECT_FALSE(stateOf(control(13)).defaultButton);
    EXPECT_EQ(user.takeFocusChanges(), (std::set{control(13), control(10)}));
    user.key(dialog, VK_ESCAPE);
    EXPECT_EQ(end(), IDCANCEL);
}

TEST_F(DialogTest, FocusThatAScreenReaderGivesIsTheDialogsToo)
{
    open(EditAndBoxes);
    ASSERT_TRUE(postFocus(control(11)));
    user.waitUntil([&] { return takesInput(dialog); });
    EXPECT_TRUE(focused(11));
    EXPECT_EQ(stateOf(control(11)).check, 0);  // no click
    EXPECT_FALSE(postFocus(control(12)));      // disabled
    keyUntilFocus(VK_TAB, 13);
    ASSERT_TRUE(postCaptionOk(dialog));
    EXPECT_EQ(end(), IDOK);
}

TEST_F(DialogTest, EnterPressesTheFocusedButtonThenTheDefaultOneThenOk)
{
    open(EditAndBoxes);
    keyUntilFocus(VK_TAB, 11);
    keyUntilFocus(VK_TAB, 13);
    user.key(dialog, VK_RETURN);
    user.key(dialog, VK_SPACE);
    keyUntilFocus(VK_TAB, 10);
    user.key(dialog, VK_RETURN);  // no default button, none with the id: OK all the same
    EXPECT_EQ(end(), IDOK);
    EXPECT_EQ(seen.commands, (std::vector<int>{13, 13, IDOK}));
}

TEST_F(DialogTest, DefaultButtonIsPressedFromAnEditAndNotWhileItIsDisabled)
{
    open({{u"EDIT", u"", 10, WS_TABSTOP | ES_AUTOHSCROLL},
          {u"BUTTON", u"Go", 20, WS_TABSTOP | BS_DEFPUSHBUTTON},
          {u"BUTTON", u"Stop", IDCANCEL, WS_TABSTOP | WS_DISABLED}});
    EXPECT_TRUE(stateOf(control(20)).defaultButton);
    user.key(dialog, VK_RETURN);
    user.key(dialog, VK_ESCAPE);  // Cancel is disabled
    user.waitUntil([&] { return takesInput(dialog); });
    EnableWindow(control(20), FALSE);
    user.key(dialog, VK_RETURN);
    user.waitUntil([&] { return takesInput(dialog); });
    EXPECT_EQ(seen.commands, (std::vector<int>{20}));
    ASSERT_TRUE(postCaptionOk(dialog));
    EXPECT_EQ(end(), IDOK);
}

TEST_F(DialogTest, MultiLineEditKeepsEnterAndLetsTabGo)
{
    open({{u"EDIT", u"", 10, WS_TABSTOP | ES_MULTILINE | ES_WANTRETURN},
          {u"BUTTON", u"Box", 11, WS_TABSTOP | BS_AUTOCHECKBOX}});
    user.type(control(10), u"one\ntwo");
    user.key(control(10), VK_RETURN);
    user.type(control(10), u"\u00e9");
    user.waitUntil([&] { return textOf(control(10)) == u"one\r\ntwo\r\n\u00e9"; });
    keyUntilFocus(VK_TAB, 11);
    keyUntilFocus(VK_TAB, 10);
    user.key(dialog, VK_ESCAPE);
    EXPECT_EQ(end(), IDCANCEL);
}

TEST_F(DialogTest, DisablingTheFocusedControlHandsTheKeyboardOn)
{
    seen.onInit = [](HWND dialog) {
        SetFocus(GetDlgItem(dialog, 11));
        EnableWindow(GetDlgItem(dialog, 11), FALSE);
        SetFocus(GetDlgItem(dialog, 12));  // disabled: would swallow the keyboard
    };
    seen.initResult = 0;
    open(EditAndBoxes);
    EXPECT_TRUE(focused(13));
    ASSERT_TRUE(postClose(dialog));
    EXPECT_EQ(end(), IDCANCEL);
}

TEST_F(DialogTest, ArrowsMoveAndCheckInTheGroupAndTabFindsTheCheckedOne)
{
    seen.onInit = [](HWND dialog) { SendDlgItemMessageW(dialog, 22, BM_SETCHECK, BST_CHECKED, 0); };
    seen.initResult = 0;
    open({{u"BUTTON", u"Box", 20, WS_TABSTOP | WS_GROUP | BS_AUTOCHECKBOX},
          {u"BUTTON", u"A", 21, WS_GROUP | BS_AUTORADIOBUTTON},
          {u"BUTTON", u"B", 22, BS_AUTORADIOBUTTON},
          {u"BUTTON", u"C", 23, WS_DISABLED | BS_AUTORADIOBUTTON},
          {u"BUTTON", u"Frame", -1, BS_GROUPBOX},
          {u"BUTTON", u"Next", 24, WS_GROUP | WS_TABSTOP}});
    EXPECT_TRUE(focused(20));
    keyUntilFocus(VK_TAB, 22);
    keyUntilFocus(VK_DOWN, 21);  // over the disabled one and the frame, round the end of the group
    EXPECT_EQ(stateOf(control(21)).check, 1);
    EXPECT_EQ(stateOf(control(22)).check, 0);
    keyUntilFocus(VK_TAB, 24);
    keyUntilFocus(VK_TAB, 20);
    keyUntilFocus(VK_TAB, 21);             // the tab stop went with the check
    EXPECT_FALSE(postClick(control(23)));  // disabled
    ASSERT_TRUE(postCaptionOk(dialog));
    EXPECT_EQ(end(), IDOK);
}

TEST_F(DialogTest, QuitEndsTheDialogAndReachesTheLoopOutside)
{
    gSeen = &seen;
    const void* form = makeTemplate(u"Quitting", EditAndBoxes, Popup);
    seen.onInit = [](HWND) { PostQuitMessage(4); };
    const HWND main = makeWindow(windowClass(u"Plain", DefWindowProcW));
    EXPECT_EQ(DialogBoxIndirectParamW(nullptr, form, main, dialogProc, 0), 0);
    EXPECT_FALSE(IsWindow(seen.dialog));
    EXPECT_TRUE(IsWindowEnabled(main));
    MSG message = {};
    EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.wParam, 4U);
    DestroyWindow(main);
}

TEST_F(DialogTest, EndingWhileItIsInitializedNeverShowsIt)
{
    gSeen = &seen;
    const void* form = makeTemplate(u"Ended", EditAndBoxes, Popup);
    seen.onInit = [](HWND dialog) { EndDialog(dialog, 77); };
    EXPECT_EQ(DialogBoxIndirectParamW(nullptr, form, nullptr, dialogProc, 0), 77);
    EXPECT_FALSE(IsWindow(seen.dialog));
}

// Private messages of a program have the numbers of the dialog manager's own.
TEST_F(DialogTest, PrivateMessagesThatLookLikeTheManagersDoNoHarm)
{
    gSeen = &seen;
    const void* form = makeTemplate(u"Private", EditAndBoxes, Popup);
    const HWND dialog = CreateDialogIndirectParamW(nullptr, form, nullptr, dialogProc, 0);
    ASSERT_TRUE(dialog);
    EXPECT_FALSE(IsWindowVisible(dialog));  // no WS_VISIBLE
    SendMessageW(dialog, DM_SETDEFID, 0, 0);
    EXPECT_EQ(SendMessageW(dialog, DM_GETDEFID, 0, 0), 0);
    SendMessageW(dialog, DM_REPOSITION, 0, 0);
    EXPECT_FALSE(EndDialog(dialog, 1));  // not modal
    EXPECT_TRUE(DestroyWindow(dialog));
}

TEST_F(DialogTest, WhatCantBeMadeFailsWholeAndGivesTheOwnerBack)
{
    gSeen = &seen;
    const HWND main = makeWindow(windowClass(u"Plain", DefWindowProcW));
    const void* unknown = makeTemplate(u"Unknown", {{u"NoSuchControl", u"", 1, 0}}, Popup);
    EXPECT_EQ(DialogBoxIndirectParamW(nullptr, unknown, main, dialogProc, 0), -1);
    EXPECT_TRUE(IsWindowEnabled(main));
    const int notATemplate = 0;
    EXPECT_EQ(DialogBoxIndirectParamW(nullptr, &notATemplate, main, dialogProc, 0), -1);
    EXPECT_EQ(DialogBoxIndirectParamW(nullptr, unknown, reinterpret_cast<HWND>(9), dialogProc, 0), 0);
    EXPECT_TRUE(topLevelWindows().size() == 1);
    DestroyWindow(main);
}

struct BoxCase {
    UINT type;
    std::function<void(TestUser&, HWND)> action;
    int answer;
};

TEST_F(DialogTest, MessageBoxAnswersWhatWasChosenAndRefusesWhenItIsClosed)
{
    const auto key = [](WORD virtualKey) {
        return [virtualKey](TestUser& user, HWND box) { user.key(box, virtualKey); };
    };
    const auto close = [](TestUser&, HWND box) { ASSERT_TRUE(postClose(box)); };
    const auto press = [](int id) { return [id](TestUser& user, HWND box) { user.click(GetDlgItem(box, id)); }; };
    const std::vector<BoxCase> cases = {
        {MB_OK, key(VK_RETURN), IDOK},
        {MB_OK, key(VK_ESCAPE), IDOK},
        {MB_OK, close, IDOK},
        {MB_YESNO, key(VK_RETURN), IDYES},
        {MB_YESNO | MB_DEFBUTTON2, key(VK_RETURN), IDNO},
        {MB_YESNO, key(VK_ESCAPE), IDNO},
        {MB_YESNO, close, IDNO},
        {MB_YESNO, key(u'N'), IDNO},
        {MB_YESNO | MB_ICONQUESTION, press(IDYES), IDYES},
        {MB_YESNOCANCEL, close, IDCANCEL},
        {MB_ABORTRETRYIGNORE, key(VK_ESCAPE), IDABORT},
        {MB_RETRYCANCEL, key(VK_ESCAPE), IDCANCEL},
    };
    for (const BoxCase& each : cases) {
        SCOPED_TRACE(each.type);
        int answer = -1;
        std::thread asker([&] { answer = MessageBoxW(nullptr, u"File a&b exists ?", nullptr, each.type); });
        const HWND box = user.window(u"Error");
        EXPECT_EQ(stateOf(box).kind, WindowKind::MessageBox);
        EXPECT_EQ(stateOf(box).messageBoxType, each.type);
        each.action(user, box);
        asker.join();
        EXPECT_EQ(answer, each.answer);
    }
    EXPECT_EQ(MessageBoxW(reinterpret_cast<HWND>(5), u"", u"", MB_OK), 0);
}

}  // namespace
}  // namespace platform::window::test
