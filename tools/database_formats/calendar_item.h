// calendar_item.h - an appointment as a VEVENT, a task as a VTODO of iCalendar, and back.
#pragma once

#include "component.h"
#include "database_formats/left_out.h"
#include "database_formats/record.h"

#include "ce/store.h"

#include <span>

namespace database_formats {

// What the plain lines can hold; exact_lines.h does the rest. Times are written without a zone, as the device's clock
// has none; those with a zone are read as this host's local time.
[[nodiscard]] Component eventOf(std::span<const CEPROPVAL> appointment);
[[nodiscard]] Component todoOf(std::span<const CEPROPVAL> task);

[[nodiscard]] Record appointmentFrom(const Component& event, LeftOut& leftOut);
[[nodiscard]] Record taskFrom(const Component& todo, LeftOut& leftOut);

}  // namespace database_formats
