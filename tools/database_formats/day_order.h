// day_order.h - the birthdays in address books of other programs: 1985-04-12, 12.04.1985, 4/12/1985.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace database_formats {

enum class DayOrder { MonthFirst, DayFirst };

// Finds out whether a file writes 4/12/1985 or 12/4/1985.
class DayOrderSearch {
public:
    // The text of a birthday.
    void add(std::string_view text);
    // Nothing if no birthday shows it.
    std::optional<DayOrder> found() const;
    // Whether there was a birthday of which the order matters.
    bool isNeeded() const { return open_ + dayFirst_ + monthFirst_ != 0; }

private:
    std::size_t dayFirst_ = 0;
    std::size_t monthFirst_ = 0;
    std::size_t open_ = 0;  // birthdays that may be either
};

// The date. Nothing for a text that isn't a complete date, or a date that doesn't exist. In a date with points the day
// is always first.
std::optional<FILETIME> dayFrom(std::string_view text, DayOrder order);

// True for a text like 0/0/00, with which programs say that there is no date.
bool isNoDate(std::string_view text);

}  // namespace database_formats
