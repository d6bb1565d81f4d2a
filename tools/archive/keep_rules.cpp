#include "archive/keep_rules.h"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace archive {

namespace {

using std::chrono::days;
using std::chrono::sys_days;

// A function that returns the number of the period, such as a day, to which a set belongs. `index` is the index of the
// set, where the newest set has the index 0.
using Period = std::int64_t (*)(const SetDate& date, std::int64_t index);

std::int64_t each(const SetDate& /*date*/, std::int64_t index)
{
    return index;
}

std::int64_t dayOf(const SetDate& date, std::int64_t /*index*/)
{
    return date.days();
}

// Weeks begin on Monday. 1970-01-01 was a Thursday.
std::int64_t weekOf(const SetDate& date, std::int64_t /*index*/)
{
    const std::int64_t fromMonday = date.days() + 3;
    return fromMonday >= 0 ? fromMonday / 7 : (fromMonday - 6) / 7;
}

std::int64_t monthOf(const SetDate& date, std::int64_t /*index*/)
{
    return std::int64_t{date.year} * 12 + date.month;
}

std::int64_t yearOf(const SetDate& date, std::int64_t /*index*/)
{
    return date.year;
}

void note(std::string& reasons, std::string_view reason)
{
    reasons += reasons.empty() ? "" : ", ";
    reasons += reason;
}

// Subtracts `within` from the date and returns the result in minutes since 1970. If the resulting month doesn't have
// the day, the surplus days count into the next month. For example, one month before 31 March is "31 February", which
// is 2 or 3 March.
std::int64_t before(const SetDate& date, const Within& within)
{
    const auto month = std::chrono::year(date.year - within.years) / std::chrono::month(date.month) / 1 -
                       std::chrono::months(within.months);
    const std::int64_t day = sys_days(month).time_since_epoch().count() + date.day - 1 - within.days;
    return (day * 24 + date.hour - within.hours) * 60 + date.minute;
}

}  // namespace

std::optional<Within> withinFrom(std::string_view text)
{
    Within within;
    const char* next = text.data();
    const char* const end = next + text.size();
    bool good = next != end;
    while (good && next != end) {
        int number = 0;
        const auto [stopped, error] = std::from_chars(next, end, number);
        good = error == std::errc() && stopped != end && number >= 0 && number <= 99999;
        next = stopped;
        const char unit = good ? *next++ : '\0';
        if (unit == 'y')
            within.years += number;
        else if (unit == 'm')
            within.months += number;
        else if (unit == 'w')
            within.days += 7 * number;
        else if (unit == 'd')
            within.days += number;
        else if (unit == 'h')
            within.hours += number;
        else
            good = false;
    }
    return good && within.years < 1600 ? std::optional(within) : std::nullopt;
}

std::vector<std::string> keptBecause(const std::vector<SetDate>& newestFirst, const KeepRules& rules)
{
    struct Rule {
        unsigned left;
        std::string_view name;
        Period period;
        std::optional<std::int64_t> latest;  // the period of the set that the rule kept last
    };
    Rule counting[] = {{rules.last, "last", each, {}},
                       {rules.daily, "daily", dayOf, {}},
                       {rules.weekly, "weekly", weekOf, {}},
                       {rules.monthly, "monthly", monthOf, {}},
                       {rules.yearly, "yearly", yearOf, {}}};
    std::vector<std::string> reasons(newestFirst.size());
    for (std::size_t at = 0; at < newestFirst.size(); at++) {
        const SetDate& date = newestFirst[at];
        for (Rule& rule : counting) {
            const std::int64_t period = rule.period(date, static_cast<std::int64_t>(at));
            const bool isOldest = at + 1 == newestFirst.size();
            if (rule.left == 0 || (rule.latest == period && !isOldest))
                continue;
            rule.left--;
            rule.latest = period;
            note(reasons[at], rule.name);
        }
        if (rules.within && date.minutes() > before(newestFirst.front(), *rules.within))
            note(reasons[at], "within");
    }
    return reasons;
}

}  // namespace archive
