// seekable_stream.h - the raw bytes of one stream, read at any place. Only the blocks that are asked for are unpacked.
//
// The stream says where its blocks are, but not how many raw bytes are in each. A block before the last one has
// RawBlockBytes, unless the file grew while it was backed up. So a block has its place only after those before it were
// unpacked once. From then on each read unpacks no other block than those with its bytes.
#pragma once

#include "bounded_cache.h"
#include "data_file.h"

#include "kernel/mutex.h"

#include "ce/types.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quillbox_mount {

using RawBlock = const std::vector<std::byte>;
using BlockCache = BoundedCache<RawBlock>;  // by the set's number << 32 and the block's offset in the data file

// Some consecutive bytes of a block.
struct Piece {
    std::shared_ptr<RawBlock> block;
    std::size_t start;
    std::size_t bytes;
};

// Any thread.
class SeekableStream {
public:
    // Reads the lengths of the blocks from `start` to before `end`, and unpacks the last one. `data`, `cache`
    // and `ends` outlive the stream. `set` is the set's number in the cache. Once `ends` is true, the search for
    // blocks stops, and what it hasn't found counts as damaged.
    SeekableStream(const DataFile& data, DWORD start, DWORD end, std::uint32_t set, BlockCache& cache,
                   const std::atomic<bool>& ends);

    // The number of raw bytes. In a stream of more than 64 blocks it is too large until a read has come to the end, if
    // a block before the last one isn't full. For a damaged stream: what is before the damage, and one byte that can't
    // be read.
    std::uint64_t size() const { return size_; }
    // In a stream of more than 64 blocks that shows only after a read, if it isn't in the lengths or the last block.
    bool isDamaged() EXCLUDES(mutex_);

    // What the stream itself needs.
    std::uint64_t memoryBytes() const
    {
        return sizeof *this + offsets_.size() * (sizeof(DWORD) + sizeof(std::uint64_t));
    }

    // Appends the pieces from `offset` on. They are fewer bytes only at the end. False if damage is among them, or if
    // `offset` is beyond the end, but not beyond a size that was too large. The kernel would believe an empty answer
    // that comes before the one with the last bytes, and show zeros between the two.
    [[nodiscard]] bool read(std::uint64_t offset, std::uint64_t bytes, std::vector<Piece>& pieces) EXCLUDES(mutex_);

private:
    struct Place {
        enum class Kind { Block, End, Damage } kind;
        std::size_t block;
        std::uint64_t start;  // of the block, in raw bytes. End and Damage: where the bytes end.
    };

    class Source;

    bool findBlocks(Source& source, DWORD start, DWORD end);
    void measure(const Source& source) REQUIRES(mutex_);
    Place placeOf(std::uint64_t offset) EXCLUDES(mutex_);
    void placeNext(std::uint64_t wanted) REQUIRES(mutex_);
    std::shared_ptr<RawBlock> unpacked(std::size_t block, const Source* source = nullptr) const;
    std::shared_ptr<RawBlock> cached(std::size_t block, const Source* source = nullptr) const;

    const DataFile& data_;
    const std::uint64_t set_;
    BlockCache& cache_;
    const std::atomic<bool>& ends_;
    std::vector<DWORD> offsets_;  // of the blocks with raw bytes, and of what follows them
    std::atomic<std::uint64_t> size_ = 0;
    std::uint64_t firstSize_ = 0;  // size() at first

    platform::kernel::Mutex mutex_;
    // Where each block begins in the raw bytes, and where the last of these ends: of the blocks that have their place.
    std::vector<std::uint64_t> starts_ GUARDED_BY(mutex_) = {0};
    std::size_t blocks_ GUARDED_BY(mutex_) = 0;  // that can have a place: those before the damage
    bool damaged_ GUARDED_BY(mutex_) = false;
};

}  // namespace quillbox_mount
