#include "hex_digits.h"

#include "database_formats/format_fault.h"

#include <charconv>
#include <cstring>

namespace database_formats {

static_assert(sizeof(CEVALUNION) == 2 * sizeof(std::uint64_t));

std::string hexadecimal(std::uint64_t number, unsigned digits)
{
    std::string text(digits, '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit, number >>= 4)
        *digit = "0123456789abcdef"[number & 0xF];
    return text;
}

std::optional<std::uint64_t> fromHexadecimal(std::string_view digits)
{
    std::uint64_t number = 0;
    const char* const end = digits.data() + digits.size();
    if (digits.empty() || digits.size() > 16 || std::from_chars(digits.data(), end, number, 16).ptr != end)
        return std::nullopt;
    return number;
}

std::string digitsOf(const CEBLOB& blob)
{
    std::string digits;
    digits.reserve(std::size_t{2} * blob.dwCount);
    for (DWORD at = 0; at < blob.dwCount; ++at)
        digits += hexadecimal(blob.lpb[at], 2);
    return digits;
}

std::string bytesOf(std::string_view digits)
{
    if (digits.size() % 2 != 0)
        throw FormatFault("a value isn't bytes in hexadecimal digits");
    std::string bytes;
    bytes.reserve(digits.size() / 2);
    for (; !digits.empty(); digits.remove_prefix(2)) {
        const auto byte = fromHexadecimal(digits.substr(0, 2));
        if (!byte)
            throw FormatFault("a value isn't bytes in hexadecimal digits");
        bytes.push_back(static_cast<char>(*byte));
    }
    return bytes;
}

std::string bitsOf(const CEVALUNION& value)
{
    std::uint64_t bits[2] = {};
    std::memcpy(bits, &value, sizeof bits);
    return (bits[1] != 0 ? hexadecimal(bits[1], 16) : "") + hexadecimal(bits[0], 16);
}

CEVALUNION fromBits(std::string_view digits)
{
    const bool wide = digits.size() == 32;
    const auto low = wide || digits.size() == 16 ? fromHexadecimal(digits.substr(digits.size() - 16)) : std::nullopt;
    const auto high = wide ? fromHexadecimal(digits.substr(0, 16)) : 0;
    if (!low || !high)
        throw FormatFault("\"bits\" aren't sixteen or thirty-two hexadecimal digits");
    const std::uint64_t bits[2] = {*low, *high};
    CEVALUNION value{};
    std::memcpy(&value, bits, sizeof bits);
    return value;
}

CEPROPID idOf(std::string_view digits)
{
    const auto id = digits.size() == 8 ? fromHexadecimal(digits) : std::nullopt;
    if (!id)
        throw FormatFault("an \"id\" isn't eight hexadecimal digits");
    return static_cast<CEPROPID>(*id);
}

}  // namespace database_formats
