// hex_digits.h - what lies in the store as hexadecimal digits, and back. Each reading throws a FormatFault.
#pragma once

#include "ce/store.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace database_formats {

[[nodiscard]] std::string hexadecimal(std::uint64_t number, unsigned digits);

// At most sixteen digits, all of them; nothing otherwise.
[[nodiscard]] std::optional<std::uint64_t> fromHexadecimal(std::string_view digits);

[[nodiscard]] std::string digitsOf(const CEBLOB& blob);
[[nodiscard]] std::string bytesOf(std::string_view digits);

// The bits of a value as they stand: sixteen digits or, if the upper half of its sixteen bytes is in use, thirty-two.
[[nodiscard]] std::string bitsOf(const CEVALUNION& value);
[[nodiscard]] CEVALUNION fromBits(std::string_view digits);

// Exactly eight digits.
[[nodiscard]] CEPROPID idOf(std::string_view digits);

}  // namespace database_formats
