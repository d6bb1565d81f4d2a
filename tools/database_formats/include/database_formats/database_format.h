// database_format.h - databases as text that other programs read, and back: JSON lines, vCard, iCalendar, CSV.
//
// docs/forms.md describes what each format can hold.
#pragma once

#include "database_formats/column_map.h"
#include "database_formats/database.h"
#include "database_formats/format_fault.h"
#include "database_formats/left_out.h"

#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <string_view>

namespace database_formats {

enum class Format {
    JsonLines,  // any number of databases, without loss
    VCard,      // contacts
    ICalendar,  // appointments and tasks
    Csv,        // the records of any one database
};

// By the name that the user gives: "jsonl", "vcard", "ical" or "csv". Nothing for another name.
std::optional<Format> formatNamed(std::string_view name);

// By the file's extension. JSON lines for an unknown extension.
Format formatOfFile(std::string_view file);

// The extension of the format's files, with its point: ".jsonl".
std::string_view extensionOf(Format format);

// Whether the format can hold a database of this type.
bool holds(Format format, DWORD type);

// The writer writes to `out`. After its last call the state of `out` shows whether all of it could be written.
// `leftOut` counts what the format can't hold.
std::unique_ptr<DatabaseWriter> makeWriter(Format format, std::ostream& out, LeftOut& leftOut);

// Reads a file to its end. Throws a FormatFault with the number of the line that is wrong. `target` has then received
// everything before that line. `leftOut` counts what no property can hold.
//
// Only JSON lines contain the heads of databases. For vCard, iCalendar and address books of other programs in CSV the
// head is the usual one of a device. For other CSV it is empty. `columns` is for CSV.
void read(Format format, std::istream& in, DatabaseTarget& target, LeftOut& leftOut, const ColumnMap& columns = {});

}  // namespace database_formats
