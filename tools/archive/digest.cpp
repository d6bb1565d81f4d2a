#include "archive/digest.h"

#include <openssl/evp.h>

#include <charconv>
#include <stdexcept>

namespace archive {

namespace {

void require(bool worked)
{
    if (!worked)
        throw std::runtime_error("SHA-256 can't be computed");
}

}  // namespace

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

Sha256::Sha256() : context_(EVP_MD_CTX_new())
{
    require(context_ != nullptr);
    begin();
}

// The algorithm is looked up once, because the look-up takes longer than hashing a record.
void Sha256::begin()
{
    static const EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    require(algorithm != nullptr && EVP_DigestInit_ex2(context_.get(), algorithm, nullptr) == 1);
}

void Sha256::add(std::span<const std::byte> bytes)
{
    require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1);
}

Digest Sha256::finish()
{
    Digest digest{};
    unsigned size = 0;
    require(EVP_DigestFinal_ex(context_.get(), reinterpret_cast<unsigned char*>(digest.data()), &size) == 1 &&
            size == digest.size());
    begin();
    return digest;
}

void Sha256::Free::operator()(evp_md_ctx_st* context) const
{
    EVP_MD_CTX_free(context);
}

}  // namespace archive
