// host_name.h - converts file names between the device and the host (the Linux system) without loss.
//
// A host name consists of any bytes except '/' and NUL, usually UTF-8. A byte that a device name can't contain becomes
// its escape, the private-use character U+F700 + byte. These bytes are escaped: each byte of invalid UTF-8, each of \ *
// ? " < > |, and each byte of a character from U+F700 to U+F7FF, because such a character would look like an escape. So
// every host name has exactly one device name. A device name is valid only if it is the device name of a host name. No
// host name contains '/' or NUL, or is "." or "..". So a valid device name never stands for a name with '/' or NUL, or
// for "." or "..", even if the device name contains escapes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::text {

// Converts one name, not a path. `hostName` must not be empty, "." or "..", and must not contain '/' or NUL.
[[nodiscard]] std::u16string toDeviceName(std::string_view hostName);

// Returns the host name, or nothing if the device name is invalid. It is invalid if it is empty, "." or "..", if it
// contains \ / * ? " < > |, NUL, a lone surrogate or an escape that toDeviceName wouldn't make, or if its host name
// would have more than 255 bytes.
[[nodiscard]] std::optional<std::string> toHostName(std::u16string_view deviceName);

// Converts a text that contains names to a text for display, which can't be converted back. It replaces the escapes,
// because no font can show them. The escape of one of * ? " < > | becomes that character. An escaped backslash becomes
// U+2216, since \ separates names. An escaped byte from 0x80 on becomes U+FFFD and the byte's two hexadecimal digits,
// so that different names look different.
[[nodiscard]] std::u16string toShown(std::u16string_view text);

// Convert plain text (not names) between UTF-8 and UTF-16. Invalid bytes and lone surrogates become U+FFFD.
[[nodiscard]] std::string toUtf8(std::u16string_view text);
[[nodiscard]] std::u16string fromUtf8(std::string_view text);

}  // namespace platform::text
