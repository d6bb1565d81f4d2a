// unpacked_stream.h - reads the raw bytes of an item. They are unpacked block by block, so only one block is in memory.
//
// UnpackedStream uses the static buffers of stream_decoding.h. So only one stream can be read at a time.
#pragma once

#include "archive/listed_set.h"
#include "set/stream_decoding.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace archive {

class UnpackedStream {
public:
    UnpackedStream(const OpenFile& data, const ListEntry& entry);

    // Returns the number of bytes read. It is less than the size of `buffer` only if the stream ends or has a fault.
    // skip() returns false in these cases.
    [[nodiscard]] std::size_t read(std::span<std::byte> buffer);
    [[nodiscard]] bool skip(std::uint64_t bytes);

    // The number of raw bytes that were read or skipped so far.
    std::uint64_t taken() const { return taken_; }

    // Skips the rest, checks the whole stream by the rules of DecodeStream, and returns the first fault.
    [[nodiscard]] StreamFault finish();

private:
    std::span<const std::byte> ahead();
    void take(std::size_t bytes);
    void nextBlock();

    StreamReader reader_{};
    StreamFault fault_;
    bool ended_ = false;      // the closing block was read
    std::size_t filled_ = 0;  // number of raw bytes of the current block
    std::size_t next_ = 0;    // offset of the next raw byte in gRawBuffer
    std::uint64_t taken_ = 0;
};

}  // namespace archive
