// day_order.h - reads the birthdays in address books of other programs: 1985-04-12, 12.04.1985, 4/12/1985.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace database_formats {

enum class DayOrder { MonthFirst, DayFirst };

// Finds out whether 12 April 1985 is 4/12/1985 or 12/4/1985 in a file.
class DayOrderSearch {
public:
    // Adds the text of a birthday.
    void add(std::string_view text);
    // Returns nothing if no birthday shows the order, or if birthdays contradict each other.
    std::optional<DayOrder> found() const;
    // True if at least one birthday can't be read without the order. The order isn't needed for a birthday with dots,
    // such as 12.04.1985, or for one that begins with the year.
    bool isNeeded() const { return open_ + dayFirst_ + monthFirst_ != 0; }

private:
    std::size_t dayFirst_ = 0;
    std::size_t monthFirst_ = 0;
    std::size_t open_ = 0;  // number of birthdays that are possible in both orders
};

// Returns the date. Returns nothing if the text isn't a complete date that exists. `order` doesn't apply to a date with
// dots, such as 12.04.1985, or to a date that begins with the year.
std::optional<FILETIME> dayFrom(std::string_view text, DayOrder order);

// True for a text that contains only zeros, separators and spaces, such as 0/0/00. Programs write such texts for a
// missing date. Also true for an empty text.
bool isNoDate(std::string_view text);

}  // namespace database_formats
