// utf.h - decodes and encodes single characters of UTF-8 and UTF-16.
#pragma once

#include <cstddef>
#include <string_view>

namespace platform::text {

inline constexpr char32_t ReplacementCharacter = 0xFFFD;

inline constexpr bool isHighSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}

inline constexpr bool isLowSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

inline constexpr bool isSurrogate(char16_t unit)
{
    return (unit & 0xF800) == 0xD800;
}

// The number of code units of the character at `at`. It is 2 for a surrogate pair, otherwise 1.
inline constexpr std::size_t characterUnits(std::u16string_view text, std::size_t at)
{
    return isHighSurrogate(text[at]) && at + 1 < text.size() && isLowSurrogate(text[at + 1]) ? 2 : 1;
}

// The length of the longest beginning of `text` that has at most `units` code units and cuts no surrogate pair in two.
inline constexpr std::size_t wholeUnits(std::u16string_view text, std::size_t units)
{
    if (units >= text.size())
        return text.size();
    return units > 0 && isHighSurrogate(text[units - 1]) && isLowSurrogate(text[units]) ? units - 1 : units;
}

struct Decoded {
    char32_t character = 0;
    unsigned units = 0;  // length of the character in bytes or code units; 0 if it is invalid
};

// The first character of `bytes`, which must not be empty. Overlong encodings, surrogates and values above 10FFFF
// are invalid.
[[nodiscard]] Decoded decodeUtf8(std::string_view bytes);

// The first character of `text`, which must not be empty. A lone surrogate is invalid.
[[nodiscard]] Decoded decodeUtf16(std::u16string_view text);

// Encode one valid character, and return the number of bytes or code units written.
unsigned encodeUtf8(char32_t character, char (&out)[4]);
unsigned encodeUtf16(char32_t character, char16_t (&out)[2]);

}  // namespace platform::text
