// column_map.h - reads the file in which the user assigns the columns of a CSV address book to the properties of a
// contact.
#pragma once

#include <istream>
#include <map>
#include <string>
#include <string_view>

namespace database_formats {

// Maps the heading of a column, trimmed and in lower case, to the name of a contact's property. An empty name marks a
// column that is ignored without a message.
using ColumnMap = std::map<std::string, std::string, std::less<>>;

// Reads lines like "Family name = LastName". Empty lines and lines that begin with # are ignored. Throws a FormatFault
// with the number of a wrong line.
ColumnMap columnMapFrom(std::istream& in);

}  // namespace database_formats
