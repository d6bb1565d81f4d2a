// database_format.h - databases as text that other programs read, and back: JSON lines, vCard, iCalendar, CSV.
//
// Knows no store and no set: a writer takes a database's head and then record after record from wherever they come, a
// reader hands them on. Neither keeps records. docs/forms.md tells what each format can hold.
#pragma once

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

// By the name that a user gives: "jsonl", "vcard", "ical", "csv".
[[nodiscard]] std::optional<Format> formatNamed(std::string_view name);

// By a file's extension; JSON lines for any other.
[[nodiscard]] Format formatOfFile(std::string_view file);

// Writes to `out`, whose state tells whether it all got there.
[[nodiscard]] std::unique_ptr<DatabaseWriter> makeWriter(Format format, std::ostream& out);

// Reads a file to its end. Throws a FormatFault with the line of what is wrong; `target` has got what stood before it
// then.
// What no property can hold is counted in `leftOut`. Only JSON lines tell what a database is; for vCard and iCalendar
// its head is the usual one of a device, for CSV it is empty.
void read(Format format, std::istream& in, DatabaseTarget& target, LeftOut& leftOut);

}  // namespace database_formats
