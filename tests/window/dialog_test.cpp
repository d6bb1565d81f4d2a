// Dialogs and message boxes, driven by the user's keys and clicks.
#include "test_user.h"

#include "ce/outcome.h"

#include <gtest/gtest.h>

namespace platform::window::test {
namespace {

// What a test dialog received, and what its procedure does when it is initialized.
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

const std::vector<TestControl> EditAndBoxes = {
    {u"Static", u"&Label", -1, 0},
    {u"EDIT", u"", 10, WS_TABSTOP | ES_AUTOHSCROLL},
    {u"BUTTON", u"&Box", 11, WS_TABSTOP | BS_AUTOCHECKBOX},
    {u"BUTTON", u"Disabled", 12, WS_TABSTOP | WS_DISABLED},
    {u"BUTTON", u"&Push", 13, WS_TABSTOP},
};

class DialogTest : public testing::Test {
protected:
    DialogTest() { gSeen = &seen; }

    // Runs a modal dialog on a thread of its own, over a main window of that thread.
    void open(const std::vector<TestControl>& controls = EditAndBoxes)
    {
        const void* dialogTemplate = makeTemplate(u"Test", controls);
        thread_ = std::thread([this, dialogTemplate] {
            owner = makeWindow(windowClass(u"Plain", DefWindowProcW));
            result = DialogBoxIndirectParamW(nullptr, dialogTemplate, owner, dialogProc, 0);
            ownerEnabledAfter = IsWindowEnabled(owner);
            focusAfter = GetFocus();
            DestroyWindow(owner);
        });
        dialog = user.window(u"Test");
    }
    // Runs a modal dialog on this thread.
    static INT_PTR run(const std::vector<TestControl>& controls, HWND owner)
    {
        return DialogBoxIndirectParamW(nullptr, makeTemplate(u"Test", controls), owner, dialogProc, 0);
    }
    INT_PTR end()
    {
        thread_.join();
        return result;
    }
    INT_PTR pressOk()
    {
        EXPECT_TRUE(postCaptionOk(dialog));
        return end();
    }
    INT_PTR pressEscape()
    {
        user.key(dialog, VK_ESCAPE);
        return end();
    }

