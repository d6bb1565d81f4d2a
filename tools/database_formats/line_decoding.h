// line_decoding.h - what older cards do to a line's value: quoted-printable, BASE64, character sets, fewer escapes.
#pragma once

#include "content_line.h"

namespace database_formats {

// Of a line that isn't taken apart yet.
[[nodiscard]] bool isQuotedPrintable(std::string_view line);

// Makes the value UTF-8 by what the parameters tell. Where that isn't possible it stays and the line says so in
// `fault`, of BASE64 in `binary` too; where they don't tell, in `guessed`.
void decode(ContentLine& line);

// A value of vCard 2.1, where a backslash escapes but ";", "," and itself, as the later versions write it.
[[nodiscard]] std::string withLaterEscapes(std::string_view value);

}  // namespace database_formats
