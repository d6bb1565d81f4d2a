// case_folding.h - letters without their case, one character at a time and without regard to any locale.
#pragma once

#include <string_view>

namespace platform::text {

namespace detail {
[[nodiscard]] char16_t foldBeyondAscii(char16_t character);
}

// The small letter of a capital in Latin, Greek, Cyrillic, Armenian or full-width Latin; every other
// character is its own. Only single characters map to single ones: the German sharp s stays itself.
[[nodiscard]] inline char16_t foldCase(char16_t character)
{
    if (character < 0x80)
        return character >= u'A' && character <= u'Z' ? static_cast<char16_t>(character + 32) : character;
    return detail::foldBeyondAscii(character);
}

// Below 0, 0 or above 0 by folded code unit.
[[nodiscard]] int compareWithoutCase(std::u16string_view left, std::u16string_view right);

}  // namespace platform::text
