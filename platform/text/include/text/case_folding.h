// case_folding.h - simple case folding, one character at a time and independent of the locale.
#pragma once

#include <string_view>

namespace platform::text {

namespace detail {
[[nodiscard]] char16_t foldBeyondAscii(char16_t character);
}

// Returns the small letter of a common capital in Latin, Greek, Cyrillic, Armenian or full-width Latin. Variants of a
// letter, such as the micro sign and the sigma at a word's end, also become the usual small letter. Every other
// character is returned unchanged. One character folds to one character, so the German sharp s is unchanged too.
[[nodiscard]] inline char16_t foldCase(char16_t character)
{
    if (character < 0x80)
        return character >= u'A' && character <= u'Z' ? static_cast<char16_t>(character + 32) : character;
    return detail::foldBeyondAscii(character);
}

// Compares the folded code units in order. The result is negative if `left` comes first, 0 if both are equal, and
// positive if `right` comes first.
[[nodiscard]] int compareWithoutCase(std::u16string_view left, std::u16string_view right);

}  // namespace platform::text
