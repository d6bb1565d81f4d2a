// exact_lines.h - extension lines for what the standard's own lines of a card, an appointment or a task can't hold.
// With them, reading the component gives the same record again.
//
// X-QUILLBOX-PROPERTY;ID=4005001f;FLAGS=2:VALUE   a property that the standard lines don't represent exactly
// X-QUILLBOX-WITHOUT:40160013                    properties that the standard lines give, but the record doesn't have
// X-QUILLBOX-ORDER:3a06001f,...                  the order of the properties, if it isn't the usual one
#pragma once

#include "component.h"
#include "database_formats/left_out.h"
#include "database_formats/record.h"

#include "ce/store.h"

#include <functional>
#include <span>
#include <string_view>

namespace database_formats {

inline constexpr std::string_view ExactPrefix = "X-QUILLBOX-";

// Reads the standard lines of a component.
using StandardReading = std::function<Record(const Component&, LeftOut&)>;

// The record that the standard lines and the extension lines of a component represent. Throws a FormatFault.
Record exactRecord(const Component& component, const StandardReading& read, LeftOut& leftOut);

// The text of the component, with the extension lines that are needed so that exactRecord gives `properties` again. To
// find them, it reads its own text and compares. Throws a FormatFault if the record is too large to be read again.
std::string exactText(Component component, const StandardReading& read, std::span<const CEPROPVAL> properties);

}  // namespace database_formats
