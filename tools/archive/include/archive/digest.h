// digest.h - SHA-256, for checksum files and for comparing contents without keeping them.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct evp_md_ctx_st;

namespace archive {

using Digest = std::array<std::byte, 32>;

// 64 hexadecimal digits in small letters.
std::string hexadecimal(const Digest& digest);
std::optional<Digest> digestFrom(std::string_view digits);

class Sha256 {
public:
    // Throws std::runtime_error if the library refuses to work, as all calls do.
    Sha256();
    void add(std::span<const std::byte> bytes);
    // The digest of everything that was added since the last call. The object can then be used again.
    Digest finish();

private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
    };

    void begin();

    std::unique_ptr<evp_md_ctx_st, Free> context_;
};

}  // namespace archive
