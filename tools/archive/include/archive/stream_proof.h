// stream_proof.h - finds out whether a part of a stream can have been replaced although the stream still unpacks.
//
// A stream has no checksum. But damage on a card always replaces whole sectors. If a stream unpacks and each of its
// blocks meets one of the following two conditions, no sector of the stream has been replaced:
//
// - The block is smaller than a sector. If a sector that contains a part of this block is replaced, a magic, a length
//   or the end of a block is replaced too, so the stream doesn't unpack. This is true wherever the sectors begin. Their
//   offsets are unknown, because the file may consist of several joined files.
// - The packer makes the same block from the unpacked bytes again, and no literal run of the block could fill a sector.
//   A literal run consists of raw bytes that the block contains unchanged. Packing again reveals any change of the
//   block except a change of literals. A sector is longer than any literal run of the block. So if a sector is
//   replaced, other bytes change too, and packing again reveals the damage.
//
// The proof fails for blocks with long literal runs, which occur in every file that was compressed before. It also
// fails for blocks that another packer wrote.
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

    // Begins the next stream.
    void begin();
    // Adds the next block of the stream, packed and unpacked. A large block is checked on another thread. The next call
    // waits for that thread.
    void add(std::span<const BYTE> packed, std::span<const BYTE> raw);
    // Returns true if each block that was added since begin() is known to meet one of the two conditions at the top of
    // this file. If these are all blocks of a stream that unpacks, no sector of the stream has been replaced. Also
    // returns true if no block was added.
    [[nodiscard]] bool holds();

    // `packed` is a damaged block, and `raw` are the bytes that were unpacked from it. Packs `raw` again, compares the
    // new block with `packed`, and returns how many bytes at the beginning are equal.
    std::size_t agreeing(std::span<const BYTE> packed, std::span<const BYTE> raw);

private:
    bool isProven();
    std::span<const BYTE> packAgain(std::span<const BYTE> raw);

    bool good_ = true;
    std::vector<BYTE> packed_;
    std::vector<BYTE> raw_;
    std::vector<BYTE> packedAgain_;
    std::unique_ptr<PackingMemory> memory_;
    std::future<bool> underway_;  // the last member, so its thread ends before the other members are destroyed
};

}  // namespace archive
