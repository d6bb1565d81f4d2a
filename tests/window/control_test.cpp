// Buttons, edits, list boxes and progress bars by their messages and by the user's hand.
#include "controls/list_display.h"
#include "test_user.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace platform::window::test {
namespace {

// A parent that notes what its controls notify, on the test's own thread.
std::vector<int>* gCodes;

LRESULT noting(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_COMMAND && gCodes)
        gCodes->push_back(HIWORD(wParam));
    return DefWindowProcW(window, message, wParam, lParam);
}

class ControlTest : public testing::Test {
protected:
    ControlTest() : parent(makeWindow(windowClass(u"Noting", noting))) { gCodes = &codes; }
    ~ControlTest() override
    {
        gCodes = nullptr;
        DestroyWindow(parent);
    }

    HWND make(const WCHAR* className, DWORD style)
    {
        return CreateWindowExW(0, className, u"", WS_CHILD | WS_VISIBLE | style, 0, 0, 100, 65, parent,
                               reinterpret_cast<HMENU>(std::intptr_t{1}), nullptr, nullptr);
    }

    // A user's key or text, through the queue and the loop, without a dialog.
    void press(HWND control, WPARAM key)
    {
        const MSG message = {control, WM_KEYDOWN, key, 0, 0, {}};
        DispatchMessageW(&message);
        if (TranslateMessage(&message)) {
            MSG character = {};
            GetMessageW(&character, control, WM_CHAR, WM_CHAR);
            DispatchMessageW(&character);
        }
    }

