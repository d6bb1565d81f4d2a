// address_book.h - contacts from the CSV of other programs, in which each column has that program's own name.
#pragma once

#include "address_columns.h"
#include "csv_row.h"
#include "database_formats/database.h"
#include "database_formats/left_out.h"
#include "line_reader.h"

#include <vector>

namespace database_formats {

// Reads the file from its beginning. It goes through the file twice, because only the whole of it shows its character
// set, and whether a date begins with the day or the month.
void readAddressBook(LineReader& lines, const std::vector<AddressColumn>& columns, DatabaseTarget& target,
                     LeftOut& leftOut);

// The texts of a row in UTF-8. One that isn't UTF-8 is Windows-1252.
std::vector<std::string> textsOf(const std::vector<CsvCell>& row);

}  // namespace database_formats
