// value_text.h - converts a property's value to text, and back without loss. CSV uses this text for its cells.
//
// The meaning of the text depends on the property's type:
//   number  a decimal number, such as -5 or 0.25
//   time    a moment as in moment_text.h. After the year 9999: the number of 100 ns steps since 1601.
//   text    UTF-8
//   blob    UTF-8, if its bytes are valid UTF-8
// A value that can't be written in this way is written in hexadecimal digits: a text as its UTF-16 units after
// "utf16:", a blob as its bytes after "hex:", and a value of any other type after "bits:" (see bitsOf() in
// hex_digits.h).
#pragma once

#include "database_formats/record.h"

#include "ce/store.h"

#include <string>
#include <string_view>

namespace database_formats {

// Says how a text or a blob with line ends or tabs is written. Kept: the line ends and tabs are written unchanged.
// Coded: the whole value is written in hexadecimal digits. A value with any other control character is always written
// in hexadecimal digits.
enum class Controls { Kept, Coded };

std::string valueText(const CEPROPVAL& property, Controls controls);

// Returns whether the property is a number 0. Some file formats have no way to distinguish a number 0 from a missing
// number.
bool isZero(const CEPROPVAL& property);

// Adds a property with the value that the text represents. Throws a FormatFault if the text isn't a value of the type
// that `id` contains, or if the record can't hold the property.
void addFromText(Record& record, CEPROPID id, WORD flags, std::string_view text);

// Returns the flags of a property. Throws a FormatFault if the text isn't a decimal number of at most 16 bits.
WORD flagsFrom(std::string_view digits);

// Converts UTF-8 to UTF-16. Throws a FormatFault if the text isn't valid UTF-8.
std::u16string validText(std::string_view utf8);

// Adds the text to the record unless the text is empty. Throws a FormatFault if the text isn't valid UTF-8.
void addUtf8(Record& record, CEPROPID id, std::string_view utf8);
bool isValidUtf8(std::string_view bytes);

}  // namespace database_formats
