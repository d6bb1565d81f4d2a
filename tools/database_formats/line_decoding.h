// line_decoding.h - decodes values of vCard 2.1 and 3.0: quoted-printable, BASE64, character sets, the escapes of 2.1.
#pragma once

#include "content_line.h"

namespace database_formats {

// Returns whether the value of a line is in quoted-printable. `line` is the whole line as in the file.
bool isQuotedPrintable(std::string_view line);

// Converts the value to UTF-8 as the parameters of the line say. If the character set had to be guessed, sets
// `guessed`. If the conversion fails, the value doesn't change, and `fault` says why the conversion failed. If the line
// has an encoding or a CHARSET, a failure also sets `leftOut`. Otherwise `leftOut` stays false, because the user can
// remove the fault by converting the whole file to UTF-8.
void decode(ContentLine& line);

// Converts a value of vCard 2.1 to the escapes of later versions. In 2.1 a backslash escapes only ";", "," and itself.
std::string withLaterEscapes(std::string_view value);

}  // namespace database_formats
