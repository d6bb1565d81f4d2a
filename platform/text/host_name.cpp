#include "text/host_name.h"

#include "text/utf.h"

#include <algorithm>
#include <array>

namespace platform::text {

namespace {

// A byte is escaped as the character U+F700 + byte.
constexpr char16_t EscapeBase = 0xF700;
constexpr std::size_t HostNameBytes = 255;  // the longest name that the host's file systems allow

constexpr bool isRefusedInNames(char16_t unit)
{
    return unit == u'\\' || unit == u'*' || unit == u'?' || unit == u'"' || unit == u'<' || unit == u'>' ||
           unit == u'|';
}

// ASCII bytes that need no escape in a device name.
constexpr std::array<bool, 256> plainBytes = [] {
    std::array<bool, 256> plain{};
    for (unsigned byte = 0; byte < 0x80; ++byte)
        plain[byte] = !isRefusedInNames(static_cast<char16_t>(byte));
    return plain;
}();

constexpr bool isEscape(char32_t character)
{
    return character >= EscapeBase && character <= EscapeBase + 0xFF;
}

void appendEscaped(std::u16string& name, std::string_view bytes)
{
    for (const char byte : bytes)
        name.push_back(static_cast<char16_t>(EscapeBase + static_cast<unsigned char>(byte)));
}

// Converts `rest`, the part of a host name that begins with the first byte that needs decoding or an escape (see
// plainBytes). Appends the result to `name`.
void appendDecoded(std::u16string& name, std::string_view rest)
{
    while (!rest.empty()) {
        const Decoded decoded = decodeUtf8(rest);
        const std::string_view bytes = rest.substr(0, std::max(decoded.units, 1U));
        char16_t units[2];
        if (decoded.units == 0 || isEscape(decoded.character) ||
            isRefusedInNames(static_cast<char16_t>(std::min<char32_t>(decoded.character, 0xFFFF))))
            appendEscaped(name, bytes);
        else
            name.append(units, encodeUtf16(decoded.character, units));
        rest.remove_prefix(bytes.size());
    }
}

}  // namespace

std::u16string toDeviceName(std::string_view hostName)
{
    const auto* firstOther = std::find_if_not(hostName.begin(), hostName.end(),
                                              [](char byte) { return plainBytes[static_cast<unsigned char>(byte)]; });
    std::u16string name(hostName.begin(), firstOther);
    if (firstOther != hostName.end())
        appendDecoded(name, hostName.substr(name.size()));
    return name;
}

std::optional<std::string> toHostName(std::u16string_view deviceName)
{
    std::string host;
    host.reserve(deviceName.size());
    for (const char16_t unit : deviceName) {
        if (unit >= 0x80 || !plainBytes[unit])
            break;
        host.push_back(static_cast<char>(unit));
    }
    bool escaped = false;
    for (std::u16string_view rest = deviceName.substr(host.size()); !rest.empty();) {
        const Decoded decoded = decodeUtf16(rest);
        if (decoded.units == 0 || isRefusedInNames(rest.front()))
            return std::nullopt;
        if (isEscape(decoded.character)) {
            host.push_back(static_cast<char>(decoded.character - EscapeBase));
            escaped = true;
        } else {
            char bytes[4];
            host.append(bytes, encodeUtf8(decoded.character, bytes));
        }
        rest.remove_prefix(decoded.units);
    }
    if (host.empty() || host == "." || host == ".." || host.size() > HostNameBytes ||
        host.find('/') != std::string::npos || host.find('\0') != std::string::npos)
        return std::nullopt;
    // A name with a needless escape, such as the escape of a letter, would be a second name of the same file.
    if (escaped && toDeviceName(host) != deviceName)
        return std::nullopt;
    return host;
}

std::u16string toShown(std::u16string_view text)
{
    constexpr char16_t SetMinus = 0x2216;
    constexpr std::u16string_view Digits = u"0123456789ABCDEF";
    std::u16string shown;
    shown.reserve(text.size());
    for (const char16_t unit : text) {
        const auto byte = static_cast<char16_t>(unit - EscapeBase);
        if (!isEscape(unit) || (byte < 0x80 && plainBytes[byte]))
            shown.push_back(unit);  // needless escapes never occur in valid names; show them unchanged
        else if (byte < 0x80)
            shown.push_back(byte == u'\\' ? SetMinus : byte);
        else
            shown.append({char16_t{ReplacementCharacter}, Digits[byte >> 4], Digits[byte & 0xF]});
    }
    return shown;
}

std::string toUtf8(std::u16string_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Decoded decoded = decodeUtf16(text);
        char bytes[4];
        result.append(bytes, encodeUtf8(decoded.units == 0 ? ReplacementCharacter : decoded.character, bytes));
        text.remove_prefix(std::max(decoded.units, 1U));
    }
    return result;
}

std::u16string fromUtf8(std::string_view text)
{
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Decoded decoded = decodeUtf8(text);
        char16_t units[2];
        result.append(units, encodeUtf16(decoded.units == 0 ? ReplacementCharacter : decoded.character, units));
        text.remove_prefix(std::max(decoded.units, 1U));
    }
    return result;
}

}  // namespace platform::text
