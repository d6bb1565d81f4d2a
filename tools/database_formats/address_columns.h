// address_columns.h - recognises the columns of address books that other programs write as CSV.
#pragma once

#include "database_formats/column_map.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace database_formats {

// What a column says about a contact.
enum class Field {
    LeftOut,
    Ignored,
    LastName,
    FirstName,
    ShownName,
    Company,
    Telephone,
    Mail,
    Town,
    Birthday,
    BirthYear,
    BirthMonth,
    Categories,
    Notes,
};

// How good a telephone or town is: a contact has only one, which is that at home.
enum class Rank { Machine, HomeMachine, Other, Home };

struct AddressColumn {
    std::string heading;  // in UTF-8
    Field field = Field::LeftOut;
    Rank rank = Rank::Other;
    std::optional<std::size_t> label;  // the column that says of what kind the value is, such as "Work"
};

// The columns of an address book. Nothing if the headings aren't those of one, or are those of a table that we wrote.
std::optional<std::vector<AddressColumn>> addressColumns(const std::vector<std::string>& headings,
                                                         const ColumnMap& columns);

// The rank of a value with this label.
Rank rankOf(std::string_view label);

// Without capital letters and without blanks around it.
std::string folded(std::string_view text);

}  // namespace database_formats
