// calendar_zones.h - the time zones of a calendar, and the conversion of their moments to the host's local time, which
// a device's clock shows.
//
// A zone is one of the host ("Europe/Paris", also after a prefix: "/example.org/2007/Europe/Paris"), one of Windows
// ("W. Europe Standard Time"), or one that the calendar defines itself (a VTIMEZONE), in this order. Known names come
// first, because many calendars define only the rules of the year in which they were written.
#pragma once

#include "component.h"
#include "moment_text.h"

#include "ce/types.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace database_formats {

// A moment with an offset from UTC as local time. Nothing before 1601.
std::optional<FILETIME> localTimeOf(const Moment& moment);

class Zone;

class CalendarZones {
public:
    CalendarZones();
    CalendarZones(const CalendarZones&) = delete;
    CalendarZones& operator=(const CalendarZones&) = delete;
    ~CalendarZones();

    // Adds the zone that a VTIMEZONE defines. False for one that isn't used: it has no name, its rules are damaged or
    // aren't yearly, or the zones of the calendar have more than 500 rules. The definition of a known zone isn't
    // needed and counts as used.
    bool define(const Component& definition);

    // Null if no zone has this name, and for a name after the first thousand.
    const Zone* named(const std::string& name) const;

private:
    std::unique_ptr<Zone> madeZone(const std::string& name) const;

    std::map<std::string, std::string, std::less<>> definitions_;  // the text of each VTIMEZONE, by its name
    mutable std::map<std::string, std::unique_ptr<Zone>, std::less<>> zones_;  // null for a name of no zone
    std::size_t rules_ = 0;
};

// A moment in the zone as local time. Nothing before 1601.
std::optional<FILETIME> localTimeOf(const Moment& moment, const Zone& zone);

}  // namespace database_formats
