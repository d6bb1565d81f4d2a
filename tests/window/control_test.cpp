// Buttons, edits, list boxes and progress bars, driven by messages and by the user.
#include "controls/list_display.h"
#include "test_user.h"
#include "window/input.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <tuple>

namespace platform::window::test {
namespace {

// The notification codes that the parent received from its controls.
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

    // Sends a user's key or text through the queue and the message loop, without a dialog.
    void press(HWND control, WPARAM key, LPARAM modifiers = 0)
    {
        const MSG message = {control, WM_KEYDOWN, key, modifiers, 0, {}};
        DispatchMessageW(&message);
        if (TranslateMessage(&message)) {
            MSG character = {};
            GetMessageW(&character, control, WM_CHAR, WM_CHAR);
            DispatchMessageW(&character);
        }
    }

    LRESULT add(HWND box, const std::u16string& text) { return send(box, LB_ADDSTRING, 0, text.c_str()); }
    LRESULT find(HWND box, const std::u16string& text, long after = -1)
    {
        return send(box, LB_FINDSTRINGEXACT, static_cast<WPARAM>(after), text.c_str());
    }
    std::u16string rows(HWND box)
    {
        std::u16string all;
        for (const ListRow& row : listRows(box))
            all += row.text + (row.selected ? u"* " : u" ");
        return all;
    }

    LRESULT check(HWND button) { return send(button, BM_GETCHECK); }

