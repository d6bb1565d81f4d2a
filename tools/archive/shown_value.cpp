#include "archive/shown_value.h"

#include "archive/digest.h"
#include "database_formats/value_text.h"

#include "registry/registry_text_writer.h"
#include "text/host_name.h"

#include <utility>

namespace archive {

std::string shortText(const std::string& text, std::size_t mostBytes)
{
    if (text.size() <= mostBytes)
        return text;
    std::size_t end = mostBytes;
    while ((static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80)
        end--;  // not inside a character
    Sha256 hash;
    hash.add(std::as_bytes(std::span(text)));
    return text.substr(0, end) + "... (" + std::to_string(text.size()) + " bytes, sha256 " +
           hexadecimal(hash.finish()) + ")";
}

std::string shownValue(const CEPROPVAL& property)
{
    return shortText(database_formats::valueText(property, database_formats::Controls::Coded));
}

// RegistryTextWriter writes "@=", the value with a line break after each piece of a long value, and a closing comment.
// This function returns only the value, without the line breaks.
std::string shownRegistryValue(DWORD type, std::span<const std::byte> data)
{
    std::u16string text;
    platform::registry::RegistryTextWriter writer([&](std::span<const std::byte> bytes) {
        for (std::size_t at = 0; at + 1 < bytes.size(); at += 2)
            text += static_cast<char16_t>(std::to_integer<unsigned>(bytes[at]) |
                                          std::to_integer<unsigned>(bytes[at + 1]) << 8);
        return true;
    });
    if (!writer.value(u"", type, data) || !writer.finish())
        return "";
    const std::size_t start = text.find(u"@=") + 2;
    std::u16string value = text.substr(start, text.rfind(u"\r\n\r\n; ") - start);
    for (std::size_t at = value.find(u"\\\r\n  "); at != std::u16string::npos; at = value.find(u"\\\r\n  "))
        value.erase(at, 5);
    return shortText(platform::text::toUtf8(value));
}

}  // namespace archive
