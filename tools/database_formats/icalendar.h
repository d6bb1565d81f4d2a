// icalendar.h - writes databases of appointments and tasks as an iCalendar file, and reads such a file.
#pragma once

#include "database_formats/database.h"
#include "database_formats/identifier.h"
#include "database_formats/left_out.h"
#include "line_reader.h"

namespace database_formats {

class ICalendarWriter : public DatabaseWriter {
public:
    // The writer leaves out appointments without a start and counts them in `leftOut`. Other programs refuse a file
    // with such an appointment.
    ICalendarWriter(std::ostream& out, LeftOut& leftOut) : out_(out), leftOut_(leftOut) {}

    void begin(const DatabaseHead& head) override;
    void add(std::span<const CEPROPVAL> properties) override;
    void finish() override;

private:
    std::ostream& out_;
    LeftOut& leftOut_;
    bool begun_ = false;
    bool tasks_ = false;
    Identifiers identifiers_;
};

// Reads appointments into one database and tasks into another one.
void readICalendar(LineReader& lines, DatabaseTarget& target, LeftOut& leftOut);

}  // namespace database_formats
