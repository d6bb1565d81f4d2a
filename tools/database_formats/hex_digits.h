// hex_digits.h - converts values of the object store to hexadecimal digits, and back.
#pragma once

#include "ce/store.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace database_formats {

std::string hexadecimal(std::uint64_t number, unsigned digits);

// Returns nothing unless the text consists of one to sixteen hexadecimal digits.
std::optional<std::uint64_t> fromHexadecimal(std::string_view digits);

// digitsOf() writes two hexadecimal digits for each byte, and bytesOf() converts them back. bytesOf() throws a
// FormatFault for any other text.
std::string digitsOf(const CEBLOB& blob);
std::string bytesOf(std::string_view digits);

// bitsOf() converts the sixteen bytes of a value to hexadecimal digits, and fromBits() converts them back. The bytes
// are two numbers of eight bytes. In the text, the upper number comes first. If the upper number is 0, the text has
// only the sixteen digits of the lower number. Otherwise it has thirty-two digits. fromBits() throws a FormatFault for
// any other text.
std::string bitsOf(const CEVALUNION& value);
CEVALUNION fromBits(std::string_view digits);

// Parses exactly eight hexadecimal digits. Throws a FormatFault for any other text.
CEPROPID idOf(std::string_view digits);

}  // namespace database_formats
