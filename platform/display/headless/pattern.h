// pattern.h - the patterns of a script, and texts as it compares them.
#pragma once

#include <string>
#include <string_view>

namespace platform::headless {

// The text on one line: each line break (\r\n, \r or \n) as the two characters \n.
std::u16string onOneLine(std::u16string_view text);

// True if the pattern matches the whole text, with regard to case. * matches any characters, ? matches one. Call
// onOneLine() before, if the text can have line breaks.
bool matches(std::u16string_view pattern, std::u16string_view text);

}  // namespace platform::headless