    HWND control(int id) { return GetDlgItem(dialog, id); }
    bool focused(int id) { return stateOf(control(id)).focused; }
    void rest()
    {
        user.waitUntil([&] { return takesInput(dialog); });
    }
    struct Move {
        WORD key;
        int id;  // the control with the focus after the key
        bool shift = false;
    };
    void keysMoveTheFocus(const std::vector<Move>& moves)
    {
        for (const auto& [key, id, shift] : moves) {
            user.key(dialog, key, shift);
            rest();
            EXPECT_TRUE(focused(id)) << id;
        }
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

TEST_F(DialogTest, OwnerIsDisabledWhileTheDialogIsOpenAndGetsTheFocusBack)
{
    open();
    EXPECT_FALSE(IsWindowEnabled(owner));
    EXPECT_FALSE(postCommand(owner, 40003));
    EXPECT_EQ(stateOf(dialog).rectangle.right - stateOf(dialog).rectangle.left, 150);  // 100 units
    EXPECT_EQ(stateOf(control(10)).rectangle.top, 29);                                 // 18 units
    EXPECT_EQ(pressOk(), IDOK);
    EXPECT_TRUE(ownerEnabledAfter);
    EXPECT_EQ(focusAfter, owner);
}

TEST_F(DialogTest, FocusReachesEachEnabledControlAndItsChangeIsAnnouncedForBothControls)
{
    open();
    EXPECT_TRUE(focused(10));
    // The letter of a label moves the focus to the next control.
    keysMoveTheFocus({{VK_TAB, 11}, {VK_TAB, 13}, {VK_TAB, 10}, {VK_TAB, 13, true}, {u'L', 10}, {VK_TAB, 11}});
    (void)user.takeFocusChanges();
    keysMoveTheFocus({{VK_TAB, 13}});
    EXPECT_TRUE(stateOf(control(13)).defaultButton);
    EXPECT_EQ(user.takeFocusChanges(), (std::set{control(11), control(13)}));
    keysMoveTheFocus({{VK_TAB, 10}});
    EXPECT_FALSE(stateOf(control(13)).defaultButton);
    EXPECT_EQ(user.takeFocusChanges(), (std::set{control(13), control(10)}));

    // A screen reader sets the focus without a click.
    ASSERT_TRUE(postFocus(control(11)));
    rest();
    EXPECT_TRUE(focused(11));
    EXPECT_EQ(stateOf(control(11)).check, 0);
    EXPECT_FALSE(postFocus(control(12)));  // disabled
    EXPECT_EQ(pressEscape(), IDCANCEL);
}

TEST_F(DialogTest, EnterPressesTheFocusedButtonOrElseOk)
{
    open();
    keysMoveTheFocus({{VK_TAB, 11}, {VK_TAB, 13}});
    user.key(dialog, VK_RETURN);
    user.key(dialog, VK_SPACE);
    keysMoveTheFocus({{VK_TAB, 10}});
    user.key(dialog, VK_RETURN);  // the dialog has neither a default button nor one with the id of OK
    EXPECT_EQ(end(), IDOK);
    EXPECT_EQ(seen.commands, (std::vector<int>{13, 13, IDOK}));
}

TEST_F(DialogTest, DefaultButtonIsPressedFromAnEditUnlessItIsDisabled)
{
    open({{u"EDIT", u"", 10, WS_TABSTOP | ES_AUTOHSCROLL},
          {u"BUTTON", u"Go", 20, WS_TABSTOP | BS_DEFPUSHBUTTON},
          {u"BUTTON", u"Stop", IDCANCEL, WS_TABSTOP | WS_DISABLED}});
    EXPECT_TRUE(stateOf(control(20)).defaultButton);
    user.key(dialog, VK_RETURN);
    user.key(dialog, VK_ESCAPE);  // Cancel is disabled
    rest();
    EnableWindow(control(20), FALSE);
    user.key(dialog, VK_RETURN);
    rest();
    EXPECT_EQ(seen.commands, (std::vector<int>{20}));
    EXPECT_EQ(pressOk(), IDOK);
}

TEST_F(DialogTest, EnterInAMultiLineEditPressesOkWithCtrlOrIfTheTextIsReadOnly)
{
    for (const bool readOnly : {false, true}) {
        open({{u"EDIT", u"", 10, WS_TABSTOP | ES_MULTILINE | ES_WANTRETURN | (readOnly ? ES_READONLY : 0)}});
        user.key(control(10), VK_RETURN, false, !readOnly);
        EXPECT_EQ(end(), IDOK);
    }
}

TEST_F(DialogTest, DisablingTheFocusedControlMovesTheFocusOn)
{
    seen.onInit = [](HWND dialog) {
        SetFocus(GetDlgItem(dialog, 11));
        EnableWindow(GetDlgItem(dialog, 11), FALSE);
        SetFocus(GetDlgItem(dialog, 12));  // it is disabled, so it can't get the focus
    };
    seen.initResult = 0;
    open();
    EXPECT_TRUE(focused(13));
    ASSERT_TRUE(postClose(dialog));
    EXPECT_EQ(end(), IDCANCEL);
}

TEST_F(DialogTest, ArrowsMoveAndCheckInTheGroupAndTabFindsTheCheckedButton)
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
    // Down skips the disabled button and the frame, and continues at the top of the group.
    keysMoveTheFocus({{VK_TAB, 22}, {VK_DOWN, 21}});
    EXPECT_EQ(stateOf(control(21)).check, 1);
    EXPECT_EQ(stateOf(control(22)).check, 0);
    keysMoveTheFocus({{VK_TAB, 24}, {VK_TAB, 20}, {VK_TAB, 21}});
    EXPECT_FALSE(postClick(control(23)));  // disabled
    EXPECT_EQ(pressOk(), IDOK);
}

TEST_F(DialogTest, DialogThatEndsWhileItIsInitializedIsNeverShown)
{
    const HWND main = makeWindow(windowClass(u"Plain", DefWindowProcW));
    seen.onInit = [](HWND dialog) { EndDialog(dialog, 77); };
    EXPECT_EQ(run(EditAndBoxes, nullptr), 77);
    EXPECT_FALSE(IsWindow(seen.dialog));

    seen.onInit = [](HWND) { PostQuitMessage(4); };
    EXPECT_EQ(run(EditAndBoxes, main), 0);
    EXPECT_FALSE(IsWindow(seen.dialog));
    EXPECT_TRUE(IsWindowEnabled(main));
    MSG message = {};
    EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);  // the outer loop receives WM_QUIT, too
    EXPECT_EQ(message.wParam, 4U);
    DestroyWindow(main);
}

TEST_F(DialogTest, DialogThatCannotBeMadeLeavesNoWindowAndEnablesItsOwner)
{
    const HWND main = makeWindow(windowClass(u"Plain", DefWindowProcW));
    const std::vector<TestControl> unknown = {{u"NoSuchControl", u"", 1, 0}};
    EXPECT_EQ(run(unknown, main), -1);
    EXPECT_TRUE(IsWindowEnabled(main));
    const int notATemplate = 0;
    EXPECT_EQ(DialogBoxIndirectParamW(nullptr, &notATemplate, main, dialogProc, 0), -1);
    EXPECT_EQ(run(unknown, reinterpret_cast<HWND>(9)), 0);
    EXPECT_EQ(topLevelWindows(), std::vector{main});
    DestroyWindow(main);
}

TEST_F(DialogTest, MessageBoxReturnsTheButtonPressedAndIsClosedOnlyIfThatIsAnAnswer)
{
    using Action = std::function<void(HWND)>;
    const auto key = [this](WORD virtualKey) -> Action { return [=, this](HWND box) { user.key(box, virtualKey); }; };
    const Action close = [](HWND box) { ASSERT_TRUE(postClose(box)); };
    const Action refuse = [](HWND box) { ASSERT_TRUE(postRefusal(box)); };
    // Neither the close box nor Esc answers this box.
    const Action mustChoose = [this](HWND box) {
        EXPECT_FALSE(postClose(box));
        SendMessageW(box, WM_CLOSE, 0, 0);
        user.key(box, VK_ESCAPE);
        user.key(box, VK_RETURN);
    };
    const std::tuple<UINT, Action, int> cases[] = {
        {MB_OK, key(VK_RETURN), IDOK},
        {MB_OK, key(VK_ESCAPE), IDOK},
        {MB_OK, close, IDOK},
        {MB_YESNO, key(VK_RETURN), IDYES},
        {MB_YESNO | MB_DEFBUTTON2, key(VK_RETURN), IDNO},
        {MB_YESNO, mustChoose, IDYES},
        {MB_YESNO, refuse, IDNO},
        {MB_YESNO, key(u'N'), IDNO},
        {MB_YESNO | MB_ICONQUESTION, [this](HWND box) { user.click(GetDlgItem(box, IDYES)); }, IDYES},
        {MB_YESNOCANCEL, close, IDCANCEL},
        {MB_ABORTRETRYIGNORE | MB_DEFBUTTON2, mustChoose, IDRETRY},
        {MB_ABORTRETRYIGNORE, refuse, IDABORT},
        {MB_RETRYCANCEL, key(VK_ESCAPE), IDCANCEL},
    };
    for (const auto& [type, action, expected] : cases) {
        SCOPED_TRACE(type);
        std::future<int> answer = std::async(
            std::launch::async, [type = type] { return MessageBoxW(nullptr, u"File a&b exists ?", nullptr, type); });
        const HWND box = user.window(u"Error");
        EXPECT_EQ(stateOf(box).kind, WindowKind::MessageBox);
        EXPECT_EQ(stateOf(box).messageBoxType, type);
        action(box);
        EXPECT_EQ(answer.get(), expected);
    }
    EXPECT_EQ(MessageBoxW(reinterpret_cast<HWND>(5), u"", u"", MB_OK), 0);
}

TEST_F(DialogTest, AnswerToAllOfAKindHoldsForItsJobAndAStoppedJobAsksNothing)
{
    const auto ask = [this](const WCHAR* text, const std::function<bool(HWND)>& act = nullptr) {
        std::future<int> answer =
            std::async(std::launch::async, [text] { return MessageBoxW(nullptr, text, u"Warning", MB_YESNO); });
        if (act) {
            const HWND box = user.window(u"Warning");
            EXPECT_TRUE(stateOf(box).jobQuestion);
            EXPECT_TRUE(act(box));
        }
        return answer.get();
    };
    const auto all = [](int id) { return [id](HWND box) { return postAnswerToAll(box, id); }; };
    const auto no = [](HWND box) { return postRefusal(box); };
    BeginJob();
    EXPECT_EQ(ask(u"File:\\a exists", all(IDYES)), IDYES);
    EXPECT_EQ(ask(u"File:\\b exists"), IDYES);
    EXPECT_EQ(ask(u"Database:a exists", all(IDNO)), IDNO);
    EXPECT_EQ(ask(u"File:\\c exists"), IDYES);
    EXPECT_EQ(ask(u"Override \\Card\\1 file", no), IDNO);
    EXPECT_EQ(ask(u"Override \\Card\\2 file", no), IDNO);
    EndJob(nullptr);

    BeginJob();
    EXPECT_FALSE(JobIsToStop());
    EXPECT_EQ(ask(u"File:\\a exists", [](HWND box) { return postStopJob(box, false); }), IDNO);
    EXPECT_TRUE(JobIsToStop());
    EXPECT_EQ(ask(u"Database:a exists"), IDNO);
    EndJob(nullptr);
    std::future<int> later = std::async(std::launch::async, [] { return MessageBoxW(nullptr, u"?", u"x", MB_YESNO); });
    const HWND box = user.window(u"x");
    EXPECT_FALSE(stateOf(box).jobQuestion);
    EXPECT_TRUE(postAnswerToAll(box, IDYES));
    EXPECT_EQ(later.get(), IDYES);
}

}  // namespace
}  // namespace platform::window::test
