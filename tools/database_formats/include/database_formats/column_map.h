// column_map.h - what a user says about the columns of an address book in CSV.
#pragma once

#include <istream>
#include <map>
#include <string>
#include <string_view>

namespace database_formats {

// Of the heading of a column, trimmed and without capital letters: the name of a contact's property. Empty for a column
// that is ignored without a message.
using ColumnMap = std::map<std::string, std::string, std::less<>>;

// Reads lines like "Family name = LastName". Empty lines and lines that begin with # are ignored. Throws a FormatFault
// with the line.
ColumnMap columnMapFrom(std::istream& in);

}  // namespace database_formats
