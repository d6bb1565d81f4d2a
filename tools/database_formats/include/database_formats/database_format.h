// database_format.h - writes databases as JSON lines, vCard, iCalendar or CSV for other programs, and reads these
// formats.
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

// Returns the format with this name: "jsonl", "vcard", "ical" or "csv". Returns nothing for any other name.
std::optional<Format> formatNamed(std::string_view name);

// Returns the format of the file's extension, or JSON lines for an unknown extension.
Format formatOfFile(std::string_view file);

// Returns the extension of the format's files, with its dot: ".jsonl".
std::string_view extensionOf(Format format);

// Returns whether the format can hold a database of this type.
bool holds(Format format, DWORD type);

// Returns a writer that writes to `out`. After the last call of the writer, the state of `out` shows whether everything
// could be written. `leftOut` counts what the format can't represent.
std::unique_ptr<DatabaseWriter> makeWriter(Format format, std::ostream& out, LeftOut& leftOut);

// Reads a file to its end. `leftOut` counts what no property can hold. Throws a FormatFault if the file is wrong or too
// large, or if `target` throws one. The fault has the number of the line, if it is known. `target` may have received
// records before the fault was found.
//
// Only a file in the format JsonLines contains the DatabaseHead of each database. For vCard, for iCalendar and for
// address books of other programs in CSV, `target` gets the head that a device usually has for such records. For other
// CSV, it gets an empty head. Only CSV uses `columns`.
void read(Format format, std::istream& in, DatabaseTarget& target, LeftOut& leftOut, const ColumnMap& columns = {});

}  // namespace database_formats
