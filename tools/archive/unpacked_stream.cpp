#include "archive/unpacked_stream.h"

#include "archive/long_work.h"

#include "ce/file.h"

#include <algorithm>
#include <cstring>

namespace archive {

UnpackedStream::UnpackedStream(const OpenFile& data, const ListEntry& entry)
    : fault_(BeginStream(reader_, data.handle(), entry.startOffset, entry.endOffset))
{
}

std::size_t UnpackedStream::read(std::span<std::byte> buffer)
{
    std::size_t done = 0;
    while (done < buffer.size()) {
        const auto bytes = ahead();
        if (bytes.empty())
            break;
        const std::size_t piece = std::min(bytes.size(), buffer.size() - done);
        std::memcpy(&buffer[done], bytes.data(), piece);
        take(piece);
        done += piece;
    }
    return done;
}

bool UnpackedStream::skip(std::uint64_t bytes)
{
    while (bytes > 0) {
        const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(ahead().size(), bytes));
        if (piece == 0)
            return false;
        take(piece);
        bytes -= piece;
    }
    return true;
}

StreamFault UnpackedStream::finish()
{
    for (std::size_t piece = ahead().size(); piece != 0; piece = ahead().size())
        take(piece);
    return fault_;
}

// Returns the rest of the current block. If no byte of it is left, unpacks and returns the next block. Returns an empty
// span at the end of the stream, and after a fault.
std::span<const std::byte> UnpackedStream::ahead()
{
    if (next_ == filled_ && fault_ == StreamFault::None && !ended_)
        nextBlock();
    return std::as_bytes(std::span(gRawBuffer)).subspan(next_, filled_ - next_);
}

void UnpackedStream::take(std::size_t bytes)
{
    next_ += bytes;
    taken_ += bytes;
}

void UnpackedStream::nextBlock()
{
    checkStop();
    next_ = 0;
    filled_ = 0;
    const StreamBlock block = ReadBlock(reader_);
    fault_ = block.atEnd && block.fault == StreamFault::None ? StreamFault::NotClosed : block.fault;
    if (fault_ != StreamFault::None)
        return;
    filled_ = block.rawBytes;
    ended_ = block.rawBytes == 0;
    if (ended_ && reader_.bytesLeft != 0)
        fault_ = StreamFault::BytesAfterEnd;
}

}  // namespace archive
