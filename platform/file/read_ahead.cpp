#include "read_ahead.h"

#include "host/error.h"
#include "host_calls.h"

#include <algorithm>
#include <cstring>

namespace platform::file {

using host::ioError;

namespace {

constexpr std::size_t BufferBytes = 65536;

// The number of bytes that a buffered fetch reads if it doesn't begin where the previous one ended. With a larger
// number, scattered reads would fetch many bytes that nobody uses. A fetch that begins where the previous one ended
// reads twice as many bytes as the previous one, up to BufferBytes.
constexpr std::size_t FirstFill = 4096;

// If a file is shorter than this, a buffered read at offset 0 fetches the whole file.
constexpr std::uint64_t WholeBelow = BufferBytes / 2;

// A read of this length or more isn't buffered.
constexpr std::size_t StraightBytes = BufferBytes / 2;

constexpr std::uint64_t NoEndSeen = ~std::uint64_t{0};

}  // namespace

ReadResult ReadAhead::read(int file, std::uint64_t offset, std::span<std::byte> out, std::uint64_t knownSize,
                           bool endIsFirm)
{
    ReadResult result;
    result.bytes = takeBuffered(offset, out);
    while (result.bytes < out.size()) {
        const std::uint64_t at = offset + result.bytes;
        if (endIsFirm && at == endSeenAt_)
            break;
        const Fetched fetched = fetch(file, at, out.subspan(result.bytes), knownSize);
        if (fetched.error != 0) {
            result.error = ioError(fetched.error);
            break;
        }
        if (fetched.came < fetched.asked && at + fetched.came >= knownSize)
            endSeenAt_ = at + fetched.came;
        if (fetched.came == 0)
            break;
        result.bytes += fetched.taken;
    }
    return result;
}

void ReadAhead::forget()
{
    filled_ = 0;
    endSeenAt_ = NoEndSeen;
}

std::size_t ReadAhead::takeBuffered(std::uint64_t offset, std::span<std::byte> out) const
{
    if (offset < start_ || offset - start_ >= filled_)
        return 0;
    const auto skipped = static_cast<std::size_t>(offset - start_);
    const std::size_t taken = std::min(out.size(), filled_ - skipped);
    std::memcpy(out.data(), buffer_.get() + skipped, taken);
    return taken;
}

ReadAhead::Fetched ReadAhead::fetch(int file, std::uint64_t offset, std::span<std::byte> out, std::uint64_t knownSize)
{
    if (out.size() < StraightBytes) {
        const long came = fill(file, offset, knownSize);
        if (came >= 0)
            return {static_cast<std::size_t>(came), nextFill_, takeBuffered(offset, out), 0};
        // Reading ahead can fail because of a damaged sector after the caller's bytes. The caller's read must not fail
        // for this reason. So the read is repeated without reading ahead.
    }
    const long came = readAt(file, out, offset);
    const std::size_t bytes = came > 0 ? static_cast<std::size_t>(came) : 0;
    return {bytes, out.size(), bytes, came < 0 ? came : 0};
}

long ReadAhead::fill(int file, std::uint64_t offset, std::uint64_t knownSize)
{
    if (!buffer_)
        buffer_ = std::make_unique_for_overwrite<std::byte[]>(BufferBytes);
    const bool follows = filled_ != 0 && offset == start_ + filled_;
    nextFill_ = follows ? std::min(nextFill_ * 2, BufferBytes) : FirstFill;
    // If a short file is read from its start, the read asks for at least one byte more than the file has. So it returns
    // fewer bytes than it asks for, which shows where the file ends. No second read is needed.
    if (offset == 0 && knownSize < WholeBelow)
        nextFill_ = std::max(nextFill_, static_cast<std::size_t>(knownSize) + 1);
    start_ = offset;
    filled_ = 0;
    const long came = readAt(file, {buffer_.get(), nextFill_}, offset);
    if (came > 0)
        filled_ = static_cast<std::size_t>(came);
    return came;
}

}  // namespace platform::file
