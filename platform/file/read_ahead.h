// read_ahead.h - small reads that follow one another, served from one larger read.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace platform::file {

struct ReadResult {
    std::size_t bytes = 0;  // that came, before a fault too
    DWORD error = 0;
};

class ReadAhead {
public:
    // Bytes from `place` on. `knownSize` is the file's length as far as known, and `endIsFirm` says that
    // nobody may write meanwhile: a read that ended there needn't be tried again.
    [[nodiscard]] ReadResult read(int file, std::uint64_t place, std::span<std::byte> out, std::uint64_t knownSize,
                                  bool endIsFirm);

    // The file has changed.
    void forget();

private:
    struct Fetched {
        std::size_t came = 0;   // from the host
        std::size_t asked = 0;  // of the host
        std::size_t taken = 0;  // into the caller's buffer
        long error = 0;
    };

    [[nodiscard]] std::size_t takeBuffered(std::uint64_t place, std::span<std::byte> out) const;
    [[nodiscard]] Fetched fetch(int file, std::uint64_t place, std::span<std::byte> out, std::uint64_t knownSize);
    [[nodiscard]] long fill(int file, std::uint64_t place, std::uint64_t knownSize);

    std::unique_ptr<std::byte[]> buffer_;
    std::uint64_t start_ = 0;  // place of the first byte in the buffer
    std::size_t filled_ = 0;
    std::size_t nextFill_ = 0;                     // how much to read ahead next
    std::uint64_t endSeenAt_ = ~std::uint64_t{0};  // a read found the end here
};

}  // namespace platform::file
