// value_text.h - a property's value as text and back, without loss: a cell of CSV, a line of our own in vCard,
// iCalendar.
//
// The property's type tells what the text means: a number in decimal digits; a time as moment_text.h writes it, or its
// number of 100 ns steps since 1601 where no calendar reaches; a text as it stands; a blob as text if it is one. What
// that can't carry stands as it lies in the store, behind "utf16:", "hex:" or "bits:".
#pragma once

#include "database_formats/record.h"

#include "ce/store.h"

#include <string>
#include <string_view>

namespace database_formats {

// What becomes of control characters in a text: line ends and tabs are kept where the format can hold them.
enum class Controls { Kept, Coded };

[[nodiscard]] std::string valueText(const CEPROPVAL& property, Controls controls);

// Adds the property whose value a text tells. Throws a FormatFault.
void addFromText(Record& record, CEPROPID id, WORD flags, std::string_view text);

// A property's flags in decimal digits. Throws a FormatFault.
[[nodiscard]] WORD flagsFrom(std::string_view digits);

// UTF-8 that is known to be whole, as UTF-16. Throws a FormatFault for any other.
[[nodiscard]] std::u16string validText(std::string_view utf8);
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

}  // namespace database_formats
