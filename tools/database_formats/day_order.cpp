#include "day_order.h"

#include "content_line.h"
#include "database_formats/format_fault.h"
#include "moment_text.h"

#include <array>
#include <charconv>

namespace database_formats {

namespace {

struct DateParts {
    std::array<int, 3> numbers{};
    char separator = 0;
    bool yearFirst = false;
};

// Parses three numbers with the same separator. The first or the last number must have four digits. Text after a blank
// is a time of day and is ignored.
std::optional<DateParts> partsFrom(std::string_view text)
{
    text = trimmed(text);
    text = text.substr(0, text.find(' '));
    DateParts parts;
    std::array<std::size_t, 3> digits{};
    for (std::size_t part = 0; part < parts.numbers.size(); ++part) {
        const char* const end = text.data() + text.size();
        const auto [stopped, error] = std::from_chars(text.data(), end, parts.numbers.at(part));
        if (error != std::errc() || parts.numbers.at(part) < 0)
            return std::nullopt;
        digits.at(part) = static_cast<std::size_t>(stopped - text.data());
        text.remove_prefix(digits.at(part));
        const bool last = part + 1 == parts.numbers.size();
        const bool separated = !text.empty() && (part == 0 || text[0] == parts.separator);
        if (last != text.empty() || (!last && !separated))
            return std::nullopt;
        if (!last) {
            parts.separator = text[0];
            text.remove_prefix(1);
        }
    }
    parts.yearFirst = digits[0] == 4;
    const bool known = parts.separator == '.' || parts.separator == '/' || parts.separator == '-';
    return known && (parts.yearFirst || digits[2] == 4) ? std::optional(parts) : std::nullopt;
}

bool needsOrder(const DateParts& parts)
{
    return !parts.yearFirst && parts.separator != '.';
}

}  // namespace

void DayOrderSearch::add(std::string_view text)
{
    const auto parts = partsFrom(text);
    if (!parts || !needsOrder(*parts))
        return;
    if (parts->numbers[0] > 12)
        ++dayFirst_;
    else if (parts->numbers[1] > 12)
        ++monthFirst_;
    else
        ++open_;
}

std::optional<DayOrder> DayOrderSearch::found() const
{
    if ((dayFirst_ == 0) == (monthFirst_ == 0))
        return std::nullopt;
    return dayFirst_ != 0 ? DayOrder::DayFirst : DayOrder::MonthFirst;
}

std::optional<FILETIME> dayFrom(std::string_view text, DayOrder order)
{
    try {
        const auto parts = partsFrom(text);
        if (!parts)
            return fileTimeOf(momentFrom(trimmed(text)));
        const auto& [first, second, third] = parts->numbers;
        const bool dayFirst = !needsOrder(*parts) || order == DayOrder::DayFirst;
        Moment day;
        day.year = parts->yearFirst ? first : third;
        day.month = parts->yearFirst || dayFirst ? second : first;
        day.day = parts->yearFirst ? third : dayFirst ? first : second;
        if (day.month > 12 || day.day > 31)
            return std::nullopt;
        return fileTimeOf(momentFrom(basicDate(day)));
    } catch (const FormatFault&) {
        return std::nullopt;
    }
}

bool isNoDate(std::string_view text)
{
    return text.find_first_not_of("0/.- ") == std::string_view::npos;
}

}  // namespace database_formats
