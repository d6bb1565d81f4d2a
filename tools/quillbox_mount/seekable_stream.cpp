#include "seekable_stream.h"

#include "set/block_codec.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

namespace quillbox_mount {

namespace {

constexpr DWORD LengthBytes = sizeof(DWORD);

// The buffers for unpacking. Each thread has its own.
struct Workspace {
    BYTE packed[PackedBlockBytes];
    BYTE raw[RawBlockBytes];
};

Workspace& workspace()
{
    thread_local const auto own = std::make_unique<Workspace>();
    return *own;
}

}  // namespace

// A stream of at most this many blocks (8 MB) is unpacked as a whole, so its reported size is right. The size of a
// longer stream can be reported too large until a read has reached the real end. A read fails if it begins after the
// real end, but before the end that the first reported size gives. Without this failure, clients could get zeros after
// the real end (see read()).
constexpr std::size_t MostCounted = 64;

// Reads from the data file through a buffer. A stream that is shorter than the buffer needs only one pread. One pread
// also reads the lengths of several blocks that lie close together.
class SeekableStream::Source {
public:
    Source(const DataFile& data, std::uint64_t start, std::uint64_t end) : data_(data), end_(end), lastLength_(start)
    {
        fill(start);
    }

    bool beginsWithMagic() const
    {
        return filled_ >= StreamMagicBytes && std::memcmp(buffer_.data(), StreamMagic, StreamMagicBytes) == 0;
    }

    // Returns the packed size of the block at `offset`, or 0 if the stream has no whole block there.
    DWORD packedBytesAt(std::uint64_t offset)
    {
        DWORD packed = 0;
        if (!holds(offset, LengthBytes) && offset - lastLength_ < buffer_.size())
            fill(offset);
        lastLength_ = offset;
        if (end_ - offset < LengthBytes || !read(offset, std::as_writable_bytes(std::span(&packed, 1))))
            return 0;
        return packed <= PackedBlockBytes && packed <= end_ - offset - LengthBytes ? packed : 0;
    }

    // Returns false if not all of the bytes can be read.
    bool read(std::uint64_t offset, std::span<std::byte> bytes) const
    {
        if (!holds(offset, bytes.size()))
            return data_.read(offset, bytes) == bytes.size();
        std::memcpy(bytes.data(), &buffer_[offset - begin_], bytes.size());
        return true;
    }

private:
    bool holds(std::uint64_t offset, std::size_t bytes) const
    {
        return offset >= begin_ && offset + bytes <= begin_ + filled_;
    }

    void fill(std::uint64_t offset)
    {
        begin_ = offset;
        filled_ = data_.read(offset, std::span(buffer_).first(std::min<std::uint64_t>(buffer_.size(), end_ - offset)));
    }

