// pattern.h - compares texts on the screen with the patterns of a script.
#pragma once

#include <string>
#include <string_view>

namespace platform::headless {

// Puts the text on one line: replaces each line break (\r\n, \r or \n) by a backslash and an n.
std::u16string onOneLine(std::u16string_view text);

// True if the pattern matches the whole text, with regard to case. * matches any number of characters, ? matches one
// character. A caller whose text can have line breaks passes the result of onOneLine().
bool matches(std::u16string_view pattern, std::u16string_view text);

}  // namespace platform::headless