    LRESULT add(HWND box, const std::u16string& text)
    {
        return SendMessageW(box, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
    }
    LRESULT find(HWND box, const std::u16string& text, long after = -1)
    {
        return SendMessageW(box, LB_FINDSTRINGEXACT, static_cast<WPARAM>(after),
                            reinterpret_cast<LPARAM>(text.c_str()));
    }
    std::u16string rows(HWND box)
    {
        std::u16string all;
        for (const ListRow& row : listRows(box))
            all += row.text + (row.selected ? u"* " : u" ");
        return all;
    }

    std::vector<int> codes;
    HWND parent;
};

TEST_F(ControlTest, MessageThatAControlDoesntKnowIsAnsweredWithZeroAndChangesNothing)
{
    for (const WCHAR* name :
         {u"Button", u"sTATIC", u"Edit", u"ListBox", u"msctls_progress32", u"SysTreeView32", u"SysDateTimePick32"}) {
        const HWND control = make(name, 0);
        ASSERT_TRUE(control);
        SetWindowTextW(control, u"text");
        codes.clear();
        for (const UINT message : {BM_GETCHECK, LB_RESETCONTENT, PBM_SETSTEP + 400})
            EXPECT_EQ(SendMessageW(control, message, 0, 0), 0);
        EXPECT_EQ(textOf(control), u"text");
        EXPECT_TRUE(codes.empty());
    }
    EXPECT_EQ(SendMessageW(make(u"Button", BS_AUTOCHECKBOX), LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(u"row")), 0);
}

TEST_F(ControlTest, CheckIsAlreadyNewWhenTheClickIsNotifiedAndMessagesNotifyNothing)
{
    const HWND box = make(u"Button", BS_AUTOCHECKBOX);
    SendMessageW(box, BM_SETCHECK, BST_CHECKED, 0);
    EXPECT_EQ(SendMessageW(box, BM_GETCHECK, 0, 0), 1);
    EXPECT_TRUE(codes.empty());
    SendMessageW(box, BM_CLICK, 0, 0);
    EXPECT_EQ(SendMessageW(box, BM_GETCHECK, 0, 0), 0);
    EXPECT_EQ(codes, std::vector<int>{BN_CLICKED});
    SendMessageW(box, BM_SETCHECK, 5, 0);
    EXPECT_EQ(SendMessageW(box, BM_GETCHECK, 0, 0), 1);
    EnableWindow(box, FALSE);
    SendMessageW(box, BM_CLICK, 0, 0);
    EXPECT_EQ(SendMessageW(box, BM_GETCHECK, 0, 0), 1);
    const HWND frame = make(u"Button", BS_GROUPBOX);
    SendMessageW(frame, BM_SETCHECK, BST_CHECKED, 0);
    EXPECT_EQ(SendMessageW(frame, BM_GETCHECK, 0, 0), 0);
}

TEST_F(ControlTest, ProgressBarStandsAtItsTopAndStartsOverAboveIt)
{
    const HWND bar = make(u"msctls_progress32", 0);
    const auto send = [bar](UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageW(bar, message, wParam, lParam);
    };
    EXPECT_EQ(send(PBM_SETRANGE, 0, static_cast<LPARAM>(MAKELONG(0, 1500))), static_cast<LRESULT>(MAKELONG(0, 100)));
    EXPECT_EQ(send(PBM_SETSTEP, 10), 10);
    EXPECT_EQ(send(PBM_SETPOS, 1490), 0);
    EXPECT_EQ(send(PBM_STEPIT), 1490);
    EXPECT_EQ(send(PBM_GETPOS), 1500);
    EXPECT_EQ(send(PBM_STEPIT), 1500);
    EXPECT_EQ(send(PBM_GETPOS), 0);
    send(PBM_SETSTEP, 0);
    send(PBM_STEPIT);
    EXPECT_EQ(send(PBM_GETPOS), 0);
    send(PBM_SETPOS, 0x7FFFFFFF);
    EXPECT_EQ(send(PBM_GETPOS), 1500);
    send(PBM_SETSTEP, 0x7FFFFFFF);
    send(PBM_STEPIT);
    EXPECT_EQ(send(PBM_GETPOS), 0);
    send(PBM_DELTAPOS, static_cast<WPARAM>(-5));
    EXPECT_EQ(send(PBM_GETPOS), 0);
}

TEST_F(ControlTest, BadIndexIsNeverTakenForARow)
{
    const HWND box = make(u"ListBox", LBS_SORT | LBS_NOTIFY);
    EXPECT_EQ(SendMessageW(box, LB_GETCURSEL, 0, 0), LB_ERR);
    add(box, u"only");
    for (const WPARAM bad : {static_cast<WPARAM>(LB_ERR), WPARAM{1}, WPARAM{0xFFFFFFFF}}) {
        WCHAR text[8] = u"kept";
        EXPECT_EQ(SendMessageW(box, LB_GETSEL, bad, 0), LB_ERR);
        EXPECT_EQ(SendMessageW(box, LB_DELETESTRING, bad, 0), LB_ERR);
        EXPECT_EQ(SendMessageW(box, LB_GETTEXT, bad, reinterpret_cast<LPARAM>(text)), LB_ERR);
        EXPECT_EQ(std::u16string(text), u"kept");
    }
    EXPECT_EQ(SendMessageW(box, LB_GETSEL, 0, 0), 0);
    EXPECT_EQ(SendMessageW(box, LB_SETCURSEL, 0, 0), 0);
    EXPECT_EQ(SendMessageW(box, LB_GETSEL, 0, 0), 1);
    EXPECT_EQ(SendMessageW(box, LB_DELETESTRING, 0, 0), 0);
    EXPECT_EQ(SendMessageW(box, LB_GETCURSEL, 0, 0), LB_ERR);
    EXPECT_TRUE(codes.empty());
}

TEST_F(ControlTest, SortedBoxSaysWhereARowWentAndFindsItWithoutCase)
{
    const HWND box = make(u"ListBox", LBS_SORT);
    EXPECT_EQ(add(box, u"Registry"), 0);
    EXPECT_EQ(add(box, u"File:b"), 0);
    EXPECT_EQ(add(box, u"database:x"), 0);
    EXPECT_EQ(add(box, u"FILE:A"), 1);
    EXPECT_EQ(add(box, u"file:a"), 2);
    EXPECT_EQ(rows(box), u"database:x FILE:A file:a File:b Registry ");
    EXPECT_EQ(find(box, u"File:a"), 1);
    EXPECT_EQ(find(box, u"File:a", 1), 2);
    EXPECT_EQ(find(box, u"File:a", 2), 1);  // round the end
    EXPECT_EQ(find(box, u"registry"), 4);
    EXPECT_EQ(find(box, u"File:"), LB_ERR);  // the whole text
    EXPECT_EQ(findListRow(box, u"file:a"), 2);
    EXPECT_EQ(findListRow(box, u"File:a"), -1);
    const std::u16string inserted = u"zzz";
    EXPECT_EQ(SendMessageW(box, LB_INSERTSTRING, 0, reinterpret_cast<LPARAM>(inserted.c_str())), 0);
    EXPECT_EQ(find(box, u"ZZZ"), 0);
    EXPECT_EQ(find(box, u"registry"), 5);
    EXPECT_EQ(find(box, u"File:a", 2), 3);
}

TEST_F(ControlTest, HundredThousandRowsInAnyOrderAreSortedAndFound)
{
    constexpr long Count = 100000;
    const HWND box = make(u"ListBox", LBS_SORT | LBS_MULTIPLESEL);
    const HWND unsorted = make(u"ListBox", 0);
    const auto text = [](long number) {
        std::u16string digits = u"File:\\Documents and pictures\\000000";
        for (std::size_t at = digits.size() - 1; number != 0; number /= 10, --at)
            digits[at] = static_cast<char16_t>(u'0' + number % 10);
        return digits;
    };
    for (long step = 0; step < Count; ++step) {
        const std::u16string row = text(step * 7919 % Count);  // a prime: each number once
        add(box, row);
        add(unsorted, row);
    }
    SendMessageW(box, LB_SETSEL, TRUE, Count - 1);
    for (long number = 9; number < Count; number += 10) {
        ASSERT_EQ(find(box, text(number)), number);
        ASSERT_EQ(SendMessageW(box, LB_GETSEL, static_cast<WPARAM>(number), 0), number == Count - 1);
        ASSERT_GE(find(unsorted, text(number)), 0);
    }
    EXPECT_EQ(SendMessageW(box, LB_GETSELCOUNT, 0, 0), 1);
}

TEST_F(ControlTest, EachClickTurnsARowOfAMultipleBoxAndMovesThatOfASingleOne)
{
    TestUser user;
    const auto act = [](HWND control, auto post) {
        MSG message = {};
        // The test is both user and owner thread: a timer's end makes the thread take input.
        SetTimer(control, 99, 1, nullptr);
        GetMessageW(&message, control, WM_TIMER, WM_TIMER);
        KillTimer(control, 99);
        ASSERT_TRUE(post());
        ASSERT_TRUE(GetMessageW(&message, control, 0, 0));
        DispatchMessageW(&message);
    };
    const HWND multiple = make(u"ListBox", LBS_SORT | LBS_NOTIFY | LBS_MULTIPLESEL);
    const HWND single = make(u"ListBox", LBS_NOTIFY);
    for (const HWND box : {multiple, single})
        for (const std::u16string name : {u"a", u"b", u"c"})
            add(box, name);
    act(multiple, [&] { return postClick(multiple, 1); });
    act(multiple, [&] { return postClick(multiple, 0); });
    EXPECT_EQ(rows(multiple), u"a* b* c ");
    act(multiple, [&] { return postClick(multiple, 1); });
    act(multiple, [&] { return postClick(multiple, -1); });
    EXPECT_EQ(rows(multiple), u"a* b c ");
    press(multiple, VK_DOWN);
    press(multiple, VK_SPACE);
    press(multiple, VK_DOWN);
    EXPECT_EQ(rows(multiple), u"a* b c* ");
    EXPECT_EQ(codes, std::vector<int>(6, LBN_SELCHANGE));
    EXPECT_EQ(SendMessageW(multiple, LB_GETCURSEL, 0, 0), 2);

    codes.clear();
    act(single, [&] { return postClick(single, 1); });
    press(single, VK_DOWN);
    press(single, VK_DOWN);
    EXPECT_EQ(rows(single), u"a b c* ");
    act(single, [&] { return postDoubleClick(single, 2); });
    EXPECT_EQ(codes, (std::vector<int>{LBN_SELCHANGE, LBN_SELCHANGE, LBN_DBLCLK}));
    press(single, u'B');
    EXPECT_EQ(rows(single), u"a b* c ");
    const std::u16string first = u"0";
    SendMessageW(single, LB_INSERTSTRING, 0, reinterpret_cast<LPARAM>(first.c_str()));
    EXPECT_EQ(SendMessageW(single, LB_GETCURSEL, 0, 0), 2);
}

TEST_F(ControlTest, EditTakesWhatItMayAndNeverCutsACharacter)
{
    const HWND edit = make(u"Edit", ES_AUTOHSCROLL);
    const auto type = [edit](const std::u16string& text) {
        for (const char16_t character : text)
            SendMessageW(edit, WM_CHAR, character, 0);
    };
    SendMessageW(edit, EM_LIMITTEXT, 4, 0);
    type(u"a\rb\u0007cde");
    EXPECT_EQ(textOf(edit), u"abcd");
    EXPECT_EQ(std::ranges::count(codes, EN_MAXTEXT), 1);
    EXPECT_EQ(std::ranges::count(codes, EN_CHANGE), 4);
    SetWindowTextW(edit, u"longer than the limit \U0001F600");
    EXPECT_EQ(GetWindowTextLengthW(edit), 24);
    SendMessageW(edit, EM_SETSEL, 24, 24);
    press(edit, VK_BACK);
    EXPECT_EQ(textOf(edit), u"longer than the limit ");
    SendMessageW(edit, EM_SETSEL, 0, -1);
    press(edit, u'X');
    EXPECT_EQ(textOf(edit), u"x");
    SendMessageW(edit, EM_SETREADONLY, 1, 0);
    press(edit, u'Y');
    press(edit, VK_BACK);
    press(edit, VK_DELETE);
    EXPECT_EQ(textOf(edit), u"x");
    WCHAR text[4] = u"???";
    SetWindowTextW(edit, u"ab\U0001F600");
    EXPECT_EQ(GetWindowTextW(edit, text, 4), 2);
    EXPECT_EQ(std::u16string(text), u"ab");
}

TEST_F(ControlTest, CaretOfAMultiLineEditNeverStandsInsideALineBreak)
{
    const HWND edit = make(u"Edit", ES_MULTILINE);
    SetWindowTextW(edit, u"ab\r\nc");
    EXPECT_TRUE(codes.empty());  // set by the program, many lines: no notice
    SendMessageW(edit, EM_SETSEL, 4, 4);
    press(edit, VK_LEFT);
    EXPECT_EQ(stateOf(edit).selectionEnd, 2);
    press(edit, VK_DOWN);
    EXPECT_EQ(stateOf(edit).selectionEnd, 5);
    press(edit, VK_HOME);
    press(edit, VK_BACK);
    EXPECT_EQ(textOf(edit), u"abc");
    press(edit, VK_RETURN);
    EXPECT_EQ(textOf(edit), u"ab\r\nc");
    EXPECT_EQ(codes, (std::vector<int>{EN_UPDATE, EN_CHANGE, EN_UPDATE, EN_CHANGE}));
}

TEST_F(ControlTest, CounterThatChangesALotReachesTheDisplayAsText)
{
    TestUser user;
    const HWND label = make(u"Static", 0);
    SetWindowTextW(label, u"1");
    SetWindowTextW(label, u"1");  // the same: nothing to show
    SetWindowTextW(label, u"2");
    SetWindowTextW(label, nullptr);
    EXPECT_EQ(user.texts, 3);
    EXPECT_EQ(textOf(label), u"");
}

}  // namespace
}  // namespace platform::window::test
