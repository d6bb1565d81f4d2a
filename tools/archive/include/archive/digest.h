// digest.h - computes SHA-256 digests, for checksum files and for comparing contents without storing them.
#pragma once

#include <nettle/sha2.h>

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace archive {

using Digest = std::array<std::byte, 32>;

// hexadecimal() returns the digest as 64 hexadecimal digits in small letters. digestFrom() converts 64 digits to the
// digest, and returns nothing for any other text.
std::string hexadecimal(const Digest& digest);
std::optional<Digest> digestFrom(std::string_view digits);

class Sha256 {
public:
    Sha256();
    void add(std::span<const std::byte> bytes);
    // Returns the digest of all bytes that were added since the last finish(). The object can be used again afterwards.
    Digest finish();

private:
    sha256_ctx context_{};
};

}  // namespace archive