    std::vector<int> codes;
    HWND parent;
};

TEST_F(ControlTest, MessageForAnotherControlIsAnsweredWithZeroAndChangesNothing)
{
    for (const WCHAR* name :
         {u"Button", u"sTATIC", u"Edit", u"ListBox", u"msctls_progress32", u"SysTreeView32", u"SysDateTimePick32"}) {
        const HWND control = make(name, 0);
        ASSERT_TRUE(control);
        SetWindowTextW(control, u"text");
        codes.clear();
        for (const UINT message : {BM_GETCHECK, LB_RESETCONTENT, PBM_SETSTEP + 400})
            EXPECT_EQ(send(control, message), 0);
        EXPECT_EQ(textOf(control), u"text");
        EXPECT_TRUE(codes.empty());
    }
    EXPECT_EQ(add(make(u"Button", BS_AUTOCHECKBOX), u"row"), 0);
}

TEST_F(ControlTest, ClickIsNotifiedAfterTheCheckHasChangedAndMessagesAreNotNotified)
{
    const HWND box = make(u"Button", BS_AUTOCHECKBOX);
    send(box, BM_SETCHECK, BST_CHECKED);
    EXPECT_EQ(check(box), 1);
    EXPECT_TRUE(codes.empty());
    send(box, BM_CLICK);
    EXPECT_EQ(check(box), 0);
    EXPECT_EQ(codes, std::vector<int>{BN_CLICKED});
    send(box, BM_SETCHECK, 5);
    EXPECT_EQ(check(box), 1);
    EnableWindow(box, FALSE);
    send(box, BM_CLICK);
    EXPECT_EQ(check(box), 1);
    const HWND frame = make(u"Button", BS_GROUPBOX);
    send(frame, BM_SETCHECK, BST_CHECKED);
    EXPECT_EQ(check(frame), 0);
}

TEST_F(ControlTest, ProgressBarStopsAtItsTopAndStartsOverWithTheNextStep)
{
    const HWND bar = make(u"msctls_progress32", 0);
    EXPECT_EQ(SendMessageW(bar, PBM_SETRANGE, 0, static_cast<LPARAM>(MAKELONG(0, 1500))),
              static_cast<LRESULT>(MAKELONG(0, 100)));
    const std::tuple<UINT, WPARAM, LRESULT, LRESULT> steps[] = {
        {PBM_SETSTEP, 10, 10, 0},       {PBM_SETPOS, 1490, 0, 1490},
        {PBM_STEPIT, 0, 1490, 1500},    {PBM_STEPIT, 0, 1500, 0},
        {PBM_SETSTEP, 0, 10, 0},        {PBM_STEPIT, 0, 0, 0},
        {PBM_SETPOS, INT_MAX, 0, 1500}, {PBM_SETSTEP, INT_MAX, 0, 1500},
        {PBM_STEPIT, 0, 1500, 0},       {PBM_DELTAPOS, static_cast<WPARAM>(-5), 0, 0},
    };
    for (const auto& [message, value, answer, position] : steps) {
        EXPECT_EQ(send(bar, message, value), answer) << message << " " << value;
        EXPECT_EQ(send(bar, PBM_GETPOS), position) << message << " " << value;
    }
}

TEST_F(ControlTest, BadIndexIsNeverTakenForARow)
{
    const HWND box = make(u"ListBox", LBS_SORT | LBS_NOTIFY);
    add(box, u"only");
    WCHAR text[8] = u"kept";
    for (const WPARAM bad : {static_cast<WPARAM>(LB_ERR), WPARAM{1}, WPARAM{0xFFFFFFFF}})
        for (const UINT message : {LB_GETSEL, LB_DELETESTRING, LB_GETTEXT})
            EXPECT_EQ(send(box, message, bad, text), LB_ERR);
    EXPECT_EQ(std::u16string(text), u"kept");
    EXPECT_EQ(send(box, LB_GETSEL, 0), 0);
    EXPECT_EQ(send(box, LB_SETCURSEL, 0), 0);
    EXPECT_EQ(send(box, LB_GETSEL, 0), 1);
    EXPECT_EQ(send(box, LB_DELETESTRING, 0), 0);
    EXPECT_EQ(send(box, LB_GETCURSEL), LB_ERR);
    EXPECT_TRUE(codes.empty());
}

TEST_F(ControlTest, SortedBoxReturnsWhereARowWentAndFindsItWithoutCase)
{
    const HWND box = make(u"ListBox", LBS_SORT);
    for (const auto& [text, row] :
         {std::pair{u"Registry", 0}, {u"File:b", 0}, {u"database:x", 0}, {u"FILE:A", 1}, {u"file:a", 2}})
        EXPECT_EQ(add(box, text), row);
    EXPECT_EQ(rows(box), u"database:x FILE:A file:a File:b Registry ");
    EXPECT_EQ(find(box, u"File:a"), 1);
    EXPECT_EQ(find(box, u"File:a", 1), 2);
    EXPECT_EQ(find(box, u"File:a", 2), 1);  // the search continues at the top
    EXPECT_EQ(find(box, u"registry"), 4);
    EXPECT_EQ(find(box, u"File:"), LB_ERR);  // the search compares the whole text
    EXPECT_EQ(findListRow(box, u"file:a"), 2);
    EXPECT_EQ(findListRow(box, u"File:a"), -1);
    EXPECT_EQ(send(box, LB_INSERTSTRING, 0, u"zzz"), 0);
    EXPECT_EQ(find(box, u"ZZZ"), 0);
    EXPECT_EQ(find(box, u"registry"), 5);
    EXPECT_EQ(find(box, u"File:a", 2), 3);
}

TEST_F(ControlTest, HundredThousandRowsInAnyOrderAreSortedAndFound)
{
    constexpr WPARAM Count = 100000;
    const auto text = [](WPARAM number) {
        const std::string digits = std::to_string(Count + number);
        return u"File:\\Documents and pictures\\" + std::u16string(digits.begin(), digits.end());
    };
    const HWND box = make(u"ListBox", LBS_SORT | LBS_MULTIPLESEL);
    const HWND unsorted = make(u"ListBox", 0);
    for (WPARAM step = 0; step < Count; ++step)
        for (const HWND each : {box, unsorted})
            add(each, text(step * 7919 % Count));  // 7919 is a prime, so each number comes once
    send(box, LB_SETSEL, TRUE, reinterpret_cast<void*>(Count - 1));
    for (WPARAM number = 99; number < Count; number += 100) {
        ASSERT_EQ(find(box, text(number)), static_cast<LRESULT>(number));
        ASSERT_EQ(send(box, LB_GETSEL, number), number == Count - 1);
        ASSERT_GE(find(unsorted, text(number)), 0);
    }
    EXPECT_EQ(send(box, LB_GETSELCOUNT), 1);
}

TEST_F(ControlTest, EachClickTogglesARowOfAMultipleBoxAndMovesTheSelectionOfASingleOne)
{
    TestUser user;
    const auto act = [](HWND control, auto post) {
        MSG message = {};
        // This thread is both the user and the owner of the window, and takes input once it waits for a message.
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
    for (const auto& click : {std::pair{1, u"a b* c "}, {0, u"a* b* c "}, {1, u"a* b c "}, {-1, u"a* b c "}}) {
        act(multiple, [&] { return postClick(multiple, click.first); });
        EXPECT_EQ(rows(multiple), click.second);
    }
    press(multiple, VK_DOWN);
    press(multiple, VK_SPACE);
    press(multiple, VK_DOWN);
    EXPECT_EQ(rows(multiple), u"a* b c* ");
    EXPECT_EQ(codes, std::vector<int>(6, LBN_SELCHANGE));
    EXPECT_EQ(send(multiple, LB_GETCURSEL), 2);

    codes.clear();
    act(single, [&] { return postClick(single, 1); });
    press(single, VK_DOWN);
    press(single, VK_DOWN);
    EXPECT_EQ(rows(single), u"a b c* ");
    act(single, [&] { return postDoubleClick(single, 2); });
    EXPECT_EQ(codes, (std::vector<int>{LBN_SELCHANGE, LBN_SELCHANGE, LBN_DBLCLK}));
    press(single, u'B');
    EXPECT_EQ(rows(single), u"a b* c ");
    send(single, LB_INSERTSTRING, 0, u"0");
    EXPECT_EQ(send(single, LB_GETCURSEL), 2);
}

TEST_F(ControlTest, KeysSelectManyRowsOfAMultipleBoxAndTypedTextFindsARow)
{
    const HWND box = make(u"ListBox", LBS_NOTIFY | LBS_MULTIPLESEL);
    for (const std::u16string name : {u"File:a", u"File:To b", u"File:To c", u"Registry"})
        add(box, name);
    const auto extend = [&](WPARAM key) {
        press(box, key, KeyWithShift);
        return rows(box);
    };
    press(box, VK_DOWN);
    press(box, VK_DOWN);
    EXPECT_EQ(extend(VK_END), u"File:a File:To b* File:To c* Registry* ");
    EXPECT_EQ(extend(VK_UP), u"File:a File:To b* File:To c* Registry ");
    EXPECT_EQ(extend(VK_HOME), u"File:a* File:To b* File:To c Registry ");
    press(box, u'A', KeyWithControl);
    EXPECT_EQ(send(box, LB_GETSELCOUNT), 4);
    press(box, u'A', KeyWithControl | KeyWithShift);
    EXPECT_EQ(send(box, LB_GETSELCOUNT), 0);

    const auto caretAfter = [&](std::u16string_view typed) {
        for (const char16_t letter : typed)
            send(box, WM_CHAR, letter);
        return send(box, LB_GETCURSEL);
    };
    EXPECT_EQ(caretAfter(u"to c"), 2);
    press(box, VK_DOWN);
    EXPECT_EQ(caretAfter(u"file:to b"), 1);
    EXPECT_EQ(caretAfter(u" "), 1);
    EXPECT_EQ(rows(box), u"File:a File:To b* File:To c Registry ");
}

TEST_F(ControlTest, EditKeepsItsLimitAndNeverCutsACharacter)
{
    const HWND edit = make(u"Edit", ES_AUTOHSCROLL);
    const auto type = [edit](const std::u16string& text) {
        for (const char16_t character : text)
            SendMessageW(edit, WM_CHAR, character, 0);
    };
    send(edit, EM_LIMITTEXT, 4);
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
    send(edit, EM_SETREADONLY, 1);
    for (const WPARAM key : {WPARAM{u'Y'}, WPARAM{VK_BACK}, WPARAM{VK_DELETE}})
        press(edit, key);
    EXPECT_EQ(textOf(edit), u"x");
    WCHAR text[4] = u"???";
    SetWindowTextW(edit, u"ab\U0001F600");
    EXPECT_EQ(GetWindowTextW(edit, text, 4), 2);
    EXPECT_EQ(std::u16string(text), u"ab");
}

TEST_F(ControlTest, CaretOfAMultiLineEditIsNeverInsideALineBreak)
{
    const HWND edit = make(u"Edit", ES_MULTILINE);
    SetWindowTextW(edit, u"ab\r\nc");
    EXPECT_TRUE(codes.empty());  // no notification when the program sets the text of a multi-line edit
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

}  // namespace
}  // namespace platform::window::test
