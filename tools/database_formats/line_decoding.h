// line_decoding.h - decodes the values in older cards: quoted-printable, BASE64, character sets, fewer escapes.
#pragma once

#include "content_line.h"

namespace database_formats {

// `line` is a line as in the file.
bool isQuotedPrintable(std::string_view line);

// Converts the value to UTF-8 as the parameters of the line say. If that fails, the value stays as it is, and `fault`
// says why. `leftOut` is set unless the line is plain text, which the user can convert. If the character set had to be
// guessed, `guessed` is set.
void decode(ContentLine& line);

// Converts a value of vCard 2.1 to the escapes of later versions. In 2.1 a backslash escapes only ";", "," and itself.
std::string withLaterEscapes(std::string_view value);

}  // namespace database_formats
