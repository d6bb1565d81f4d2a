// Each kept stream has a record, which consists of numbers and the bytes of the stream. The records are stored one
// after another in chunks, in the order of the entries. KeepStream writes a record at gEnd, and FindKeptStream reads a
// record at gNext. A record never crosses the end of a chunk: if a chunk has less room than the largest record needs,
// the next chunk is used.
//
// The numbers of a record are stored as differences from the numbers of the record before it, with seven bits in each
// byte. Most of the differences are small and so take few bytes. The fields provesWrites and wasAlone of a stamp aren't
// stored, since they are TRUE for all kept sources.
#include "kept_streams.h"

#include <array>
#include <cstring>
#include <memory>
#include <new>

namespace {

constexpr DWORD ChunkBytes = 65536;
constexpr DWORD Chunks = 128;

// The numbers of a record. Times are in nanoseconds since 1970. ReadBytes stands for two equal numbers: `readBytes` of
// the KeptStream, and `length` of its stamp.
enum Number { Entry, Device, Inode, Written, Changed, Digest, ReadBytes, StreamBytes, NumberCount };
using Numbers = std::array<std::uint64_t, NumberCount>;

constexpr std::uint64_t Nanoseconds = 1'000'000'000;
constexpr std::uint64_t MostSeconds = 9'000'000'000;  // so the nanoseconds fit into 63 bits
constexpr DWORD MostNumberBytes = 10;
constexpr DWORD MostRecordBytes = NumberCount * MostNumberBytes + StreamPieceBytes;

struct Position {
    DWORD chunk;
    DWORD offset;
};

std::unique_ptr<BYTE[]> gChunks[Chunks];
bool gIsFull;
Position gEnd;
Numbers gWritten;  // numbers of the record that was written last
Position gNext;
Numbers gRead;           // numbers of the record that was read last
const BYTE* gReadBytes;  // stream of the record that was read last; null before the first read

BYTE* At(const Position& position)
{
    return gChunks[position.chunk].get() + position.offset;
}

void Advance(Position& position, const BYTE* end)
{
    position.offset = static_cast<DWORD>(end - gChunks[position.chunk].get());
    if (position.offset > ChunkBytes - MostRecordBytes)
        position = {position.chunk + 1, 0};
}

bool IsBefore(const Position& position, const Position& end)
{
    return position.chunk < end.chunk || (position.chunk == end.chunk && position.offset < end.offset);
}

// Writes a difference. Moves its sign to the lowest bit, so that a small negative difference takes few bytes, too.
BYTE* PutDifference(BYTE* to, std::uint64_t difference)
{
    std::uint64_t rest = difference << 1 ^ (0 - (difference >> 63));
    for (; rest >= 0x80; rest >>= 7)
        *to++ = static_cast<BYTE>(rest | 0x80);
    *to++ = static_cast<BYTE>(rest);
    return to;
}

const BYTE* GetDifference(const BYTE* from, std::uint64_t& difference)
{
    std::uint64_t bits = 0;
    for (unsigned shift = 0;; shift += 7) {
        const BYTE byte = *from++;
        bits |= std::uint64_t{byte & 0x7FU} << shift;
        if (byte < 0x80)
            break;
    }
    difference = bits >> 1 ^ (0 - (bits & 1));
    return from;
}

void ReadNextRecord()
{
    const BYTE* from = At(gNext);
    for (std::uint64_t& number : gRead) {
        std::uint64_t difference = 0;
        from = GetDifference(from, difference);
        number += difference;
    }
    gReadBytes = from;
    Advance(gNext, from + KeptBytes(static_cast<DWORD>(gRead[StreamBytes])));
}

bool MakeRoom()
{
    if (gEnd.chunk < Chunks && !gChunks[gEnd.chunk])
        gChunks[gEnd.chunk].reset(new (std::nothrow) BYTE[ChunkBytes]);
    gIsFull = gEnd.chunk == Chunks || !gChunks[gEnd.chunk];
    return !gIsFull;
}

bool IsInRange(std::int64_t seconds)
{
    return seconds >= 0 && static_cast<std::uint64_t>(seconds) < MostSeconds;
}

bool CanKeep(const SmallStream& stream, const FileStamp& source)
{
    return stream.bytes <= StreamPieceBytes && stream.readBytes <= MostKeptSourceBytes && source.provesWrites &&
           source.wasAlone && source.length == stream.readBytes && IsInRange(source.writeSeconds) &&
           IsInRange(source.changeSeconds);
}

std::uint64_t TimeOf(std::int64_t seconds, std::uint32_t nanoseconds)
{
    return static_cast<std::uint64_t>(seconds) * Nanoseconds + nanoseconds;
}

// The stamp of the record that was read last.
FileStamp StampRead()
{
    return {.device = gRead[Device],
            .inode = gRead[Inode],
            .length = gRead[ReadBytes],
            .writeSeconds = static_cast<std::int64_t>(gRead[Written] / Nanoseconds),
            .changeSeconds = static_cast<std::int64_t>(gRead[Changed] / Nanoseconds),
            .writeNanoseconds = static_cast<std::uint32_t>(gRead[Written] % Nanoseconds),
            .changeNanoseconds = static_cast<std::uint32_t>(gRead[Changed] % Nanoseconds),
            .provesWrites = TRUE,
            .wasAlone = TRUE};
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
    const Numbers numbers = {entry,
                             source.device,
                             source.inode,
                             TimeOf(source.writeSeconds, source.writeNanoseconds),
                             TimeOf(source.changeSeconds, source.changeNanoseconds),
                             stream.digest,
                             stream.readBytes,
                             stream.bytes};
    BYTE* to = At(gEnd);
    for (std::size_t i = 0; i < NumberCount; i++)
        to = PutDifference(to, numbers[i] - gWritten[i]);
    CopyKeptBytes(stream, to);
    Advance(gEnd, to + KeptBytes(stream.bytes));
    gWritten = numbers;
}

KeptStream FindKeptStream(DWORD entry)
{
    while ((!gReadBytes || gRead[Entry] < entry) && IsBefore(gNext, gEnd))
        ReadNextRecord();
    if (!gReadBytes || gRead[Entry] != entry)
        return {};
    return {.source = StampRead(),
            .bytes = gReadBytes,
            .count = static_cast<DWORD>(gRead[StreamBytes]),
            .readBytes = static_cast<DWORD>(gRead[ReadBytes]),
            .digest = gRead[Digest]};
}

void ForgetKeptStreams()
{
    for (auto& chunk : gChunks)
        chunk = nullptr;
    gIsFull = false;
    gEnd = gNext = {};
    gWritten = gRead = {};
    gReadBytes = nullptr;
}
