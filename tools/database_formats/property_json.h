// property_json.h - a property of a record as JSON and back, without loss.
#pragma once

#include "database_formats/record.h"

#include "ce/store.h"

#include <nlohmann/json.hpp>

#include <iosfwd>

namespace database_formats {

// {"id": "3a11001f", "value": ...}, with "flags" unless they are 0. The low half of the id is the type: numbers are
// numbers, times the number of 100 ns steps since 1601, texts texts, blobs hexadecimal digits. What a value can't carry
// stands as it lies in the store: "units" of a text that is no Unicode, "bits" of anything else, sixteen digits or, if
// the upper half of the sixteen bytes is in use, thirty-two.
// Needs no memory for a value beside the value.
void writeJson(std::ostream& out, const CEPROPVAL& property);

// Adds a property to the record. Throws a FormatFault: "a value isn't a whole number".
void addTo(Record& record, const nlohmann::ordered_json& property);

}  // namespace database_formats
