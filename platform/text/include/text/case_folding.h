// case_folding.h - simple case folding, one character at a time and independent of the locale.
#pragma once

#include <string_view>

namespace platform::text {

namespace detail {
[[nodiscard]] char16_t foldBeyondAscii(char16_t character);
}

// The small letter of a capital in Latin, Greek, Cyrillic, Armenian or full-width Latin. Every other character is
// returned unchanged. One character folds to one character, so the German sharp s is unchanged too.
[[nodiscard]] inline char16_t foldCase(char16_t character)
{
    if (character < 0x80)
        return character >= u'A' && character <= u'Z' ? static_cast<char16_t>(character + 32) : character;
    return detail::foldBeyondAscii(character);
}

// Compares the folded code units. The result is below 0, 0 or above 0.
[[nodiscard]] int compareWithoutCase(std::u16string_view left, std::u16string_view right);

}  // namespace platform::text
