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

// Returns the text of `component`, which was made from `properties`. The function also reads the text again with
// `read`. If a property then has another value or is missing, the function counts it as left out under the property's
// name. Throws a FormatFault if the record is too large to be read again.
std::string writtenText(const Component& component, const Reading& read, std::span<const CEPROPVAL> properties,
                        LeftOut& leftOut);

}  // namespace database_formats
