// exact_lines.h - lines of our own that make a card, an appointment or a task the very record that it was.
//
// X-QUILLBOX-PROPERTY;ID=4005001f;FLAGS=2:VALUE   a property that the format's own lines don't hold, or not exactly
// X-QUILLBOX-WITHOUT:40160013                    properties that reading those lines gives, and the record lacks
// X-QUILLBOX-ORDER:3a06001f,...                  the properties' order, if it isn't the usual one
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

// How a format reads its own lines of a component.
using PlainReading = std::function<Record(const Component&, LeftOut&)>;

// The record that a component is, by its plain lines and ours. Throws a FormatFault.
[[nodiscard]] Record exactRecord(const Component& component, const PlainReading& read, LeftOut& leftOut);

// The component as text, with the lines that are needed so that exactRecord gives `properties` again: it reads what it
// has written and compares. Throws a FormatFault for a record that is too large for that.
[[nodiscard]] std::string exactText(Component component, const PlainReading& read,
                                    std::span<const CEPROPVAL> properties);

}  // namespace database_formats
