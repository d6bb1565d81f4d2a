// csv_reader.h - a CSV file as the records of a database; csv_writer.h tells how it stands there.
#pragma once

#include "database_formats/database.h"
#include "database_formats/left_out.h"
#include "line_reader.h"

namespace database_formats {

// Its database has no name: CSV knows none. Columns that head no property are left out.
void readCsv(LineReader& lines, DatabaseTarget& target, LeftOut& leftOut);

}  // namespace database_formats
