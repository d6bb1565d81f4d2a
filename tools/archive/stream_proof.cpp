#include "archive/stream_proof.h"

#include <algorithm>

namespace archive {

namespace {

constexpr std::uint64_t SectorBytes = 512;

// The longest literal run that a proven block may have. A limit just below the size of a sector would be too high. A
// replaced sector can begin inside the length field of a block without changing the length, for example if the last
// bytes of the field were 0 and are still 0. In that case one to three bytes of the sector belong to the length, and
// all other bytes of the sector replace packed bytes. The number of these other bytes is greater than LongestRun, so
// they can't all replace literals of one run.
constexpr DWORD LongestRun = SectorBytes / 2;

// A block with fewer raw bytes is packed in less time than a thread takes to start.
constexpr std::size_t WorthThread = 16384;

}  // namespace

StreamProof::StreamProof() : packedAgain_(PackedBlockBytes), memory_(std::make_unique<PackingMemory>()) {}

void StreamProof::begin()
{
    (void)holds();
    good_ = true;
}

void StreamProof::add(std::span<const BYTE> packed, std::span<const BYTE> raw)
{
    if (!holds() || packed.size() < SectorBytes)
        return;
    packed_.assign(packed.begin(), packed.end());
    raw_.assign(raw.begin(), raw.end());
    if (raw.size() < WorthThread)
        good_ = isProven();
    else
        underway_ = std::async(std::launch::async, [this] { return isProven(); });
}

bool StreamProof::holds()
{
    if (underway_.valid())
        good_ = underway_.get();
    return good_;
}

std::size_t StreamProof::agreeing(std::span<const BYTE> packed, std::span<const BYTE> raw)
{
    (void)holds();
    const auto again = packAgain(raw);
    return static_cast<std::size_t>(std::ranges::mismatch(packed, again).in1 - packed.begin());
}

bool StreamProof::isProven()
{
    return LongestLiteralRun(packed_.data(), static_cast<DWORD>(packed_.size())) <= LongestRun &&
           std::ranges::equal(packAgain(raw_), packed_);
}

// Returns an empty span if `raw` can't be packed.
std::span<const BYTE> StreamProof::packAgain(std::span<const BYTE> raw)
{
    DWORD bytes = 0;
    const bool good = PackBlock(raw.data(), static_cast<DWORD>(raw.size()), packedAgain_.data(), bytes, *memory_);
    return std::span(packedAgain_).first(good ? bytes : 0);
}

}  // namespace archive
