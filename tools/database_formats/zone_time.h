// zone_time.h - converts a moment of another time zone to the host's local time, which a device's clock shows.
#pragma once

#include "moment_text.h"

#include "ce/types.h"

#include <optional>
#include <string>

namespace database_formats {

// A moment with an offset from UTC. Nothing before 1601.
std::optional<FILETIME> localTimeOf(const Moment& moment);

// True if the host knows a zone of this name ("Europe/Paris").
bool isZoneKnown(const std::string& zone);

// A moment in a zone that is known. Nothing before 1601.
std::optional<FILETIME> localTimeOf(const Moment& moment, const std::string& zone);

}  // namespace database_formats
