#include "archive/set_date.h"

#include "archive/opened_set.h"
#include "archive/set_search.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>

#include <sys/stat.h>

namespace archive {

namespace {

constexpr std::int64_t NearMinutes = 36 * 60;  // a day and a half, because the zone of the device is unknown

enum class Order { DayFirst, MonthFirst };

// The date in a comment, as far as it is known.
struct Dated {
    std::string folder;
    std::array<unsigned, 2> dayAndMonth{};  // in the order of the comment
    SetDate date;
    SetDate fileTime;
    bool hasDate = false;
    std::optional<Order> order;  // nothing: both are possible, or the day equals the month
};

bool exists(const SetDate& date)
{
    return std::chrono::year_month_day(std::chrono::year(date.year), std::chrono::month(date.month),
                                       std::chrono::day(date.day))
        .ok();
}

SetDate inOrder(const Dated& dated, Order order)
{
    SetDate date = dated.date;
    date.day = dated.dayAndMonth[order == Order::DayFirst ? 0 : 1];
    date.month = dated.dayAndMonth[order == Order::DayFirst ? 1 : 0];
    return date;
}

void settle(Dated& dated, Order order, DateSource source)
{
    dated.date = inOrder(dated, order);
    dated.date.source = source;
    dated.order = order;
}

// Reads the date at the start of the comment. The texts of the program aren't translated.
void readComment(std::u16string_view comment, Dated& dated)
{
    std::string ascii;
    for (const char16_t unit : comment.substr(0, 40))
        ascii += unit < 0x80 ? static_cast<char>(unit) : '?';
    unsigned year = 0;
    SetDate& date = dated.date;
    auto& [first, second] = dated.dayAndMonth;
    if (std::sscanf(ascii.c_str(), "Backup date:%2u/%2u/%4u (%2u:%2u)", &first, &second, &year, &date.hour,
                    &date.minute) != 5)
        return;
    date.year = static_cast<int>(year);
    const bool dayFirst = exists(inOrder(dated, Order::DayFirst));
    const bool monthFirst = exists(inOrder(dated, Order::MonthFirst));
    dated.hasDate = (dayFirst || monthFirst) && year >= 1601 && date.hour < 24 && date.minute < 60;
    if (!dated.hasDate)
        return;
    date = inOrder(dated, dayFirst ? Order::DayFirst : Order::MonthFirst);
    date.source = DateSource::Comment;
    if (dayFirst != monthFirst)
        dated.order = dayFirst ? Order::DayFirst : Order::MonthFirst;
}

SetDate localTime(std::time_t time)
{
    std::tm local{};
    if (!::localtime_r(&time, &local))
        return {};
    return {local.tm_year + 1900,
            static_cast<unsigned>(local.tm_mon + 1),
            static_cast<unsigned>(local.tm_mday),
            static_cast<unsigned>(local.tm_hour),
            static_cast<unsigned>(local.tm_min),
            DateSource::FileTime};
}

Dated readDate(const SetFiles& files)
{
    Dated dated;
    dated.folder = files.folder;
    struct stat status {};
    if (::stat(pathOf(files).c_str(), &status) == 0)
        dated.fileTime = localTime(status.st_mtime);
    if (const OpenedSet set(files); set.isOpen())
        readComment(set.list().comment(), dated);
    if (!dated.hasDate)
        dated.date = dated.fileTime;
    return dated;
}

bool isAmbiguous(const Dated& dated)
{
    return dated.hasDate && !dated.order && dated.dayAndMonth[0] != dated.dayAndMonth[1];
}

bool isNear(const SetDate& left, const SetDate& right)
{
    return std::abs(left.minutes() - right.minutes()) <= NearMinutes;
}

void decideByFileTime(Dated& dated)
{
    const bool dayFirst = isNear(inOrder(dated, Order::DayFirst), dated.fileTime);
    const bool monthFirst = isNear(inOrder(dated, Order::MonthFirst), dated.fileTime);
    if (dayFirst != monthFirst)
        settle(dated, dayFirst ? Order::DayFirst : Order::MonthFirst, DateSource::FileOrder);
}

// The order of the nearest set in the same folder whose order is known. Of two as near, the one before counts.
std::optional<Order> orderBeside(const std::vector<Dated>& all, std::size_t at, const std::vector<bool>& known)
{
    for (std::size_t distance = 1; distance < all.size(); distance++) {
        const auto isUsable = [&](std::size_t other) { return known[other] && all[other].folder == all[at].folder; };
        if (at >= distance && isUsable(at - distance))
            return all[at - distance].order;
        if (at + distance < all.size() && isUsable(at + distance))
            return all[at + distance].order;
    }
    return std::nullopt;
}

void decideByNeighbours(std::vector<Dated>& all)
{
    std::vector<bool> known;
    for (const Dated& dated : all)
        known.push_back(dated.order.has_value());
    for (std::size_t at = 0; at < all.size(); at++) {
        if (!isAmbiguous(all[at]))
            continue;
        const auto order = orderBeside(all, at, known);
        settle(all[at], order.value_or(Order::DayFirst), order ? DateSource::NeighbourOrder : DateSource::AssumedOrder);
    }
}

}  // namespace

std::int64_t SetDate::days() const
{
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    return std::chrono::sys_days(date).time_since_epoch().count();
}

std::int64_t SetDate::minutes() const
{
    return (days() * 24 + hour) * 60 + minute;
}

std::string SetDate::text() const
{
    char text[32];
    (void)std::snprintf(text, sizeof text, "%04d-%02u-%02u %02u:%02u", year, month, day, hour, minute);
    return text;
}

std::string_view SetDate::doubt() const
{
    switch (source) {
    case DateSource::Comment:
        return "";
    case DateSource::FileOrder:
        return "day and month by the file's time";
    case DateSource::NeighbourOrder:
        return "day and month as in the sets beside it";
    case DateSource::AssumedOrder:
        return "the day assumed first";
    case DateSource::FileTime:
        return "the file's time";
    }
    return "";
}

std::string SetDate::textWithDoubt() const
{
    return doubt().empty() ? text() : text() + " (" + std::string(doubt()) + ")";
}

std::vector<SetDate> datesOf(const std::vector<SetFiles>& sets)
{
    std::vector<Dated> all;
    for (const SetFiles& files : sets) {
        all.push_back(readDate(files));
        if (isAmbiguous(all.back()))
            decideByFileTime(all.back());
    }
    decideByNeighbours(all);
    std::vector<SetDate> dates;
    for (const Dated& dated : all)
        dates.push_back(dated.date);
    return dates;
}

}  // namespace archive
