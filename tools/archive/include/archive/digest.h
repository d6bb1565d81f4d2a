// digest.h - SHA-256, for checksum files and for comparing contents without keeping them.
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

// 64 hexadecimal digits in small letters.
std::string hexadecimal(const Digest& digest);
std::optional<Digest> digestFrom(std::string_view digits);

class Sha256 {
public:
    Sha256();
    void add(std::span<const std::byte> bytes);
    // The digest of everything that was added since the last call. The object can then be used again.
    Digest finish();

private:
    sha256_ctx context_{};
};

}  // namespace archive
