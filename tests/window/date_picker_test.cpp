#include "controls/date_display.h"
#include "test_user.h"
#include "window/input.h"

#include "time/clock.h"

#include "ce/date_picker.h"

#include <gtest/gtest.h>

namespace {

using namespace platform::window;
using namespace platform::window::test;

constexpr SYSTEMTIME dateOf(WORD year, WORD month, WORD day)
{
    return {year, month, 0, day, 10, 20, 30, 0};
}

class DatePickerTest : public testing::Test {
protected:
    DatePickerTest()
    {
        platform::time::setShortDateFormat(u"dd/MM/yyyy");
        platform::time::stopClockAt(dateOf(2026, 3, 5));
        running = this;
        parent = makeWindow(windowClass(u"DateParent", procedure));
        picker = CreateWindowExW(0, u"SysDateTimePick32", nullptr, WS_CHILD | WS_VISIBLE, 0, 0, 80, 20, parent,
                                 reinterpret_cast<HMENU>(INT_PTR{1024}), nullptr, nullptr);
    }
    ~DatePickerTest() override
    {
        DestroyWindow(parent);
        platform::time::resumeClock();
        platform::time::setShortDateFormat({});
    }

    LRESULT set(SYSTEMTIME date, WPARAM valid = GDT_VALID) const
    {
        return send(picker, DTM_SETSYSTEMTIME, valid, &date);
    }
    SYSTEMTIME get() const
    {
        SYSTEMTIME date = {};
        EXPECT_EQ(send(picker, DTM_GETSYSTEMTIME, 0, &date), 0);
        return date;
    }
    std::string shown() const
    {
        const SYSTEMTIME date = get();
        return std::to_string(date.wYear) + "-" + std::to_string(date.wMonth) + "-" + std::to_string(date.wDay);
    }
    std::string after(std::initializer_list<WORD> keys) const
    {
        for (const WORD key : keys)
            send(picker, WM_KEYDOWN, key);
        return shown();
    }
    std::string typed(std::u16string_view digits) const
    {
        for (const char16_t digit : digits)
            send(picker, WM_CHAR, digit);
        return shown();
    }
    std::string choose(WORD year, WORD month, WORD day) const
    {
        SendMessageW(picker, InputDate, MAKELONG(month, year), day);
        return shown();
    }

    HWND parent = nullptr;
    HWND picker = nullptr;
    int changes = 0;

private:
    static LRESULT procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message == WM_NOTIFY) {
            const auto& change = *reinterpret_cast<const NMDATETIMECHANGE*>(lParam);
            EXPECT_EQ(change.nmhdr.code, DTN_DATETIMECHANGE);
            EXPECT_EQ(change.st.wDay, running->get().wDay);
            running->changes++;
        }
        return DefWindowProcW(window, message, wParam, lParam);
    }
    static DatePickerTest* running;
};
DatePickerTest* DatePickerTest::running = nullptr;

TEST_F(DatePickerTest, DateThatTheProgramSetsIsNotNotifiedAndAnImpossibleOneIsRefused)
{
    EXPECT_EQ(shown(), "2026-3-5");
    EXPECT_NE(set(dateOf(2024, 2, 29)), 0);
    EXPECT_EQ(get().wDayOfWeek, 4);  // calculated, since the caller gave 0
    EXPECT_EQ(get().wHour, 10);
    EXPECT_EQ(set(dateOf(2023, 2, 29)), 0);
    EXPECT_EQ(set(dateOf(2023, 13, 1)), 0);
    EXPECT_EQ(set(dateOf(2023, 1, 1), 1), 0);
    EXPECT_EQ(shown(), "2024-2-29");
    SetFocus(picker);
    EXPECT_EQ(changes, 0);
}

TEST_F(DatePickerTest, KeysStepWithinTheCurrentField)
{
    set(dateOf(2024, 1, 31));
    EXPECT_EQ(after({VK_UP}), "2024-1-1");  // after the last day comes the first
    EXPECT_EQ(after({VK_DOWN}), "2024-1-31");
    EXPECT_EQ(after({VK_RIGHT, VK_UP}), "2024-2-29");  // the day is limited to the month's last
    EXPECT_EQ(after({VK_RIGHT, VK_SUBTRACT}), "2023-2-28");
    EXPECT_EQ(changes, 4);
    EXPECT_EQ(after({VK_RIGHT, VK_HOME}), "2023-2-1");
    EXPECT_EQ(after({VK_LEFT, VK_LEFT, VK_END}), "2023-12-1");
    EXPECT_EQ(changes, 6);
    after({VK_END, VK_RETURN, VK_F4});  // nothing changes
    EXPECT_EQ(changes, 6);
}

TEST_F(DatePickerTest, DigitsAreTypedIntoTheField)
{
    set(dateOf(2024, 5, 9));
    for (const auto& [digits, expected] : {std::pair{u"1", "2024-5-1"}, {u"5", "2024-5-15"}, {u"07", "2024-5-7"}})
        EXPECT_EQ(typed(digits), expected);
    EXPECT_EQ(typed(u"99"), "2024-5-9");  // there is no day 99, so the second digit has no effect
    after({VK_RIGHT});
    EXPECT_EQ(typed(u"12"), "2024-12-9");
    after({VK_RIGHT});
    changes = 0;
    EXPECT_EQ(typed(u"199"), "2024-12-9");
    EXPECT_EQ(typed(u"8"), "1998-12-9");
    EXPECT_EQ(changes, 1);
    typed(u"x");
    EXPECT_EQ(changes, 1);
}

TEST_F(DatePickerTest, ChosenDayKeepsTheTimeOfDayAndADisabledPickerItsDate)
{
    set(dateOf(2024, 5, 9));
    EXPECT_EQ(choose(2026, 11, 24), "2026-11-24");
    EXPECT_EQ(get().wMinute, 20);
    EXPECT_EQ(choose(2026, 11, 31), "2026-11-24");
    EXPECT_EQ(changes, 1);
    EnableWindow(picker, FALSE);
    EXPECT_EQ(choose(2020, 1, 1), "2026-11-24");
    EXPECT_FALSE(postDate(picker, dateOf(2020, 1, 1)));
    EXPECT_EQ(typed(u"2"), "2026-11-24");
    SYSTEMTIME date = {};
    EXPECT_TRUE(readDate(picker, date));
    EXPECT_EQ(date.wDay, 24);
    EXPECT_EQ(changes, 1);
}

}  // namespace
