// seekable_stream.h - the raw (unpacked) bytes of one stream, readable at any offset. A stream is the content of an
// item in the data file of a set, packed in blocks.
//
// A stream contains the packed size of each block, but not the number of the block's raw bytes. Each block before the
// last one has RawBlockBytes raw bytes, unless the file grew while it was backed up. So the raw offset of a block is
// known only after all blocks before it were unpacked once. After that, a read unpacks only the blocks that contain the
// requested bytes.
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
using BlockCache = BoundedCache<RawBlock>;  // key: the set's number << 32 | the block's offset in the data file

// Some consecutive bytes of a block.
struct Piece {
    std::shared_ptr<RawBlock> block;
    std::size_t start;
    std::size_t bytes;
};

// Can be used on any thread.
class SeekableStream {
public:
    // Reads the lengths of the blocks between the offsets `start` and `end` of the data file, and unpacks the last
    // block. If the stream has at most 64 blocks, unpacks all of them. `data`, `cache` and `ends` must outlive the
    // stream. The keys of `cache` contain `set`, the number of the set. Once `ends` is true, the search for blocks
    // stops, and the rest of the stream counts as damaged.
    SeekableStream(const DataFile& data, DWORD start, DWORD end, std::uint32_t set, BlockCache& cache,
                   const std::atomic<bool>& ends);

    // The number of raw bytes. For a stream of more than 64 blocks, the number is too large at first if any block
    // except the last one isn't full. Once a read has reached the end of the stream, the number is right. For a damaged
    // stream, the number includes the bytes before the damage, and one byte that can't be read.
    std::uint64_t size() const { return size_; }
    // Returns whether damage was found so far. If the stream has at most 64 blocks, the constructor finds any damage.
    // In a longer stream, it finds only a wrong length of a block, and damage in the last block. Other damage is found
    // when a read unpacks the blocks up to it.
    bool isDamaged() EXCLUDES(mutex_);

    // The memory that this object needs without the cached blocks.
    std::uint64_t memoryBytes() const
    {
        return sizeof *this + offsets_.size() * (sizeof(DWORD) + sizeof(std::uint64_t));
    }

    // Appends to `pieces` the next `bytes` bytes from `offset` on, or fewer if the stream ends earlier. Returns false
    // if there is damage in these bytes. The size that size() returned first can be too large. If `offset` is below
    // that size but beyond the real end, read() returns false too. Suppose that it returned true without any bytes
    // instead. Then the kernel would take `offset` for the end of the file. If a client later read the last bytes of
    // the stream, the kernel would add zeros after them, up to `offset`.
    [[nodiscard]] bool read(std::uint64_t offset, std::uint64_t bytes, std::vector<Piece>& pieces) EXCLUDES(mutex_);

private:
    struct Place {
        enum class Kind { Block, End, Damage } kind;
        std::size_t block;
        std::uint64_t start;  // raw offset of the block. For End and Damage: where the raw bytes end.
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
    // The offsets in the data file where the blocks with raw bytes begin, and the offset where the last of them ends.
    std::vector<DWORD> offsets_;
    std::atomic<std::uint64_t> size_ = 0;
    std::uint64_t firstSize_ = 0;  // size() after construction

    platform::kernel::Mutex mutex_;
    // Offsets in the raw bytes: where each block that placeNext() has unpacked begins, and where the last of them ends.
    std::vector<std::uint64_t> starts_ GUARDED_BY(mutex_) = {0};
    std::size_t blocks_ GUARDED_BY(mutex_) = 0;  // number of blocks before the damage
    bool damaged_ GUARDED_BY(mutex_) = false;
};

}  // namespace quillbox_mount
