// The streams lie one after another in chunks, each after a head, in the order of the entries. Writing and reading
// advance a position each. A record never crosses the end of a chunk: with less room than the largest record needs, the
// next chunk is used.
#include "kept_streams.h"

#include <cstring>
#include <memory>
#include <new>

namespace {

constexpr DWORD ChunkBytes = 65536;
constexpr DWORD Chunks = 128;
constexpr DWORD MostStreamBytes = 2 * MostKeptSourceBytes;  // a longer stream isn't kept

// Without what all kept sources have in common: that their stamps prove writes, and that no other process had them
// open.
struct KeptHead {
    std::uint64_t device;
    std::uint64_t inode;
    std::int64_t writeSeconds;
    std::int64_t changeSeconds;
    std::uint64_t digest;
    std::uint32_t writeNanoseconds;
    std::uint32_t changeNanoseconds;
    DWORD entry;
    WORD readBytes;  // also the length in the stamp
    WORD count;
};
static_assert(MostStreamBytes <= 0xFFFF);

struct Position {
    DWORD chunk;
    DWORD offset;
};

std::unique_ptr<BYTE[]> gChunks[Chunks];
bool gIsFull;
Position gEnd;
Position gNext;

BYTE* At(const Position& position)
{
    return gChunks[position.chunk].get() + position.offset;
}

void Advance(Position& position, DWORD streamBytes)
{
    position.offset += static_cast<DWORD>(sizeof(KeptHead)) + streamBytes;
    if (position.offset > ChunkBytes - sizeof(KeptHead) - MostStreamBytes)
        position = {position.chunk + 1, 0};
}

bool IsBefore(const Position& position, const Position& end)
{
    return position.chunk < end.chunk || (position.chunk == end.chunk && position.offset < end.offset);
}

bool MakeRoom()
{
    if (gEnd.chunk < Chunks && !gChunks[gEnd.chunk])
        gChunks[gEnd.chunk].reset(new (std::nothrow) BYTE[ChunkBytes]);
    gIsFull = gEnd.chunk == Chunks || !gChunks[gEnd.chunk];
    return !gIsFull;
}

bool CanKeep(const SmallStream& stream, const FileStamp& source)
{
    return stream.bytes <= MostStreamBytes && stream.readBytes <= MostKeptSourceBytes && source.provesWrites &&
           source.wasAlone && source.length == stream.readBytes;
}

}  // namespace

bool IsRoomForKeptStream()
{
    return !gIsFull;
}

void KeepStream(DWORD entry, const SmallStream& stream, const FileStamp& source)
{
    if (!CanKeep(stream, source) || !MakeRoom())
        return;
    const KeptHead head = {.device = source.device,
                           .inode = source.inode,
                           .writeSeconds = source.writeSeconds,
                           .changeSeconds = source.changeSeconds,
                           .digest = stream.digest,
                           .writeNanoseconds = source.writeNanoseconds,
                           .changeNanoseconds = source.changeNanoseconds,
                           .entry = entry,
                           .readBytes = static_cast<WORD>(stream.readBytes),
                           .count = static_cast<WORD>(stream.bytes)};
    std::memcpy(At(gEnd), &head, sizeof head);
    CopySmallStream(stream, At(gEnd) + sizeof head);
    Advance(gEnd, head.count);
}

KeptStream FindKeptStream(DWORD entry)
{
    while (IsBefore(gNext, gEnd)) {
        KeptHead head = {};
        std::memcpy(&head, At(gNext), sizeof head);
        if (head.entry > entry)
            break;
        const BYTE* const bytes = At(gNext) + sizeof head;
        Advance(gNext, head.count);
        if (head.entry == entry)
            return {.source = {.device = head.device,
                               .inode = head.inode,
                               .length = head.readBytes,
                               .writeSeconds = head.writeSeconds,
                               .changeSeconds = head.changeSeconds,
                               .writeNanoseconds = head.writeNanoseconds,
                               .changeNanoseconds = head.changeNanoseconds,
                               .provesWrites = TRUE,
                               .wasAlone = TRUE},
                    .bytes = bytes,
                    .count = head.count,
                    .readBytes = head.readBytes,
                    .digest = head.digest};
    }
    return {};
}

void ForgetKeptStreams()
{
    for (auto& chunk : gChunks)
        chunk = nullptr;
    gIsFull = false;
    gEnd = gNext = {};
}
