// zone_time.h - a moment of another time zone as this host's local time, which is what a device's clock shows.
#pragma once

#include "moment_text.h"

#include "ce/types.h"

#include <optional>
#include <string>

namespace database_formats {

// A moment that says its own distance from Greenwich. Nothing before 1601.
[[nodiscard]] std::optional<FILETIME> localTimeOf(const Moment& moment);

// True if the host knows a zone of this name ("Europe/Paris").
[[nodiscard]] bool isZoneKnown(const std::string& zone);

// A moment on the clocks of a zone that is known. Nothing before 1601.
[[nodiscard]] std::optional<FILETIME> localTimeOf(const Moment& moment, const std::string& zone);

}  // namespace database_formats
