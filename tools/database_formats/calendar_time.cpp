// calendar_time.cpp - see calendar_time.h.

#include "calendar_time.h"

#include "zone_time.h"

namespace database_formats {

namespace {

std::optional<FILETIME> localTime(const Moment& said, const std::string& zone, ComponentFields& fields)
{
    if (said.minutesEast)
        return localTimeOf(said);
    if (!said.hasTime || zone.empty())
        return fileTimeOf(said);
    if (isZoneKnown(zone))
        return localTimeOf(said, zone);
    fields.leaveOut("TZID");
    return fileTimeOf(said);
}

}  // namespace

std::optional<CalendarTime> calendarTimeFrom(const ContentLine& line, ComponentFields& fields)
{
    const Moment said = atLine(line, [&] { return momentFrom(line.value); });
    const auto local = localTime(said, std::string(line.parameter("TZID")), fields);
    if (!local) {
        fields.leaveOut(line.name);
        return std::nullopt;
    }
    return CalendarTime{*local, said, !said.hasTime};
}

}  // namespace database_formats
