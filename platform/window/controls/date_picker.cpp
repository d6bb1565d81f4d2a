// A date picker has the fields day, month and year, in the order of the user's short dates. Keys change one of
// them, the current field.
#include "controls/control_classes.h"
#include "controls/date_display.h"
#include "window/input.h"
#include "window/notify.h"

#include "ce/date_picker.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace platform::window {

namespace {

enum class DateField { Day, Month, Year };

constexpr int FirstYear = 1601;
constexpr int LastYear = 9999;

std::array<DateField, 3> orderOfFields()
{
    std::array<DateField, 3> order{DateField::Year, DateField::Month, DateField::Day};
    constexpr int FormatChars = 80;  // the platform's longest date format
    WCHAR format[FormatChars];
    if (GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, format, FormatChars) == 0)
        return order;
    const std::u16string_view text(format);
    const auto offsetOf = [text](DateField field) {
        return text.find(field == DateField::Day ? u'd' : field == DateField::Month ? u'M' : u'y');
    };
    std::ranges::stable_sort(order, {}, offsetOf);
    return order;
}

struct DatePickerState : ClassState {
    DatePickerState() { GetLocalTime(&date); }

    SYSTEMTIME date{};
    std::array<DateField, 3> order = orderOfFields();  // from left to right in the user's short dates
    std::size_t field = 0;                             // the index in `order` of the current field
    int typed = 0;                                     // the number typed into that field so far
    int typedDigits = 0;
};

// Returns the date with the correct day of the week, or nothing if the date doesn't exist.
std::optional<SYSTEMTIME> completed(const SYSTEMTIME& date)
{
    FILETIME time;
    SYSTEMTIME complete;
    if (!SystemTimeToFileTime(&date, &time) || !FileTimeToSystemTime(&time, &complete))
        return std::nullopt;
    return complete;
}

int daysIn(int year, int month)
{
    constexpr std::array Days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : Days[static_cast<std::size_t>(month - 1)];
}

struct Range {
    int low;
    int high;
};

Range rangeOf(const SYSTEMTIME& date, DateField field)
{
    switch (field) {
    case DateField::Day:
        return {1, daysIn(date.wYear, date.wMonth)};
    case DateField::Month:
        return {1, 12};
    default:
        return {FirstYear, LastYear};
    }
}

WORD& fieldOf(SYSTEMTIME& date, DateField field)
{
    return field == DateField::Day ? date.wDay : field == DateField::Month ? date.wMonth : date.wYear;
}

// Returns the date with a new value in one field. A day past the end of the month becomes the last day of the month.
SYSTEMTIME withField(SYSTEMTIME date, DateField field, int value)
{
    fieldOf(date, field) = static_cast<WORD>(value);
    date.wDay = static_cast<WORD>(std::min<int>(date.wDay, daysIn(date.wYear, date.wMonth)));
    return date;
}

// Returns true if the year, month or day has changed.
bool setDate(const Window& window, DatePickerState& picker, const SYSTEMTIME& date) REQUIRES(coreMutex)
{
    const auto complete = completed(date);
    if (!complete)
        return false;
    const SYSTEMTIME before = std::exchange(picker.date, *complete);
    const bool changed =
        before.wYear != complete->wYear || before.wMonth != complete->wMonth || before.wDay != complete->wDay;
    if (changed)
        announce(window, Change::Date);
    return changed;
}

// Adds `by` to the current field. A step past the last value leads to the first, and a step before the first leads to
// the last. Nothing is carried over to another field.
bool step(const Window& window, DatePickerState& picker, int by) REQUIRES(coreMutex)
{
    const DateField field = picker.order[picker.field];
    const Range range = rangeOf(picker.date, field);
    int value = fieldOf(picker.date, field) + by;
    if (value > range.high)
        value = range.low;
    else if (value < range.low)
        value = range.high;
    return setDate(window, picker, withField(picker.date, field, value));
}

bool goToEnd(const Window& window, DatePickerState& picker, bool low) REQUIRES(coreMutex)
{
    const DateField field = picker.order[picker.field];
    const Range range = rangeOf(picker.date, field);
    return setDate(window, picker, withField(picker.date, field, low ? range.low : range.high));
}

void moveField(DatePickerState& picker, bool right)
{
    const std::size_t count = picker.order.size();
    picker.field = (picker.field + (right ? 1 : count - 1)) % count;
    picker.typedDigits = 0;
}

// A typed number is set as soon as it is in the field's range. For example, typing 15 sets the day to 1 and then to 15.
// A year is set after four digits.
bool typeDigit(const Window& window, DatePickerState& picker, int digit) REQUIRES(coreMutex)
{
    const DateField field = picker.order[picker.field];
    const int digits = field == DateField::Year ? 4 : 2;
    picker.typed = (picker.typedDigits == 0 ? 0 : picker.typed * 10) + digit;
    ++picker.typedDigits;
    const Range range = rangeOf(picker.date, field);
    const bool fits = picker.typed >= range.low && picker.typed <= range.high;
    if (picker.typedDigits == digits || picker.typed > range.high)
        picker.typedDigits = 0;
    return fits && setDate(window, picker, withField(picker.date, field, picker.typed));
}

