// pattern.h - how a script sees a text, and the patterns that it holds against texts.
#pragma once

#include <string>
#include <string_view>

namespace platform::headless {

// The text on one line: each line break (\r\n, \r or \n) as the two characters \n.
[[nodiscard]] std::u16string onOneLine(std::u16string_view text);

// Does the whole text match? * stands for any run of characters, ? for one; case counts. The text is taken
// as it is: for one with line breaks call onOneLine() before.
[[nodiscard]] bool matches(std::u16string_view pattern, std::u16string_view text);

}  // namespace platform::headless
