// column_map.h - for an address book in CSV: to which property each column belongs, as the user has chosen it.
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
