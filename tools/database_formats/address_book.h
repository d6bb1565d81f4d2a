// address_book.h - reads contacts from the CSV of other programs. Each program has its own names for the columns.
#pragma once

#include "address_columns.h"
#include "csv_row.h"
#include "database_formats/database.h"
#include "database_formats/left_out.h"
#include "line_reader.h"

#include <vector>

namespace database_formats {

// Reads the file from its beginning. The function reads it twice, because only the whole file shows its character set
// and whether its dates begin with the day or the month.
void readAddressBook(LineReader& lines, const std::vector<AddressColumn>& columns, DatabaseTarget& target,
                     LeftOut& leftOut);

// Returns the texts of a row in UTF-8. A text that isn't valid UTF-8 is read as Windows-1252.
std::vector<std::string> textsOf(const std::vector<CsvCell>& row);

}  // namespace database_formats
