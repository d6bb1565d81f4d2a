// written_text.h - writes a component, and finds out what of a record it can't hold.
#pragma once

#include "component.h"
#include "database_formats/left_out.h"
#include "database_formats/record.h"

#include "ce/store.h"

#include <functional>
#include <span>
#include <string>

namespace database_formats {

// Reads the fields of a component.
using Reading = std::function<Record(const Component&, LeftOut&)>;

// The text of the component that was made of `properties`. It is read again: each property that doesn't come back as it
// was is counted as left out, under its name. Throws a FormatFault if the record is too large to be read again.
std::string writtenText(const Component& component, const Reading& read, std::span<const CEPROPVAL> properties,
                        LeftOut& leftOut);

}  // namespace database_formats
