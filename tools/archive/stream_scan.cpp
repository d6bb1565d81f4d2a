#include "archive/stream_scan.h"

#include "archive/file_window.h"
#include "archive/long_work.h"
#include "archive/stream_proof.h"
#include "set/block_codec.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <vector>

namespace archive {

namespace {

using View = std::span<const BYTE>;

constexpr std::size_t LengthBytes = 4;
// The largest size of two successive blocks with their lengths.
constexpr std::size_t BlockAhead = 2 * (LengthBytes + PackedBlockBytes);
// A search tests many offsets of one view. For each tested offset, the view must have BlockAhead bytes from that offset
// on, or all bytes up to the end of the file.
constexpr std::size_t SearchAhead = BlockAhead + std::size_t{128} * 1024;
static_assert(SearchAhead <= FileWindow::MostAhead);

// A damaged block is used if a valid block, a new stream or the end of the file follows it. Otherwise it is used
// only if it yields at least this many raw bytes. The same applies to the first block of a stream whose beginning is
// lost.
constexpr DWORD LeastPiece = 64;

// A false block consists of bytes that only look like a block. The work on false and damaged blocks is counted in
// bytes. It is limited to WorkForByte for each byte of the file before the current offset, plus WorkInAddition. A
// failed attempt to unpack a block costs the number of its packed and unpacked bytes, plus WorkForFalseBlock. Packing a
// damaged block again costs the number of its raw bytes. Using a damaged block that nothing valid follows
// (After::Nothing) costs an additional WorkForCutBlock, because such a block can make the caller write a file.
constexpr std::uint64_t WorkForByte = 32;
constexpr std::uint64_t WorkInAddition = std::uint64_t{64} * 1024 * 1024;
constexpr std::uint64_t WorkForFalseBlock = 256;
constexpr std::uint64_t WorkForCutBlock = 65536;

constexpr std::array<BYTE, 3> EndMark = {0x11, 0, 0};

// A possible block at the beginning of a view. Only its length has been checked.
struct BlockView {
    View packed;
    bool isWhole;  // false: the file ends inside the block

    std::size_t bytes() const { return LengthBytes + packed.size(); }
    bool hasEndMark() const { return isWhole && std::ranges::equal(packed.last(EndMark.size()), EndMark); }
};

// Returns nothing if the view is too short for a block, or if it begins with a length that no block can have.
std::optional<BlockView> blockIn(View view)
{
    if (view.size() < LengthBytes + ClosingBlockBytes)
        return std::nullopt;
    DWORD length = 0;
    std::memcpy(&length, view.data(), sizeof length);
    if (length < ClosingBlockBytes || length > PackedBlockBytes)
        return std::nullopt;
    const std::size_t there = std::min<std::size_t>(length, view.size() - LengthBytes);
    return BlockView{view.subspan(LengthBytes, there), there == length};
}

bool beginsWithMagic(View view)
{
    return view.size() >= StreamMagicBytes && std::memcmp(view.data(), StreamMagic, StreamMagicBytes) == 0;
}

// What follows a block that may be damaged. End means that the file ends or a new stream begins. Nothing means that
// nothing valid was found after the block.
enum class After { Nothing, End, ClosingBlock, DataBlock };

class Scan {
public:
    Scan(const OpenFile& file, Proving proving, ScanSink& sink)
        : window_(file), proves_(proving == Proving::Wanted), sink_(sink), raw_(RawBlockBytes), tried_(RawBlockBytes)
    {
    }

    ScanTotals run()
    {
        while (at_ < window_.size()) {
            const View view = window_.from(at_, isOpen_ ? BlockAhead : SearchAhead);
            if (beginsWithMagic(view))
                beginStream(StreamMagicBytes);
            else if (isOpen_)
                takeBlock(view);
            else
                search(view);
        }
        endStream();
        totals_.fileBytes = window_.size();
        totals_.unreadable = window_.unreadable();
        totals_.unclaimed = totals_.fileBytes - claimed_;
        return totals_;
    }

private:
    // `magicBytes` is 0 if the stream begins without a magic.
    void beginStream(std::size_t magicBytes)
    {
        endStream();
        stream_ = {};
        stream_.start = at_;
        stream_.hasMagic = magicBytes != 0;
        take(magicBytes);
        isOpen_ = true;
        isAnnounced_ = false;
        proof_.begin();
    }

    void endStream()
    {
        if (!isOpen_)
            return;
        isOpen_ = false;
        if (!isAnnounced_) {
            totals_.lostStreams++;
            return;
        }
        claimed_ += stream_.end - stream_.start;
        stream_.isProven = stream_.isWhole() && (!proves_ || proof_.holds());
        sink_.end(stream_);
    }

    // Ends the stream, so that the search continues one byte after the current offset.
    void loseTrack()
    {
        endStream();
        at_++;
    }

    // Adds the next bytes to the stream.
    void take(std::size_t bytes)
    {
        noteHoles(bytes);
        at_ += bytes;
        stream_.end = at_;
    }

    void noteHoles(std::size_t bytes) { stream_.isReadable &= window_.readable(at_, bytes) == bytes; }

    void announce()
    {
        if (!isAnnounced_)
            sink_.begin(stream_);
        isAnnounced_ = true;
    }

    void deliver(View raw)
    {
        announce();
        stream_.rawBytes += raw.size();
        if (stream_.damagedBlocks == 0)
            stream_.soundBytes += raw.size();
        if (!raw.empty())
            sink_.bytes(stream_, std::as_bytes(raw));
    }

