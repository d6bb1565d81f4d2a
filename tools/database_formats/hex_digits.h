// hex_digits.h - values of the store as hexadecimal digits, and back.
#pragma once

#include "ce/store.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace database_formats {

std::string hexadecimal(std::uint64_t number, unsigned digits);

// Nothing unless the text consists of one to sixteen hexadecimal digits.
std::optional<std::uint64_t> fromHexadecimal(std::string_view digits);

// Two digits for each byte. bytesOf throws a FormatFault for another text.
std::string digitsOf(const CEBLOB& blob);
std::string bytesOf(std::string_view digits);

// The sixteen bytes of a value as two numbers, the upper one first: thirty-two digits, or only the sixteen of the lower
// number if the upper one is 0. fromBits throws a FormatFault for another text.
std::string bitsOf(const CEVALUNION& value);
CEVALUNION fromBits(std::string_view digits);

// From exactly eight digits. Throws a FormatFault for another text.
CEPROPID idOf(std::string_view digits);

}  // namespace database_formats
