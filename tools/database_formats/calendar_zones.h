// calendar_zones.h - finds the time zones of a calendar, and converts times in these zones to the local time of the
// host (the Linux system). The clock of a device shows local time.
//
// The name of a zone is looked up in three lists, in this order:
//
// - the zones of the host, such as "Europe/Paris". The name may have a prefix: "/example.org/2007/Europe/Paris";
// - the zones of Windows, such as "W. Europe Standard Time";
// - the zones that the calendar defines itself (VTIMEZONE).
//
// The calendar's own definitions come last, because many calendars define only the rules of the year in which they were
// written.
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

// Converts a moment that has an offset from UTC to the host's local time. Returns nothing for a time before 1601.
std::optional<FILETIME> localTimeOf(const Moment& moment);

class Zone;

class CalendarZones {
public:
    CalendarZones();
    CalendarZones(const CalendarZones&) = delete;
    CalendarZones& operator=(const CalendarZones&) = delete;
    ~CalendarZones();

    // Adds the zone that a VTIMEZONE defines. If the host or Windows has a zone of this name, the function ignores the
    // definition and returns true. Returns false if the definition has no name, no rules, damaged rules or rules that
    // aren't yearly. Also returns false if the zones of the calendar would have more than 500 rules.
    bool define(const Component& definition);

    // Returns null if no zone has this name, or if a thousand other names were already looked up.
    const Zone* named(const std::string& name) const;

private:
    std::unique_ptr<Zone> madeZone(const std::string& name) const;

    std::map<std::string, std::string, std::less<>> definitions_;  // the text of each VTIMEZONE, by its name
    mutable std::map<std::string, std::unique_ptr<Zone>, std::less<>> zones_;  // null if no zone has the name
    std::size_t rules_ = 0;
};

// Converts a moment in the zone to the host's local time. Returns nothing for a time before 1601.
std::optional<FILETIME> localTimeOf(const Moment& moment, const Zone& zone);

}  // namespace database_formats
