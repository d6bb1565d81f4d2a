// screen_text.h - makes texts from sets, devices and files safe to print: no control character reaches the terminal.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace screen_text {

// UTF-8. Control characters, and characters that change the direction of writing, are shown as <U+001B>. No file on a
// device has a name with < or >, so the result is unambiguous for names of files.
std::string onScreen(std::u16string_view text);

// The same for bytes of the host. They should be UTF-8. Other bytes become U+FFFD.
std::string onScreen(std::string_view text);

// The same for each line. Line breaks stay, and `indent` is added before each line.
std::string linesOnScreen(std::u16string_view text, std::string_view indent);

// "1 item", "2 items".
std::string counted(std::uint64_t number, std::string_view thing);

}  // namespace screen_text
