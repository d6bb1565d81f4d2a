// address_columns.h - recognises the columns of address books that other programs write as CSV.
#pragma once

#include "database_formats/column_map.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace database_formats {

// What a column says about a contact. The values of a LeftOut column are counted as left out. The values of an Ignored
// column are neither imported nor counted.
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

// The rank of a telephone number or a town, from worst to best. A contact of a device has only one telephone number and
// one town, and both belong to the contact's home. A Machine is a fax or a pager.
enum class Rank { Machine, HomeMachine, Other, Home };

struct AddressColumn {
    std::string heading;  // in UTF-8
    Field field = Field::LeftOut;
    Rank rank = Rank::Other;
    std::optional<std::size_t> label;  // index of the column with the kind of the value, such as "Work"
};

// Returns the columns of an address book. Returns nothing if the headings aren't those of an address book, or are those
// of a table that quillbox wrote. If `columns` isn't empty, any headings count as those of an address book.
std::optional<std::vector<AddressColumn>> addressColumns(const std::vector<std::string>& headings,
                                                         const ColumnMap& columns);

// Returns the rank of a value with this label.
Rank rankOf(std::string_view label);

// Returns the text in lower case (ASCII only) and without blanks at both ends.
std::string folded(std::string_view text);

}  // namespace database_formats
