// line_decoding.h - what older cards do to a line's value: quoted-printable, character sets.
#pragma once

#include "content_line.h"

namespace database_forms {

// Of a line that isn't taken apart yet.
[[nodiscard]] bool isQuotedPrintable(std::string_view line);

// Makes the value UTF-8 by what the parameters tell. Throws a FormFault if it isn't that then.
void decode(ContentLine& line);

}  // namespace database_forms