    void takeBlock(View view)
    {
        checkStop();
        const auto block = blockIn(view);
        if (!block || !mayTry())
            return loseTrack();
        DWORD bytes = 0;
        // The window has zeros in place of bytes that the host (the Linux system) couldn't read. A block with such
        // zeros may unpack, but it is damaged.
        const bool isReadable = window_.readable(at_, block->bytes()) == block->bytes();
        if (!unpack(*block, raw_, bytes) || (!isReadable && bytes != 0))
            return takeDamagedBlock(view, *block, bytes);
        take(block->bytes());
        const View raw = View(raw_).first(bytes);
        if (bytes == 0) {
            announce();
            stream_.isClosed = true;
            return endStream();
        }
        if (proves_ && stream_.damagedBlocks == 0)
            proof_.add(block->packed, raw);
        deliver(raw);
    }

    // `bytes` is the number of raw bytes that were unpacked before the fault. If nothing valid follows the block, its
    // length may be wrong too. In that case the search continues one byte after the beginning of the block.
    void takeDamagedBlock(View view, const BlockView& block, DWORD bytes)
    {
        const After after = block.isWhole ? afterBlock(view.subspan(block.bytes())) : After::Nothing;
        if (after == After::Nothing && bytes < LeastPiece)
            return loseTrack();
        deliverDamaged(block.packed, View(raw_).first(bytes));
        if (after == After::DataBlock) {  // only the last data block of a stream can have fewer raw bytes
            std::ranges::fill(raw_, BYTE{0});
            deliver(View(raw_).first(RawBlockBytes - bytes));
        }
        if (after == After::Nothing) {
            work_ += WorkForCutBlock;
            return loseTrack();
        }
        take(block.bytes());
    }

    // If this is the first damaged block of the stream, packs its raw bytes again to find out how many are sound. Up to
    // the damage, the packer produces the same bytes as in the file.
    void deliverDamaged(View packed, View raw)
    {
        DWORD sound = 0;
        noteHoles(LengthBytes + packed.size());
        if (stream_.damagedBlocks == 0) {
            work_ += raw.size();
            const std::size_t read = window_.readable(at_ + LengthBytes, packed.size());
            const View same = packed.first(std::min(proof_.agreeing(packed, raw), read));
            (void)UnpackBlock(same.data(), static_cast<DWORD>(same.size()), tried_.data(), sound);
            sound = std::min(sound, static_cast<DWORD>(raw.size()));
        }
        if (sound != 0)
            deliver(raw.first(sound));
        stream_.damagedBlocks++;
        if (sound != raw.size())
            deliver(raw.subspan(sound));
    }

    After afterBlock(View view)
    {
        if (view.empty() || beginsWithMagic(view))
            return After::End;
        const auto block = blockIn(view);
        DWORD bytes = 0;
        if (!block || !block->hasEndMark() || !mayTry() || !unpack(*block, tried_, bytes))
            return After::Nothing;
        return bytes == 0 ? After::ClosingBlock : After::DataBlock;
    }

    // Goes to the next offset in the view where a stream or a block begins. If there is none, goes past the offsets
    // that could be tested in this view.
    void search(View view)
    {
        checkStop();
        const bool atEnd = at_ + view.size() >= window_.size();
        const std::size_t offsets = atEnd ? view.size() : view.size() - BlockAhead;
        for (std::size_t offset = 0; offset < offsets; offset++) {
            const View rest = view.subspan(offset);
            const bool isBlock = !beginsWithMagic(rest) && isBlockOfAnyStream(rest);
            if (!isBlock && !beginsWithMagic(rest))
                continue;
            at_ += offset;
            if (isBlock)
                beginStream(0);
            return;
        }
        at_ += offsets;
    }

    bool isBlockOfAnyStream(View view)
    {
        const auto block = blockIn(view);
        if (!block || block->packed.size() <= ClosingBlockBytes || !block->hasEndMark() || !mayTry())
            return false;
        DWORD bytes = 0;
        return unpack(*block, tried_, bytes) &&
               (bytes >= LeastPiece || afterBlock(view.subspan(block->bytes())) != After::Nothing);
    }

    bool mayTry()
    {
        const bool may = work_ <= WorkForByte * at_ + WorkInAddition;
        totals_.gaveUp |= !may;
        return may;
    }

    bool unpack(const BlockView& block, std::vector<BYTE>& raw, DWORD& bytes)
    {
        const bool good = UnpackBlock(block.packed.data(), static_cast<DWORD>(block.packed.size()), raw.data(), bytes);
        if (!good)
            work_ += block.packed.size() + bytes + WorkForFalseBlock;
        return good && block.isWhole;
    }

    FileWindow window_;
    bool proves_;
    ScanSink& sink_;
    StreamProof proof_;
    std::vector<BYTE> raw_;
    std::vector<BYTE> tried_;
    std::uint64_t at_ = 0;
    FoundStream stream_;
    bool isOpen_ = false;
    bool isAnnounced_ = false;
    std::uint64_t claimed_ = 0;
    std::uint64_t work_ = 0;
    ScanTotals totals_;
};

}  // namespace

ScanTotals scanStreams(const OpenFile& file, Proving proving, ScanSink& sink)
{
    if (!CodecWorks())
        throw std::runtime_error("the compression library can't be used on this machine");
    return Scan(file, proving, sink).run();
}

}  // namespace archive
