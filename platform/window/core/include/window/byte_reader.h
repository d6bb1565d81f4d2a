// byte_reader.h - reads little-endian fields from untrusted bytes. A read or skip past the end makes failed() true.
// From then on all reads return zero or an empty text.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <span>
#include <string>

namespace platform::window {

class ByteReader {
public:
    explicit ByteReader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    bool failed() const { return failed_; }

    WORD word()
    {
        if (!has(2))
            return 0;
        const auto low = std::to_integer<unsigned>(bytes_[at_]);
        const auto high = std::to_integer<unsigned>(bytes_[at_ + 1]);
        at_ += 2;
        return static_cast<WORD>(low | (high << 8));
    }

    DWORD dword()
    {
        const WORD low = word();
        return MAKELONG(low, word());
    }

    SHORT signedWord() { return static_cast<SHORT>(word()); }

    // Returns the UTF-16 text up to the next NUL, and skips the NUL.
    std::u16string text()
    {
        std::u16string result;
        for (WORD unit = word(); unit != 0; unit = word())
            result += static_cast<char16_t>(unit);
        return result;
    }

    void skip(std::size_t count)
    {
        if (has(count))
            at_ += count;
    }

    // Skips to the next offset that is a multiple of 4. If that offset is past the end, the next read fails.
    void alignToDword() { at_ = (at_ + 3) & ~std::size_t{3}; }

private:
    bool has(std::size_t count)
    {
        if (failed_ || at_ > bytes_.size() || bytes_.size() - at_ < count)
            failed_ = true;
        return !failed_;
    }

    std::span<const std::byte> bytes_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

}  // namespace platform::window
