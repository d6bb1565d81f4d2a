// value_text.h - converts a property's value to text, and back without loss. CSV uses this text for its cells.
//
// The meaning of the text depends on the property's type:
//   number  decimal digits
//   time    a moment as in moment_text.h. After the year 9999: the number of 100 ns steps since 1601.
//   text    UTF-8
//   blob    UTF-8, if its bytes are valid UTF-8
// A value that can't be written in this way is written as its bytes in hexadecimal digits after "utf16:" (a text),
// "hex:" (a blob) or "bits:" (any other type).
#pragma once

#include "database_formats/record.h"

#include "ce/store.h"

#include <string>
#include <string_view>

namespace database_formats {

// Says how a text with line ends or tabs is written. Kept: they are written as they are. Coded: the whole text is
// written in hexadecimal digits. A text with any other control character is always written in hexadecimal digits.
enum class Controls { Kept, Coded };

std::string valueText(const CEPROPVAL& property, Controls controls);

// Returns whether the property is a number 0. Some file formats have no way to distinguish a number 0 from a missing
// number.
bool isZero(const CEPROPVAL& property);

// Adds a property with the value that the text represents. Throws a FormatFault.
void addFromText(Record& record, CEPROPID id, WORD flags, std::string_view text);

// Returns the flags of a property, from decimal digits. Throws a FormatFault.
WORD flagsFrom(std::string_view digits);

// Converts UTF-8 to UTF-16. Throws a FormatFault if the text isn't valid UTF-8.
std::u16string validText(std::string_view utf8);

// Adds the text to the record unless the text is empty. Throws a FormatFault if the text isn't valid UTF-8.
void addUtf8(Record& record, CEPROPID id, std::string_view utf8);
bool isValidUtf8(std::string_view bytes);

}  // namespace database_formats
