// read_ahead.cpp - see read_ahead.h
#include "read_ahead.h"

#include "host/error.h"
#include "host_calls.h"

#include <algorithm>
#include <cstring>

namespace platform::file {

using host::ioError;

namespace {

constexpr std::size_t BufferBytes = 65536;

// The first read of a file, or after a jump: more would be wasted on scattered reads. Reads that follow one another
// double it.
constexpr std::size_t FirstFill = 4096;

// A file shorter than this is read as a whole.
constexpr std::uint64_t WholeBelow = BufferBytes / 2;

// From here on a read goes straight to the caller's buffer.
constexpr std::size_t StraightBytes = BufferBytes / 2;

constexpr std::uint64_t NoEndSeen = ~std::uint64_t{0};

}  // namespace

ReadResult ReadAhead::read(int file, std::uint64_t place, std::span<std::byte> out, std::uint64_t knownSize,
                           bool endIsFirm)
{
    ReadResult result;
    result.bytes = takeBuffered(place, out);
    while (result.bytes < out.size()) {
        const std::uint64_t at = place + result.bytes;
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

std::size_t ReadAhead::takeBuffered(std::uint64_t place, std::span<std::byte> out) const
{
    if (place < start_ || place - start_ >= filled_)
        return 0;
    const auto offset = static_cast<std::size_t>(place - start_);
    const std::size_t taken = std::min(out.size(), filled_ - offset);
    std::memcpy(out.data(), buffer_.get() + offset, taken);
    return taken;
}

ReadAhead::Fetched ReadAhead::fetch(int file, std::uint64_t place, std::span<std::byte> out, std::uint64_t knownSize)
{
    if (out.size() < StraightBytes) {
        const long came = fill(file, place, knownSize);
        if (came >= 0)
            return {static_cast<std::size_t>(came), nextFill_, takeBuffered(place, out), 0};
        // A fault further on must not cost the bytes before it: ask for no more than the caller does.
    }
    const long came = readAt(file, out, place);
    const std::size_t bytes = came > 0 ? static_cast<std::size_t>(came) : 0;
    return {bytes, out.size(), bytes, came < 0 ? came : 0};
}

long ReadAhead::fill(int file, std::uint64_t place, std::uint64_t knownSize)
{
    if (!buffer_)
        buffer_ = std::make_unique_for_overwrite<std::byte[]>(BufferBytes);
    const bool follows = filled_ != 0 && place == start_ + filled_;
    nextFill_ = follows ? std::min(nextFill_ * 2, BufferBytes) : FirstFill;
    // One byte more than there is: a read that comes back short has seen the end.
    if (place == 0 && knownSize < WholeBelow)
        nextFill_ = std::max(nextFill_, static_cast<std::size_t>(knownSize) + 1);
    start_ = place;
    filled_ = 0;
    const long came = readAt(file, {buffer_.get(), nextFill_}, place);
    if (came > 0)
        filled_ = static_cast<std::size_t>(came);
    return came;
}

}  // namespace platform::file
