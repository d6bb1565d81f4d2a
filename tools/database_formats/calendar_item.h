// calendar_item.h - converts an appointment to a VEVENT and a task to a VTODO of iCalendar, and back.
#pragma once

#include "calendar_zones.h"
#include "component.h"
#include "database_formats/left_out.h"
#include "database_formats/record.h"

#include "ce/store.h"

#include <span>

namespace database_formats {

// The conversions in both directions use only lines that the standard for iCalendar defines. writtenText() counts the
// properties that these lines can't represent. eventOf() and todoOf() write times without a zone, because the device's
// clock has none. appointmentFrom() and taskFrom() convert a time with a zone to the host's local time.
Component eventOf(std::span<const CEPROPVAL> appointment);
Component todoOf(std::span<const CEPROPVAL> task);

Record appointmentFrom(const Component& event, const CalendarZones& zones, LeftOut& leftOut);
Record taskFrom(const Component& todo, const CalendarZones& zones, LeftOut& leftOut);

}  // namespace database_formats
