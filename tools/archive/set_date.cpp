#include "archive/set_date.h"

#include "archive/opened_set.h"
#include "archive/set_search.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <numeric>
#include <optional>
#include <utility>

#include <sys/stat.h>

namespace archive {

namespace {

constexpr std::int64_t NearMinutes = 36 * 60;  // a day and a half, because the time zone of the device is unknown

enum class Order { DayFirst, MonthFirst };

}  // namespace

// What is known about the date of one set.
struct SetDates::Dated {
    std::array<unsigned, 2> dayAndMonth{};  // in the order of the comment
    SetDate date;
    SetDate fileTime;
    std::int64_t written = 0;  // when the list file was written, in nanoseconds since 1970
    bool hasDate = false;
    std::optional<Order> order;  // nothing: the order is unknown, or the day equals the month
    bool byNeighbours = false;   // the order was copied from a neighbouring set or assumed, so no other set may copy it

    bool isAmbiguous() const { return hasDate && !order && dayAndMonth[0] != dayAndMonth[1]; }
};

namespace {

bool exists(const SetDate& date)
{
    return std::chrono::year_month_day(std::chrono::year(date.year), std::chrono::month(date.month),
                                       std::chrono::day(date.day))
        .ok();
}

template <class Dated>
SetDate inOrder(const Dated& dated, Order order)
{
    SetDate date = dated.date;
    date.day = dated.dayAndMonth[order == Order::DayFirst ? 0 : 1];
    date.month = dated.dayAndMonth[order == Order::DayFirst ? 1 : 0];
    return date;
}

template <class Dated>
void settle(Dated& dated, Order order, DateSource source)
{
    dated.date = inOrder(dated, order);
    dated.date.source = source;
    dated.order = order;
}

// Reads the date in a set's comment. The date follows the words "Backup date:" at the beginning of the comment. These
// words are the same on every device, because the program's texts aren't translated.
template <class Dated>
void readComment(std::u16string_view comment, Dated& dated)
{
    std::string ascii;
    for (const char16_t unit : comment.substr(0, 40))
        ascii += unit < 0x80 ? static_cast<char>(unit) : '?';
    unsigned year = 0;
    SetDate& date = dated.date;
    auto& [first, second] = dated.dayAndMonth;
    // NOLINTNEXTLINE(cert-err34-c): a number has at most four digits
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

bool isNear(const SetDate& left, const SetDate& right)
{
    return std::abs(left.minutes() - right.minutes()) <= NearMinutes;
}

template <class Dated>
void decideByFileTime(Dated& dated)
{
    const bool dayFirst = isNear(inOrder(dated, Order::DayFirst), dated.fileTime);
    const bool monthFirst = isNear(inOrder(dated, Order::MonthFirst), dated.fileTime);
    if (dayFirst != monthFirst)
        settle(dated, dayFirst ? Order::DayFirst : Order::MonthFirst, DateSource::FileOrder);
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

SetDates::SetDates(std::vector<SetFiles> sets) : sets_(std::move(sets)), dates_(sets_.size()) {}

SetDates::~SetDates() = default;

const SetDate& SetDates::of(std::size_t set)
{
    if (read(set).isAmbiguous())
        decideByNeighbours(set);
    return dates_[set]->date;
}

std::int64_t SetDates::written(std::size_t set)
{
    return read(set).written;
}

SetDates::Dated& SetDates::read(std::size_t set)
{
    if (dates_[set])
        return *dates_[set];
    dates_[set] = std::make_unique<Dated>();
    Dated& dated = *dates_[set];
    struct stat status {};
    if (::stat(pathOf(sets_[set]).c_str(), &status) == 0) {
        dated.fileTime = localTime(status.st_mtime);
        dated.written = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
    }
    if (const OpenedSet opened(sets_[set]); opened.isOpen())
        readComment(opened.list().comment(), dated);
    if (!dated.hasDate)
        dated.date = dated.fileTime;
    else if (dated.isAmbiguous())
        decideByFileTime(dated);
    return dated;
}

// Takes the order of day and month from another set. Considers only sets in the same folder whose own comment or file
// time shows the order. Of these, uses the set whose index in `sets_` is closest to `set`. If two are equally close,
// uses the one with the lower index. If there is no such set, the first number of the date counts as the day.
void SetDates::decideByNeighbours(std::size_t set)
{
    std::optional<Order> order;
    const auto ask = [&](std::size_t other) {
        if (order || other >= sets_.size() || sets_[other].folder != sets_[set].folder)
            return;
        if (const Dated& dated = read(other); !dated.byNeighbours)
            order = dated.order;
    };
    for (std::size_t distance = 1; distance < sets_.size() && !order; distance++) {
        ask(set - distance);  // a negative result wraps to a huge index that no set has
        ask(set + distance);
    }
    Dated& dated = *dates_[set];
    settle(dated, order.value_or(Order::DayFirst), order ? DateSource::NeighbourOrder : DateSource::AssumedOrder);
    dated.byNeighbours = true;
}

std::vector<std::size_t> byDate(SetDates& dates, std::size_t sets)
{
    std::vector<std::size_t> order(sets);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {},
                             [&](std::size_t set) { return std::pair(dates.of(set).minutes(), dates.written(set)); });
    return order;
}

}  // namespace archive
