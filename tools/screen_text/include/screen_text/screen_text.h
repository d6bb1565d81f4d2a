// screen_text.h - what a set, a device or a file says, made fit for a terminal: no control character reaches it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace screen_text {

// UTF-8; control characters, and those that turn the direction of writing, as <U+001B>. No name of a file on a device
// holds < or >.
[[nodiscard]] std::string onScreen(std::u16string_view text);

// The same of bytes of the host, as a rule UTF-8; what is none becomes U+FFFD.
[[nodiscard]] std::string onScreen(std::string_view text);

// The same line by line: line breaks stay, each line gets `indent` before it.
[[nodiscard]] std::string linesOnScreen(std::u16string_view text, std::string_view indent);

// "1 item", "2 items".
[[nodiscard]] std::string counted(std::uint64_t number, std::string_view thing);

}  // namespace screen_text
