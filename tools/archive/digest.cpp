#include "archive/digest.h"

#include <charconv>

namespace archive {

std::string hexadecimal(const Digest& digest)
{
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string text;
    for (const std::byte byte : digest) {
        text += Digits[std::to_integer<unsigned>(byte >> 4)];
        text += Digits[std::to_integer<unsigned>(byte & std::byte{15})];
    }
    return text;
}

std::optional<Digest> digestFrom(std::string_view digits)
{
    Digest digest{};
    if (digits.size() != 2 * digest.size())
        return std::nullopt;
    for (std::size_t at = 0; at < digest.size(); at++) {
        const char* const first = digits.data() + 2 * at;
        unsigned value = 0;
        if (std::from_chars(first, first + 2, value, 16).ptr != first + 2)
            return std::nullopt;
        digest[at] = static_cast<std::byte>(value);
    }
    return digest;
}

Sha256::Sha256()
{
    sha256_init(&context_);
}

void Sha256::add(std::span<const std::byte> bytes)
{
    sha256_update(&context_, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
}

// sha256_digest() also resets the context, so the object can be used again.
Digest Sha256::finish()
{
    Digest digest{};
    sha256_digest(&context_, digest.size(), reinterpret_cast<std::uint8_t*>(digest.data()));
    return digest;
}

}  // namespace archive