bool pressKey(const Window& window, DatePickerState& picker, WPARAM key) REQUIRES(coreMutex)
{
    switch (key) {
    case VK_LEFT:
    case VK_RIGHT:
        moveField(picker, key == VK_RIGHT);
        return false;
    case VK_UP:
    case VK_ADD:
    case VK_DOWN:
    case VK_SUBTRACT:
        picker.typedDigits = 0;
        return step(window, picker, key == VK_UP || key == VK_ADD ? 1 : -1);
    case VK_HOME:
    case VK_END:
        picker.typedDigits = 0;
        return goToEnd(window, picker, key == VK_HOME);
    default:
        return false;
    }
}

bool typeCharacter(const Window& window, DatePickerState& picker, WPARAM character) REQUIRES(coreMutex)
{
    if (character >= u'0' && character <= u'9')
        return typeDigit(window, picker, static_cast<int>(character - u'0'));
    if (character == u'+' || character == u'-')
        return pressKey(window, picker, character == u'+' ? VK_ADD : VK_SUBTRACT);
    return false;
}

// Sets the year, month and day. The time of day doesn't change.
bool chooseDay(const Window& window, DatePickerState& picker, WPARAM yearAndMonth, LPARAM day) REQUIRES(coreMutex)
{
    SYSTEMTIME date = picker.date;
    date.wYear = HIWORD(yearAndMonth);
    date.wMonth = LOWORD(yearAndMonth);
    date.wDay = static_cast<WORD>(day);
    return setDate(window, picker, date);
}

LRESULT takePickerInput(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    NMDATETIMECHANGE change = {};
    {
        const Lock lock(coreMutex);
        const Window* window = findWindow(handle);
        auto* picker = findState<DatePickerState>(handle, WindowKind::DatePicker);
        if (!picker || !takesInputOf(*window))
            return 0;
        const bool changed = message == WM_KEYDOWN ? pressKey(*window, *picker, wParam)
                             : message == WM_CHAR  ? typeCharacter(*window, *picker, wParam)
                                                   : chooseDay(*window, *picker, wParam, lParam);
        if (!changed)
            return 0;
        change.st = picker->date;
    }
    change.nmhdr.code = DTN_DATETIMECHANGE;
    change.dwFlags = GDT_VALID;
    notifyParent(handle, change.nmhdr);
    return 0;
}

LRESULT answer(const Window& window, DatePickerState& picker, UINT message, WPARAM wParam, LPARAM lParam)
    REQUIRES(coreMutex)
{
    if (message == WM_GETDLGCODE)
        return WantsArrows | WantsCharacters;
    auto* date = reinterpret_cast<SYSTEMTIME*>(lParam);
    if (message == DTM_GETSYSTEMTIME) {
        if (date)
            *date = picker.date;
        return static_cast<LRESULT>(GDT_VALID);
    }
    if (wParam != GDT_VALID || !date || !completed(*date))
        return FALSE;
    picker.typedDigits = 0;
    setDate(window, picker, *date);
    return TRUE;
}

// Sets WS_TABSTOP, because a program that makes its picker at run time may omit that style. Without the style, Tab
// would never reach the picker.
void becomeTabStop(HWND handle)
{
    const Lock lock(coreMutex);
    if (Window* window = findWindow(handle))
        window->style |= WS_TABSTOP;
}

LRESULT datePickerProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CREATE:
        becomeTabStop(handle);
        return 0;
    case WM_KEYDOWN:
    case WM_CHAR:
    case InputDate:
        return takePickerInput(handle, message, wParam, lParam);
    case DTM_GETSYSTEMTIME:
    case DTM_SETSYSTEMTIME:
    case WM_GETDLGCODE:
        break;
    default:
        return DefWindowProcW(handle, message, wParam, lParam);
    }
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    auto* picker = findState<DatePickerState>(handle, WindowKind::DatePicker);
    return picker ? answer(*window, *picker, message, wParam, lParam) : 0;
}

}  // namespace

WindowClass datePickerClass()
{
    return {u"SysDateTimePick32", datePickerProcedure, WindowKind::DatePicker, true, makeStateOf<DatePickerState>, 0};
}

bool readDate(HWND handle, SYSTEMTIME& date)
{
    const Lock lock(coreMutex);
    const auto* picker = findState<DatePickerState>(handle, WindowKind::DatePicker);
    if (picker)
        date = picker->date;
    return picker != nullptr;
}

bool postDate(HWND picker, const SYSTEMTIME& date)
{
    return queueInput(picker, InputDate, MAKELONG(date.wMonth, date.wYear), date.wDay);
}

}  // namespace platform::window
