// screen_text.h - makes texts from sets, devices and files safe to print: no control character reaches the terminal.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace screen_text {

// Returns the text as UTF-8. Some characters become their number in angle brackets, such as <U+001B>. These are the
// control characters, the line and paragraph separators, and the characters that change the direction of writing. No
// file on a device has a name with < or >, so the result is unambiguous for names of files.
std::string onScreen(std::u16string_view text);

// Does the same as the function above. `text` should be UTF-8, such as a path of the host (the Linux system). Invalid
// bytes become U+FFFD.
std::string onScreen(std::string_view text);

// Calls onScreen for each line of a text. In the result each line begins with `indent` and ends with a line feed.
std::string linesOnScreen(std::u16string_view text, std::string_view indent);

// "1 item", "2 items".
std::string counted(std::uint64_t number, std::string_view thing);

}  // namespace screen_text
