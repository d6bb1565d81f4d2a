#include "moment_text.h"

#include "database_formats/format_fault.h"

#include "ce/time.h"

#include <algorithm>

namespace database_formats {

namespace {

constexpr DWORD StepsOfSecond = 10'000'000;

[[noreturn]] void refuse()
{
    throw FormatFault("a date or time isn't like 2025-03-11T08:30:00, or doesn't exist");
}

// Parses a moment from left to right.
class MomentParser {
public:
    explicit MomentParser(std::string_view text) : rest_(text) {}

    Moment parse()
    {
        Moment moment;
        moment.year = number(4);
        const bool extended = skip('-');
        moment.month = number(2);
        if (extended && !skip('-'))
            refuse();
        moment.day = number(2);
        if (skip('T') || skip('t') || skip(' '))
            takeTime(moment);
        if (!rest_.empty())
            refuse();
        return moment;
    }

private:
    void takeTime(Moment& moment)
    {
        moment.hasTime = true;
        moment.hour = number(2);
        const bool extended = skip(':');
        moment.minute = number(2);
        if (extended ? skip(':') : startsWithDigit())
            moment.second = number(2);
        if (skip('.') || skip(','))
            takeFraction(moment);
        takeZone(moment);
    }
    void takeFraction(Moment& moment)
    {
        if (!startsWithDigit())
            refuse();
        for (DWORD worth = StepsOfSecond / 10; startsWithDigit(); worth /= 10)
            moment.steps += static_cast<DWORD>(number(1)) * worth;
    }
    void takeZone(Moment& moment)
    {
        if (skip('Z') || skip('z')) {
            moment.minutesEast = 0;
            return;
        }
        const bool east = skip('+');
        if (!east && !skip('-'))
            return;
        int minutes = number(2) * 60;
        const bool extended = skip(':');
        if (extended || startsWithDigit())
            minutes += number(2);
        moment.minutesEast = east ? minutes : -minutes;
    }
    bool skip(char c)
    {
        const bool there = rest_.starts_with(c);
        rest_.remove_prefix(there ? 1 : 0);
        return there;
    }
    bool startsWithDigit() const { return !rest_.empty() && rest_[0] >= '0' && rest_[0] <= '9'; }
    int number(int digits)
    {
        int value = 0;
        for (; digits > 0; --digits) {
            if (!startsWithDigit())
                refuse();
            value = value * 10 + (rest_[0] - '0');
            rest_.remove_prefix(1);
        }
        return value;
    }

    std::string_view rest_;
};

SYSTEMTIME systemTimeOf(const Moment& moment, int year)
{
    return {.wYear = static_cast<WORD>(year),
            .wMonth = static_cast<WORD>(moment.month),
            .wDayOfWeek = 0,
            .wDay = static_cast<WORD>(moment.day),
            .wHour = static_cast<WORD>(moment.hour),
            .wMinute = static_cast<WORD>(moment.minute),
            .wSecond = static_cast<WORD>(moment.second),
            .wMilliseconds = 0};
}

std::string padded(int number, std::size_t digits)
{
    const std::string text = std::to_string(number);
    return std::string(digits - std::min(digits, text.size()), '0') + text;
}

}  // namespace

Moment momentFrom(std::string_view text)
{
    Moment moment = MomentParser(text).parse();
    if (moment.second == 60)  // a leap second, which the times of the store don't have
        moment.second = 59;
    // SystemTimeToFileTime checks whether the date exists, but refuses all years before 1601. The calendar repeats
    // every 400 years, so 2000 years later the same dates exist.
    const SYSTEMTIME time = systemTimeOf(moment, moment.year + 2000);
    FILETIME ignored{};
    if (!SystemTimeToFileTime(&time, &ignored))
        refuse();
    return moment;
}

std::optional<FILETIME> fileTimeOf(const Moment& moment)
{
    const SYSTEMTIME time = systemTimeOf(moment, moment.year);
    FILETIME whole{};
    if (!SystemTimeToFileTime(&time, &whole))
        return std::nullopt;
    const std::uint64_t steps = stepsOf(whole) + moment.steps;
    return FILETIME{static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

std::optional<Moment> momentOf(const FILETIME& time)
{
    SYSTEMTIME parts{};
    if (!FileTimeToSystemTime(&time, &parts) || parts.wYear > 9999)
        return std::nullopt;
    return Moment{.year = parts.wYear,
                  .month = parts.wMonth,
                  .day = parts.wDay,
                  .hour = parts.wHour,
                  .minute = parts.wMinute,
                  .second = parts.wSecond,
                  .steps = static_cast<DWORD>(stepsOf(time) % StepsOfSecond),
                  .hasTime = true,
                  .minutesEast = std::nullopt};
}

std::string timeText(const FILETIME& time)
{
    const auto moment = momentOf(time);
    if (!moment)
        return std::to_string(stepsOf(time));
    std::string text = padded(moment->year, 4) + "-" + padded(moment->month, 2) + "-" + padded(moment->day, 2) + "T" +
                       padded(moment->hour, 2) + ":" + padded(moment->minute, 2) + ":" + padded(moment->second, 2);
    if (moment->steps != 0)
        text += "." + padded(static_cast<int>(moment->steps), 7);
    return text;
}

std::string basicTime(const Moment& moment)
{
    return basicDate(moment) + "T" + padded(moment.hour, 2) + padded(moment.minute, 2) + padded(moment.second, 2);
}

std::string basicDate(const Moment& moment)
{
    return padded(moment.year, 4) + padded(moment.month, 2) + padded(moment.day, 2);
}

}  // namespace database_formats
