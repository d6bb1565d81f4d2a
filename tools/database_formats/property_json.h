// property_json.h - writes a property of a record as JSON, and reads it back without loss.
#pragma once

#include "database_formats/record.h"

#include "ce/store.h"

#include <nlohmann/json.hpp>

#include <iosfwd>

namespace database_formats {

// Writes {"id": "3a11001f", "value": ...}, and "flags" if they aren't 0. The lower half of the id is the type of the
// value:
//   number  a number
//   time    the number of 100 ns steps since 1601
//   text    a string. "units" in place of "value" is a list of UTF-16 units, for a text that isn't valid UTF-16.
//   blob    a string of hexadecimal digits
//   other   "bits" in place of "value", in hexadecimal digits (see bitsOf). Also for NaN and infinity.
// Writes large values in pieces, so that no second copy of them is in memory.
void writeJson(std::ostream& out, const CEPROPVAL& property);

// Adds the property to the record. Throws a FormatFault if `property` isn't JSON as writeJson() writes it, or if the
// record can't hold the property.
void addTo(Record& record, const nlohmann::ordered_json& property);

}  // namespace database_formats
