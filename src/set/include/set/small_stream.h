// small_stream.h - packs a source that is shorter than a block into memory, so that it can be packed before the run
// comes to it. All streams that wait for the run share 1 MB, except those that the caller keeps.
//
// Only the usual case is handled here. Whatever else happens to a source, it is left to CompressFile, which does it all
// again. An open that fails is the exception: its error is final.
#pragma once

#include "set/block_codec.h"
#include "set/compressed_stream.h"

// The most that the stream of such a source can have: magic, a block, the closing block, and the lengths of the two.
inline constexpr DWORD SmallStreamBytes = StreamMagicBytes + 4 + PackedBlockBytes + 4 + ClosingBlockBytes;

inline constexpr DWORD StreamPieceBytes = 4096;
inline constexpr DWORD SmallStreamPieces = (SmallStreamBytes + StreamPieceBytes - 1) / StreamPieceBytes;

enum class SmallStreamState { Left, NotOpened, Packed };  // Left: CompressFile has to do it

struct SmallStream {
    SmallStreamState state;
    DWORD error;           // why it couldn't be opened
    DWORD bytes;           // of the stream
    DWORD readBytes;       // of the source
    std::uint64_t digest;  // as in PackedStream
    const BYTE* kept;      // what CopyKeptBytes gave, if the caller keeps it; null if the shared memory has the bytes
    BYTE pieces[SmallStreamPieces];
};

// What packing needs. Two threads that pack at the same time need one each.
struct SmallStreamMemory {
    BYTE raw[RawBlockBytes];
    BYTE stream[SmallStreamBytes + PackedBlockBytes - RawBlockBytes];  // the codec may use more room than it fills
    PackingMemory packing;
};

// Whether there is room for the stream of any source.
bool IsRoomForSmallStream();

// Any thread. CodecWorks() is true. `stamp`, if not null, gets that of the source before it is read. If there is none,
// the stream isn't packed.
void PackSmallStream(const WCHAR* source, SmallStream& stream, SmallStreamMemory& memory, FileStamp* stamp = nullptr);

// How many bytes the caller has to keep of a stream with `streamBytes`: not those with which every stream begins and
// ends.
constexpr DWORD KeptBytes(DWORD streamBytes)
{
    return streamBytes - StreamMagicBytes - 4 - ClosingBlockBytes;
}

// Copies them out of a packed stream of at most StreamPieceBytes.
void CopyKeptBytes(const SmallStream& stream, BYTE* bytes);

// Writes a packed stream to the new file `target`, as CompressFile does, and gives its memory back. The stamp in
// `packed` is empty.
BOOL WriteSmallStream(SmallStream& stream, const WCHAR* target, PackedStream& packed);

// Gives the memory back. `state` is Left then.
void DropSmallStream(SmallStream& stream);
