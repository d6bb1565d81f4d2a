// written_text.h - writes a component, and finds out which properties of a record the component can't hold.
#pragma once

#include "component.h"
#include "database_formats/left_out.h"
#include "database_formats/record.h"

#include "ce/store.h"

#include <functional>
#include <span>
#include <string>

namespace database_formats {

// A function that converts a component to a record.
using Reading = std::function<Record(const Component&, LeftOut&)>;

// Returns the text of `component`, which was made from `properties`. The function also converts the text back to a
// record with `read`. Each property that is missing in that record or differs there is counted as left out, under the
// name of the property. A missing property isn't counted if it is a number 0 without flags. Throws a FormatFault if the
// text can't be converted back, for example because the record is too large.
std::string writtenText(const Component& component, const Reading& read, std::span<const CEPROPVAL> properties,
                        LeftOut& leftOut);

}  // namespace database_formats
