// host_name.h - converts file names between device and host without loss.
//
// A host name consists of any bytes except '/' and NUL, usually UTF-8. A byte that a device name can't contain becomes
// its escape, the private-use character U+F700 + byte. These bytes are escaped: each byte of invalid UTF-8, each of \ *
// ? " < > |, and each byte of a character from U+F700 to U+F7FF, because such a character would look like an escape. So
// every host name has exactly one device name. A device name that no host name converts to is invalid. Therefore
// escapes can't produce '/', NUL, "." or "..".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::text {

// Converts one name, not a path. `hostName` must not be empty, "." or "..", and must not contain '/' or NUL.
[[nodiscard]] std::u16string toDeviceName(std::string_view hostName);

// Returns nothing for a name that no host name converts to. Such a name is empty, "." or "..", or it contains \ / * ? "
// < > |, NUL, a lone surrogate or an escape that toDeviceName wouldn't make, or it has more than 255 bytes on the host.
[[nodiscard]] std::optional<std::string> toHostName(std::u16string_view deviceName);

// Converts a text that contains names to a text for display, which can't be converted back. No font can show escapes,
// so they become the host's characters. An escaped backslash becomes U+2216, since \ separates names. An escaped byte
// of invalid UTF-8 becomes U+FFFD and its two hexadecimal digits, so that different names look different.
[[nodiscard]] std::u16string toShown(std::u16string_view text);

// Convert plain text (not names) between UTF-8 and UTF-16. Invalid bytes and lone surrogates become U+FFFD.
[[nodiscard]] std::string toUtf8(std::u16string_view text);
[[nodiscard]] std::u16string fromUtf8(std::string_view text);

}  // namespace platform::text
