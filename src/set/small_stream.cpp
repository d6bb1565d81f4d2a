// The streams that are packed and not yet written share 1 MB of memory. This shared memory consists of pieces of 4 KB.
// One bit for each piece says whether it is taken. Threads take and return pieces with atomic operations on the bits.
// These operations also order the reads and writes of the bytes in the pieces.
#include "set/small_stream.h"

#include "stream_files.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>

namespace {

constexpr DWORD Pieces = 256;  // 1 MB
constexpr DWORD BitsInWord = 64;
static_assert(Pieces - 1 <= 0xFF);

// The end of every stream: the length of the closing block, and the block.
constexpr BYTE StreamEnd[4 + ClosingBlockBytes] = {ClosingBlockBytes, 0, 0, 0, 0x11, 0, 0};

BYTE gPieces[Pieces][StreamPieceBytes];
std::atomic<std::uint64_t> gTaken[Pieces / BitsInWord];
std::atomic<DWORD> gFree = Pieces;

// Takes a free piece of the shared memory. Returns false if there is none, for example because another thread has just
// taken the last one.
bool TakePiece(BYTE& piece)
{
    for (DWORD word = 0; word < Pieces / BitsInWord; word++) {
        std::uint64_t taken = gTaken[word];
        while (~taken != 0) {
            const auto bit = static_cast<DWORD>(std::countr_one(taken));
            if (!gTaken[word].compare_exchange_weak(taken, taken | std::uint64_t{1} << bit))
                continue;
            gFree--;
            piece = static_cast<BYTE>(word * BitsInWord + bit);
            return true;
        }
    }
    return false;
}

void ReturnPieces(const SmallStream& stream, DWORD count)
{
    for (DWORD i = 0; i < count; i++) {
        const DWORD piece = stream.pieces[i];
        gTaken[piece / BitsInWord] &= ~(std::uint64_t{1} << piece % BitsInWord);
        gFree++;
    }
}

DWORD PiecesOf(DWORD bytes)
{
    return (bytes + StreamPieceBytes - 1) / StreamPieceBytes;
}

DWORD BytesInPiece(DWORD piece, DWORD bytes)
{
    return std::min(StreamPieceBytes, bytes - piece * StreamPieceBytes);
}

bool Keep(SmallStream& stream, const BYTE* bytes, DWORD count)
{
    for (DWORD i = 0; i < PiecesOf(count); i++) {
        if (!TakePiece(stream.pieces[i])) {
            ReturnPieces(stream, i);
            return false;
        }
        std::memcpy(gPieces[stream.pieces[i]], bytes + i * StreamPieceBytes, BytesInPiece(i, count));
    }
    stream.bytes = count;
    return true;
}

// Reads the whole file. Returns false if the file isn't shorter than a block, changes its length during the read, or
// can't be read.
bool ReadWhole(HANDLE file, BYTE* raw, DWORD& bytes)
{
    LONG high = 0;
    const DWORD length = SetFilePointer(file, 0, &high, FILE_END);
    if (high != 0 || length >= RawBlockBytes || SetFilePointer(file, 0, nullptr, FILE_BEGIN) != 0)
        return false;
    DWORD more = 0;
    return ReadFile(file, raw, RawBlockBytes, &bytes, nullptr) && bytes == length &&
           (bytes == 0 || (ReadFile(file, raw, RawBlockBytes, &more, nullptr) && more == 0));
}

bool AppendBlock(const BYTE* raw, DWORD rawBytes, SmallStreamMemory& memory, DWORD& filled)
{
    DWORD packedBytes = 0;
    BYTE* const block = memory.stream + filled;
    if (!PackBlock(raw, rawBytes, block + sizeof packedBytes, packedBytes, memory.packing))
        return false;
    std::memcpy(block, &packedBytes, sizeof packedBytes);
    filled += static_cast<DWORD>(sizeof packedBytes) + packedBytes;
    return true;
}

bool PackWhole(HANDLE file, SmallStream& stream, SmallStreamMemory& memory)
{
    DWORD bytes = 0;
    if (!ReadWhole(file, memory.raw, bytes))
        return false;
    stream.readBytes = bytes;
    stream.digest = gDigestsBlocks && bytes != 0 ? DigestWith(0, DigestOfBlock(memory.raw, bytes)) : 0;
    std::memcpy(memory.stream, StreamMagic, StreamMagicBytes);
    DWORD filled = StreamMagicBytes;
    if (bytes != 0 && !AppendBlock(memory.raw, bytes, memory, filled))
        return false;
    std::memcpy(memory.stream + filled, StreamEnd, sizeof StreamEnd);
    return Keep(stream, memory.stream, filled + static_cast<DWORD>(sizeof StreamEnd));
}

void WriteBytes(Target& target, const SmallStream& stream)
{
    if (stream.kept) {
        BYTE whole[StreamPieceBytes];
        const DWORD kept = KeptBytes(stream.bytes);
        std::memcpy(whole, StreamMagic, StreamMagicBytes);
        std::memcpy(whole + StreamMagicBytes, stream.kept, kept);
        std::memcpy(whole + StreamMagicBytes + kept, StreamEnd, sizeof StreamEnd);
        Write(target, whole, stream.bytes);
        return;
    }
    for (DWORD i = 0; i < PiecesOf(stream.bytes); i++)
        Write(target, gPieces[stream.pieces[i]], BytesInPiece(i, stream.bytes));
}

}  // namespace

bool IsRoomForSmallStream()
{
    return gFree >= SmallStreamPieces;
}

void PackSmallStream(const WCHAR* source, SmallStream& stream, SmallStreamMemory& memory, FileStamp* stamp)
{
    stream.state = SmallStreamState::Left;
    stream.kept = nullptr;
    const HANDLE file = OpenSource(source);
    if (file == INVALID_HANDLE_VALUE) {
        stream.state = SmallStreamState::NotOpened;
        stream.error = GetLastError();
        return;
    }
    if ((!stamp || GetFileStamp(file, stamp)) && PackWhole(file, stream, memory))
        stream.state = SmallStreamState::Packed;
    CloseHandle(file);
}

void CopyKeptBytes(const SmallStream& stream, BYTE* bytes)
{
    std::memcpy(bytes, gPieces[stream.pieces[0]] + StreamMagicBytes, KeptBytes(stream.bytes));
}

BOOL WriteSmallStream(SmallStream& stream, const WCHAR* target, PackedStream& packed)
{
    packed = {};
    packed.opened = TRUE;
    packed.readBytes = stream.readBytes;
    packed.digest = stream.digest;
    const HANDLE file = OpenTarget(target);
    packed.made = file != INVALID_HANDLE_VALUE;
    if (packed.made) {
        Target written = {file, packed, false, 0};
        WriteBytes(written, stream);
        CloseTarget(written);
        packed.bytes = written.bytes;
        packed.whole = packed.error == ERROR_SUCCESS;
    } else {
        NoteFailure(packed);
    }
    DropSmallStream(stream);
    return packed.made;
}

void DropSmallStream(SmallStream& stream)
{
    if (stream.state == SmallStreamState::Packed && !stream.kept)
        ReturnPieces(stream, PiecesOf(stream.bytes));
    stream.state = SmallStreamState::Left;
}
