// stream_proof.h - finds out whether a part of a stream can have been replaced although the stream still unpacks.
//
// A stream has no checksum. But a card loses whole sectors, and two facts show that none was lost:
//
// - A block that is smaller than a sector shares each of its sectors with something else of the stream: the magic, a
//   length or the end of a block. The stream can't be read with those replaced. Where in the file a sector began isn't
//   known, since files may have been joined.
// - The packer gives the same packed block for the same raw bytes. If the unpacked bytes are packed again and give the
//   same block, all of its matches and lengths are as they were. Only literals can be different: raw bytes that are in
//   the block unchanged. So there must be no run of them that could fill a sector.
//
// What is left are blocks with long runs of literals, as every file has that is packed already, and blocks that another
// packer wrote.
#pragma once

#include "set/block_codec.h"

#include <cstdint>
#include <future>
#include <memory>
#include <span>
#include <vector>

namespace archive {

class StreamProof {
public:
    StreamProof();

    // The next stream begins.
    void begin();
    // The next block of it, which was unpacked. Large blocks are packed on another thread, up to the next call.
    void add(std::span<const BYTE> packed, std::span<const BYTE> raw);
    // Whether no sector of the blocks can have been replaced. Without blocks: true.
    [[nodiscard]] bool holds();

    // How many bytes at the beginning of a damaged block are as the packer writes them for `raw`, which it gave.
    std::size_t agreeing(std::span<const BYTE> packed, std::span<const BYTE> raw);

private:
    bool isProven();
    std::span<const BYTE> packAgain(std::span<const BYTE> raw);

    bool good_ = true;
    std::vector<BYTE> packed_;
    std::vector<BYTE> raw_;
    std::vector<BYTE> packedAgain_;
    std::unique_ptr<PackingMemory> memory_;
    std::future<bool> underway_;  // the last member: its end is awaited before the others are destroyed
};

}  // namespace archive
