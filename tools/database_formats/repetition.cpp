#include "repetition.h"

#include "content_line.h"
#include "database_formats/format_fault.h"

#include <charconv>
#include <chrono>
#include <limits>
#include <system_error>

namespace database_formats {

namespace {

constexpr std::int64_t MinutesOfDay = 1440;
constexpr std::int64_t MostSeconds = 1'000'000'000'000'000;

[[noreturn]] void refuseDuration()
{
    throw FormatFault("a duration isn't like PT45M");
}

std::int64_t secondsOf(char unit, bool inTime)
{
    switch (unit) {
    case 'W':
        return inTime ? 0 : 7 * 86400;
    case 'D':
        return inTime ? 0 : 86400;
    case 'H':
        return inTime ? 3600 : 0;
    case 'M':
        return inTime ? 60 : 0;
    case 'S':
        return inTime ? 1 : 0;
    default:
        return 0;
    }
}

std::optional<ULONG> numberFrom(std::string_view text)
{
    ULONG number = 0;
    const char* const end = text.data() + text.size();
    return std::from_chars(text.data(), end, number).ptr == end && number > 0 ? std::optional(number) : std::nullopt;
}

std::string_view weekdayOf(const Moment& moment)
{
    using namespace std::chrono;
    constexpr std::string_view names[] = {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};
    const auto date =
        year{moment.year} / month{static_cast<unsigned>(moment.month)} / day{static_cast<unsigned>(moment.day)};
    return names[weekday(sys_days(date)).c_encoding()];
}

// True if this part of the rule can be ignored, because it only repeats the weekday, the month or the day of the
// appointment's start. WKST can always be ignored, because it has no effect on the rules that are accepted.
bool followsFromStart(const std::string& frequency, std::string_view name, std::string_view value, const Moment& start)
{
    if (name == "WKST")
        return true;
    if (name == "BYDAY")
        return frequency == "WEEKLY" && value == weekdayOf(start);
    return frequency == "YEARLY" && ((name == "BYMONTH" && numberFrom(value) == static_cast<ULONG>(start.month)) ||
                                     (name == "BYMONTHDAY" && numberFrom(value) == static_cast<ULONG>(start.day)));
}

}  // namespace

std::int64_t durationFrom(std::string_view text)
{
    const bool before = text.starts_with('-');
    text.remove_prefix(before || text.starts_with('+') ? 1 : 0);
    if (!text.starts_with('P') || text.size() < 3)
        refuseDuration();
    std::int64_t seconds = 0;
    bool inTime = false;
    for (text.remove_prefix(1); !text.empty();) {
        if (text[0] == 'T' && !inTime) {
            inTime = true;
            text.remove_prefix(1);
            continue;
        }
        std::uint32_t count = 0;
        const char* const end = text.data() + text.size();
        const auto [stopped, error] = std::from_chars(text.data(), end, count);
        const std::int64_t unit = error == std::errc() && stopped != end ? secondsOf(*stopped, inTime) : 0;
        if (unit == 0)
            refuseDuration();
        seconds += count * unit;
        text.remove_prefix(static_cast<std::size_t>(stopped - text.data()) + 1);
        if (seconds > MostSeconds)
            refuseDuration();
    }
    return before ? -seconds : seconds;
}

std::string durationText(LONG minutes)
{
    if (minutes != 0 && minutes % MinutesOfDay == 0)
        return "P" + std::to_string(minutes / MinutesOfDay) + "D";
    return "PT" + std::to_string(minutes) + "M";
}

std::optional<ULONG> repetitionFrom(std::string_view rule, const Moment& start)
{
    std::string frequency;
    ULONG interval = 1;
    const std::string capitals = inCapitals(rule);
    const auto parts = partsOf(capitals, ';', 32);
    for (const std::string_view part : parts)
        if (part.starts_with("FREQ="))
            frequency = part.substr(5);
    for (const std::string_view part : parts) {
        const std::size_t equals = part.find('=');
        const std::string_view name = part.substr(0, equals);
        const std::string_view value = equals != std::string_view::npos ? part.substr(equals + 1) : std::string_view();
        if (name == "INTERVAL") {
            const auto number = numberFrom(value);
            if (!number)
                return std::nullopt;
            interval = *number;
        } else if (name != "FREQ" && !followsFromStart(frequency, name, value, start)) {
            return std::nullopt;
        }
    }
    const std::uint64_t days = frequency == "DAILY" ? 1 : frequency == "WEEKLY" ? 7 : frequency == "YEARLY" ? 365 : 0;
    const std::uint64_t all = days * interval;
    return all > 0 && all <= std::numeric_limits<ULONG>::max() ? std::optional(static_cast<ULONG>(all)) : std::nullopt;
}

std::string repetitionText(ULONG days)
{
    const auto every = [](const char* frequency, ULONG interval) {
        return std::string("FREQ=") + frequency + (interval > 1 ? ";INTERVAL=" + std::to_string(interval) : "");
    };
    if (days % 365 == 0)
        return every("YEARLY", days / 365);
    return days % 7 == 0 ? every("WEEKLY", days / 7) : every("DAILY", days);
}

}  // namespace database_formats
