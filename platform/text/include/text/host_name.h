// host_name.h - names of the device and names of the host, without loss in either direction.
//
// A host name is any bytes but '/' and NUL, as a rule UTF-8. What the device's name space can't hold maps
// to the private-use characters U+F700 + byte: each byte that is no valid UTF-8, and \ * ? " < > |. A host
// name that itself holds a character of U+F700 to U+F7FF has the bytes of that character mapped. So every
// host name has exactly one device name, and a device name that is not the image of a host name is none:
// no private-use character can smuggle in '/', NUL, "." or "..".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::text {

// One name, not a path. `hostName` is neither empty nor "." nor "..", and holds no '/' or NUL.
[[nodiscard]] std::u16string toDeviceName(std::string_view hostName);

// Nothing for a name that no host name maps to: empty, "." or "..", one with \ / * ? " < > | or NUL in it,
// a lone surrogate, a private-use character in other than its one way, or more than 255 bytes on the host.
[[nodiscard]] std::optional<std::string> toHostName(std::u16string_view deviceName);

// A text with names in it, for eyes alone: what no font has a picture for stands as what the host calls it. A
// backslash of a name becomes U+2216, since \ parts names; a byte that is no UTF-8 becomes U+FFFD and its two
// hexadecimal digits, so that names which differ in it still look different. Nothing leads back.
[[nodiscard]] std::u16string toShown(std::u16string_view text);

// Plain text (not names): UTF-8 and UTF-16, what is invalid becoming U+FFFD.
[[nodiscard]] std::string toUtf8(std::u16string_view text);
[[nodiscard]] std::u16string fromUtf8(std::string_view text);

}  // namespace platform::text
