// calendar_time.h - a moment of iCalendar as the device's own clock would show it.
#pragma once

#include "component_fields.h"
#include "moment_text.h"

#include "ce/types.h"

#include <optional>

namespace database_formats {

struct CalendarTime {
    FILETIME local{};
    Moment said;            // as it stands in the file
    bool dateOnly = false;  // a whole day
};

// UTC and the zones that the host knows become local time; without a zone the moment stands as it is, as it does with a
// zone that isn't known, which is told as a "TZID" that was left out. Nothing, and told, for a moment before 1601.
// Throws a FormatFault.
[[nodiscard]] std::optional<CalendarTime> calendarTimeFrom(const ContentLine& line, ComponentFields& fields);

}  // namespace database_formats
