// Folds case by a table. The table covers the scripts with capitals that are common in file names.
#include "text/case_folding.h"

#include <algorithm>
#include <iterator>

namespace platform::text {

namespace {

// Every `step`th character from `first` to `last` is a capital, or a variant of a small letter, such as the sigma at a
// word's end. The character folds to the small letter whose code is higher by `distance`, which can be negative.
struct Capitals {
    char16_t first;
    char16_t last;
    int step;
    int distance;
};

constexpr Capitals capitals[] = {
    // Latin-1, with the micro sign, which folds to the Greek letter
    {0x00B5, 0x00B5, 1, 775},
    {0x00C0, 0x00D6, 1, 32},
    {0x00D8, 0x00DE, 1, 32},
    // Latin Extended-A and the letters of Extended-B in present use
    {0x0100, 0x012E, 2, 1},
    {0x0132, 0x0136, 2, 1},
    {0x0139, 0x0147, 2, 1},
    {0x014A, 0x0176, 2, 1},
    {0x0178, 0x0178, 1, -121},
    {0x0179, 0x017D, 2, 1},
    {0x017F, 0x017F, 1, -268},
    {0x0187, 0x0187, 1, 1},
    {0x018F, 0x018F, 1, 202},
    {0x01A0, 0x01A4, 2, 1},
    {0x01AF, 0x01AF, 1, 1},
    {0x01C4, 0x01C4, 1, 2},
    {0x01C5, 0x01C5, 1, 1},
    {0x01C7, 0x01C7, 1, 2},
    {0x01C8, 0x01C8, 1, 1},
    {0x01CA, 0x01CA, 1, 2},
    {0x01CB, 0x01DB, 2, 1},
    {0x01DE, 0x01EE, 2, 1},
    {0x01F1, 0x01F1, 1, 2},
    {0x01F2, 0x01F4, 2, 1},
    {0x01F8, 0x021E, 2, 1},
    {0x0222, 0x0232, 2, 1},
    {0x0246, 0x024E, 2, 1},
    // Greek
    {0x0370, 0x0372, 2, 1},
    {0x0376, 0x0376, 1, 1},
    {0x037F, 0x037F, 1, 116},
    {0x0386, 0x0386, 1, 38},
    {0x0388, 0x038A, 1, 37},
    {0x038C, 0x038C, 1, 64},
    {0x038E, 0x038F, 1, 63},
    {0x0391, 0x03A1, 1, 32},
    {0x03A3, 0x03AB, 1, 32},
    {0x03C2, 0x03C2, 1, 1},  // the sigma at a word's end
    {0x03CF, 0x03CF, 1, 8},
    {0x03D0, 0x03D0, 1, -30},
    {0x03D1, 0x03D1, 1, -25},
    {0x03D5, 0x03D5, 1, -15},
    {0x03D6, 0x03D6, 1, -22},
    {0x03D8, 0x03EE, 2, 1},
    {0x03F0, 0x03F0, 1, -54},
    {0x03F1, 0x03F1, 1, -48},
    {0x03F4, 0x03F4, 1, -60},
    {0x03F5, 0x03F5, 1, -64},
    {0x03F7, 0x03F7, 1, 1},
    {0x03F9, 0x03F9, 1, -7},
    {0x03FA, 0x03FA, 1, 1},
    {0x03FD, 0x03FF, 1, -130},
    // Cyrillic, Armenian
    {0x0400, 0x040F, 1, 80},
    {0x0410, 0x042F, 1, 32},
    {0x0460, 0x0480, 2, 1},
    {0x048A, 0x04BE, 2, 1},
    {0x04C0, 0x04C0, 1, 15},
    {0x04C1, 0x04CD, 2, 1},
    {0x04D0, 0x052E, 2, 1},
    {0x0531, 0x0556, 1, 48},
    // Latin Extended Additional; Kelvin, Angstrom and Ohm signs; full-width letters
    {0x1E00, 0x1E94, 2, 1},
    {0x1E9B, 0x1E9B, 1, -58},
    {0x1E9E, 0x1E9E, 1, -7615},
    {0x1EA0, 0x1EFE, 2, 1},
    {0x2126, 0x2126, 1, -7517},
    {0x212A, 0x212A, 1, -8383},
    {0x212B, 0x212B, 1, -8262},
    {0xFF21, 0xFF3A, 1, 32},
};

}  // namespace

char16_t detail::foldBeyondAscii(char16_t character)
{
    const auto* after = std::upper_bound(std::begin(capitals), std::end(capitals), character,
                                         [](char16_t wanted, const Capitals& range) { return wanted < range.first; });
    if (after == std::begin(capitals))
        return character;
    const Capitals& range = *(after - 1);
    if (character > range.last || (character - range.first) % range.step != 0)
        return character;
    return static_cast<char16_t>(character + range.distance);
}

int compareWithoutCase(std::u16string_view left, std::u16string_view right)
{
    const std::size_t shorter = std::min(left.size(), right.size());
    for (std::size_t at = 0; at < shorter; ++at) {
        if (left[at] == right[at])
            continue;
        const int difference = foldCase(left[at]) - foldCase(right[at]);
        if (difference != 0)
            return difference;
    }
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

}  // namespace platform::text
