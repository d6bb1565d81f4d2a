// database_form.h - databases as text that other programs read, and back: JSON lines, vCard, iCalendar, CSV.
//
// Knows no store and no set: a writer takes a database's head and then record after record from wherever they come, a
// reader hands them on. Neither keeps records. docs/forms.md tells what each form can hold.
#pragma once

#include "database_forms/form_fault.h"
#include "database_forms/left_out.h"

#include "ce/store.h"

#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace database_forms {

struct DatabaseHead {
    std::u16string name;
    DWORD type = 0;
    std::vector<SORTORDERSPEC> sort;
};

enum class Form {
    JsonLines,  // any number of databases, without loss
    VCard,      // contacts
    ICalendar,  // appointments and tasks
    Csv,        // the records of any one database
};

// By the name that a user gives: "jsonl", "vcard", "ical", "csv".
[[nodiscard]] std::optional<Form> formNamed(std::string_view name);

// By a file's extension; JSON lines for any other.
[[nodiscard]] Form formOfFile(std::string_view file);

class DatabaseWriter {
public:
    DatabaseWriter() = default;
    DatabaseWriter(const DatabaseWriter&) = delete;
    DatabaseWriter& operator=(const DatabaseWriter&) = delete;
    virtual ~DatabaseWriter() = default;

    // Begins a database; what is added from then on are its records. Throws a FormFault for one that the form can't
    // hold.
    virtual void begin(const DatabaseHead& head) = 0;
    virtual void add(std::span<const CEPROPVAL> properties) = 0;
    // Behind the last record of the last database; a file without it is not whole.
    virtual void finish() = 0;
};

// Writes to `out`, whose state tells whether it all got there.
[[nodiscard]] std::unique_ptr<DatabaseWriter> makeWriter(Form form, std::ostream& out);

// Where a reader puts what it finds. Either function may throw a FormFault, which ends the reading.
class DatabaseTarget {
public:
    DatabaseTarget() = default;
    DatabaseTarget(const DatabaseTarget&) = delete;
    DatabaseTarget& operator=(const DatabaseTarget&) = delete;
    virtual ~DatabaseTarget() = default;

    // A database begins. The result names it in add.
    virtual std::size_t begin(const DatabaseHead& head) = 0;
    // At least one property; texts and blobs are good for the call alone.
    virtual void add(std::size_t database, std::span<const CEPROPVAL> properties) = 0;
};

// Reads a file to its end. Throws a FormFault with the line of what is wrong; `target` has got what stood before it
// then.
// What no property can hold is counted in `leftOut`. Only JSON lines tell what a database is; for vCard and iCalendar
// its head is the usual one of a device, for CSV it is empty.
void read(Form form, std::istream& in, DatabaseTarget& target, LeftOut& leftOut);

}  // namespace database_forms