    const DataFile& data_;
    const std::uint64_t end_;
    std::uint64_t lastLength_;             // offset of the block length that was read last
    std::array<std::byte, 16384> buffer_;  // the bytes from offset `begin_` on
    std::uint64_t begin_ = 0;
    std::size_t filled_ = 0;
};

SeekableStream::SeekableStream(const DataFile& data, DWORD start, DWORD end, std::uint32_t set, BlockCache& cache,
                               const std::atomic<bool>& ends)
    : data_(data), set_(std::uint64_t{set} << 32), cache_(cache), ends_(ends)
{
    Source source(data, start, std::max(start, end));
    const bool whole = findBlocks(source, start, end);
    const platform::kernel::MutexLock lock(mutex_);
    damaged_ = !whole;
    measure(source);
}

// Finds the blocks by their lengths. Returns true if the last block ends exactly at `end` and is the empty block that
// closes a stream.
bool SeekableStream::findBlocks(Source& source, DWORD start, DWORD end)
{
    if (!source.beginsWithMagic())
        return false;
    offsets_ = {start + StreamMagicBytes};
    while (offsets_.back() != end) {
        if (ends_)
            return false;
        const DWORD packed = source.packedBytesAt(offsets_.back());
        if (packed == 0)
            return false;
        offsets_.push_back(offsets_.back() + LengthBytes + packed);
    }
    if (offsets_.size() == 1)
        return false;
    const auto last = unpacked(offsets_.size() - 2, &source);
    const bool closed = last && last->empty();
    if (closed)
        offsets_.pop_back();
    return closed;
}

void SeekableStream::measure(const Source& source)
{
    blocks_ = offsets_.empty() ? 0 : offsets_.size() - 1;
    if (blocks_ > 0) {
        const auto last = cached(--blocks_, &source);
        damaged_ |= !last;
        size_ = std::uint64_t{blocks_} * RawBlockBytes + (last ? last->size() : 0);
        blocks_ += last ? 1 : 0;
    }
    size_ += damaged_ ? 1 : 0;
    while (starts_.size() <= blocks_ && blocks_ <= MostCounted)
        placeNext(0);
    firstSize_ = size_;
}

bool SeekableStream::isDamaged()
{
    const platform::kernel::MutexLock lock(mutex_);
    return damaged_;
}

bool SeekableStream::read(std::uint64_t offset, std::uint64_t bytes, std::vector<Piece>& pieces)
{
    while (bytes > 0) {
        const Place place = placeOf(offset);
        if (place.kind != Place::Kind::Block)
            return place.kind == Place::Kind::End && (offset <= place.start || offset >= firstSize_);
        auto block = cached(place.block);
        if (!block)
            return false;
        const std::size_t start = offset - place.start;
        const std::size_t taken = std::min<std::uint64_t>(block->size() - start, bytes);
        pieces.push_back({std::move(block), start, taken});
        offset += taken;
        bytes -= taken;
    }
    return true;
}

SeekableStream::Place SeekableStream::placeOf(std::uint64_t offset)
{
    const platform::kernel::MutexLock lock(mutex_);
    while (starts_.back() <= offset && starts_.size() <= blocks_ && !ends_)
        placeNext(offset);
    if (starts_.back() <= offset)
        return {damaged_ || starts_.size() <= blocks_ ? Place::Kind::Damage : Place::Kind::End, 0, starts_.back()};
    const auto after = std::ranges::upper_bound(starts_, offset);
    return {Place::Kind::Block, static_cast<std::size_t>(after - starts_.begin()) - 1, *(after - 1)};
}

// Unpacks the first block whose end in the raw bytes isn't known yet, to determine this end. The block is cached only
// if it can contain the byte at `wanted`.
void SeekableStream::placeNext(std::uint64_t wanted)
{
    const std::size_t next = starts_.size() - 1;
    const auto block = starts_.back() + RawBlockBytes > wanted ? cached(next) : unpacked(next);
    if (block && !block->empty()) {
        starts_.push_back(starts_.back() + block->size());
    } else {
        blocks_ = next;
        damaged_ = true;
    }
    if (starts_.size() > blocks_)
        size_ = starts_.back() + (damaged_ ? 1 : 0);
}

// Returns null if the block can't be unpacked.
std::shared_ptr<RawBlock> SeekableStream::unpacked(std::size_t block, const Source* source) const
{
    Workspace& work = workspace();
    const DWORD packedBytes = offsets_[block + 1] - offsets_[block] - LengthBytes;
    DWORD rawBytes = 0;
    const auto packed = std::as_writable_bytes(std::span(work.packed).first(packedBytes));
    const std::uint64_t offset = std::uint64_t{offsets_[block]} + LengthBytes;
    if (!(source ? source->read(offset, packed) : data_.read(offset, packed) == packedBytes) ||
        !UnpackBlock(work.packed, packedBytes, work.raw, rawBytes))
        return nullptr;
    const auto raw = std::as_bytes(std::span(work.raw).first(rawBytes));
    return std::make_shared<RawBlock>(raw.begin(), raw.end());
}

std::shared_ptr<RawBlock> SeekableStream::cached(std::size_t block, const Source* source) const
{
    constexpr std::uint64_t EntryBytes = 200;  // the memory for a cached block besides its bytes
    const std::uint64_t key = set_ | offsets_[block];
    if (auto kept = cache_.find(key))
        return kept;
    auto made = unpacked(block, source);
    return made ? cache_.add(key, made, made->size() + EntryBytes) : nullptr;
}

}  // namespace quillbox_mount
