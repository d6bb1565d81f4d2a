// read_ahead.h - reads more of a file than was asked for, so that the next small reads need no call on the host.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace platform::file {

struct ReadResult {
    std::size_t bytes = 0;  // the number of bytes read, also if `error` isn't 0
    DWORD error = 0;
};

class ReadAhead {
public:
    // Reads from `offset`. `knownSize` is the length of the file as far as this process knows it. `endIsFirm` says that
    // nobody else may write to the file. In this case, after a read has found the end of the file, later reads at the
    // end don't ask the host.
    [[nodiscard]] ReadResult read(int file, std::uint64_t offset, std::span<std::byte> out, std::uint64_t knownSize,
                                  bool endIsFirm);

    // Drops the bytes that were read ahead. Call it when bytes of the file have changed.
    void forget();

private:
    struct Fetched {
        std::size_t came = 0;   // bytes that the host delivered
        std::size_t asked = 0;  // bytes that it was asked for
        std::size_t taken = 0;  // bytes copied to the caller's buffer
        long error = 0;
    };

    std::size_t takeBuffered(std::uint64_t offset, std::span<std::byte> out) const;
    [[nodiscard]] Fetched fetch(int file, std::uint64_t offset, std::span<std::byte> out, std::uint64_t knownSize);
    [[nodiscard]] long fill(int file, std::uint64_t offset, std::uint64_t knownSize);

    std::unique_ptr<std::byte[]> buffer_;
    std::uint64_t start_ = 0;  // offset of the first byte in the buffer
    std::size_t filled_ = 0;
    std::size_t nextFill_ = 0;                     // bytes of the latest fetch
    std::uint64_t endSeenAt_ = ~std::uint64_t{0};  // offset at which a read found the end
};

}  // namespace platform::file
