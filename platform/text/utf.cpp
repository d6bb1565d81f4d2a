#include "text/utf.h"

namespace platform::text {

Decoded decodeUtf8(std::string_view bytes)
{
    const auto first = static_cast<unsigned char>(bytes.front());
    if (first < 0x80)
        return {first, 1};

    const unsigned length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || bytes.size() < length)
        return {};
    char32_t character = first & (0x7FU >> length);
    for (unsigned at = 1; at < length; ++at) {
        const auto next = static_cast<unsigned char>(bytes[at]);
        if ((next & 0xC0) != 0x80)
            return {};
        character = (character << 6) | (next & 0x3FU);
    }
    const char32_t smallest = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
    if (character < smallest || character > 0x10FFFF || (character >= 0xD800 && character < 0xE000))
        return {};
    return {character, length};
}

Decoded decodeUtf16(std::u16string_view text)
{
    const char16_t first = text.front();
    if (!isSurrogate(first))
        return {first, 1};
    if (!isHighSurrogate(first) || text.size() < 2 || !isLowSurrogate(text[1]))
        return {};
    return {0x10000 + ((first & 0x3FFU) << 10) + (text[1] & 0x3FFU), 2};
}

unsigned encodeUtf8(char32_t character, char (&out)[4])
{
    if (character < 0x80) {
        out[0] = static_cast<char>(character);
        return 1;
    }
    const unsigned length = character >= 0x10000 ? 4 : character >= 0x800 ? 3 : 2;
    for (unsigned at = length - 1; at > 0; --at) {
        out[at] = static_cast<char>(0x80 | (character & 0x3F));
        character >>= 6;
    }
    out[0] = static_cast<char>((0xF00U >> length) | character);
    return length;
}

unsigned encodeUtf16(char32_t character, char16_t (&out)[2])
{
    if (character < 0x10000) {
        out[0] = static_cast<char16_t>(character);
        return 1;
    }
    out[0] = static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
    out[1] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    return 2;
}

}  // namespace platform::text
