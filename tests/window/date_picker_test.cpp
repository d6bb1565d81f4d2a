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
    std::string after(const std::vector<WORD>& inputs, UINT message = WM_KEYDOWN) const
    {
        for (const WORD input : inputs)
            send(picker, message, input);
        return shown();
    }
    std::string typed(const std::vector<WORD>& digits) const { return after(digits, WM_CHAR); }
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
    const std::pair<std::vector<WORD>, const char*> steps[] = {
        {{VK_UP}, "2024-1-1"},  // the first day follows the last one
        {{VK_DOWN}, "2024-1-31"},
        {{VK_RIGHT, VK_UP}, "2024-2-29"},  // the day is limited to the month's last
        {{VK_RIGHT, VK_SUBTRACT}, "2023-2-28"},
        {{VK_RIGHT, VK_HOME}, "2023-2-1"},
        {{VK_LEFT, VK_LEFT, VK_END}, "2023-12-1"},
    };
    for (const auto& [keys, expected] : steps)
        EXPECT_EQ(after(keys), expected);
    after({VK_END, VK_RETURN, VK_F4});  // these keys change nothing
    EXPECT_EQ(changes, 6);
}

TEST_F(DatePickerTest, DigitsAreTypedIntoTheField)
{
    set(dateOf(2024, 5, 9));
    EXPECT_EQ(typed({u'1'}), "2024-5-1");
    EXPECT_EQ(typed({u'5'}), "2024-5-15");
    EXPECT_EQ(typed({u'0', u'7'}), "2024-5-7");
    EXPECT_EQ(typed({u'9', u'9'}), "2024-5-9");  // there is no day 99, so the second digit has no effect
    after({VK_RIGHT});
    EXPECT_EQ(typed({u'1', u'2'}), "2024-12-9");
    after({VK_RIGHT});
    changes = 0;
    EXPECT_EQ(typed({u'1', u'9', u'9'}), "2024-12-9");
    EXPECT_EQ(typed({u'8', u'x'}), "1998-12-9");
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
    EXPECT_EQ(typed({u'2'}), "2026-11-24");
    SYSTEMTIME date = {};
    EXPECT_TRUE(readDate(picker, date));
    EXPECT_EQ(date.wDay, 24);
    EXPECT_EQ(changes, 1);
}

}  // namespace
