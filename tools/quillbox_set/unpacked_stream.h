// unpacked_stream.h - the raw bytes of an item, unpacked block by block as they are asked for; memory stays at one
// block.
//
// Uses the buffers of compressed_stream.h: one operation at a time.
#pragma once

#include "listed_set.h"
#include "set/stream_decoding.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quillbox_set {

class UnpackedStream {
public:
    UnpackedStream(const OpenFile& data, const ListEntry& entry);

    // Fewer bytes come only where the stream ends or has a fault.
    [[nodiscard]] std::size_t read(std::span<std::byte> buffer);
    [[nodiscard]] bool skip(std::uint64_t bytes);

    // Of raw bytes: taken so far.
    [[nodiscard]] std::uint64_t taken() const { return taken_; }

    // Takes what is left, and tells whether the stream is whole by the rules of DecodeStream.
    [[nodiscard]] StreamFault finish();

private:
    [[nodiscard]] std::span<const std::byte> ahead();
    void take(std::size_t bytes);
    void nextBlock();

    StreamReader reader_;
    StreamFault fault_;
    bool ended_ = false;  // the closing block was there
    std::size_t filled_ = 0;
    std::size_t next_ = 0;
    std::uint64_t taken_ = 0;
};

}  // namespace quillbox_set
