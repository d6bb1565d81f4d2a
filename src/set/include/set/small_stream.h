// small_stream.h - packs in memory a source that is shorter than a block. So the source can be packed before the run
// begins to store it. All streams that are packed and not yet written share 1 MB of memory. If a caller copies a stream
// into memory of its own (CopyKeptBytes), the copy isn't part of the 1 MB.
//
// PackSmallStream leaves some sources to CompressFile, for example one that is too long or that changes its length
// while it is read. CompressFile packs such a source from the beginning. If the source can't be opened, CompressFile
// isn't called, and the error of opening is the final result.
#pragma once

#include "set/block_codec.h"
#include "set/compressed_stream.h"

// The largest size in bytes of a stream that is packed here: magic, a block, the closing block, and the lengths of the
// two blocks.
inline constexpr DWORD SmallStreamBytes = StreamMagicBytes + 4 + PackedBlockBytes + 4 + ClosingBlockBytes;

inline constexpr DWORD StreamPieceBytes = 4096;
inline constexpr DWORD SmallStreamPieces = (SmallStreamBytes + StreamPieceBytes - 1) / StreamPieceBytes;

enum class SmallStreamState { Left, NotOpened, Packed };  // Left: CompressFile has to pack the source

struct SmallStream {
    SmallStreamState state;
    DWORD error;           // why the source couldn't be opened
    DWORD bytes;           // length of the stream
    DWORD readBytes;       // bytes that were read from the source
    std::uint64_t digest;  // digest of the stream, as in PackedStream
    const BYTE* kept;      // the caller's copy (CopyKeptBytes); null if the shared memory has the stream
    BYTE pieces[SmallStreamPieces];
};

// Working memory for packing. Each thread that packs needs its own.
struct SmallStreamMemory {
    BYTE raw[RawBlockBytes];
    // While the codec packs, it may write beyond the end of its result. So the array is larger than the largest stream.
    BYTE stream[SmallStreamBytes + PackedBlockBytes - RawBlockBytes];
    PackingMemory packing;
};

// Whether the shared memory has room for the largest stream.
bool IsRoomForSmallStream();

// Packs the source into the shared memory and sets `stream`. Can be called on any thread. CodecWorks() must be true. If
// `stamp` isn't null, the call takes the stamp of the source before it reads the source, and writes the stamp to
// `stamp`. If the stamp can't be taken, the source isn't packed.
void PackSmallStream(const WCHAR* source, SmallStream& stream, SmallStreamMemory& memory, FileStamp* stamp = nullptr);

// Returns how many bytes of a stream of `streamBytes` bytes a caller has to copy. The bytes with which every stream
// begins and ends needn't be copied.
constexpr DWORD KeptBytes(DWORD streamBytes)
{
    return streamBytes - StreamMagicBytes - 4 - ClosingBlockBytes;
}

// Copies a packed stream into `bytes`, which has room for KeptBytes(stream.bytes). Leaves out the bytes with which
// every stream begins and ends. The stream must have at most StreamPieceBytes bytes.
void CopyKeptBytes(const SmallStream& stream, BYTE* bytes);

// Writes a packed stream to the new file `target`, as CompressFile does, and frees the stream's shared memory. Returns
// 0 if the target can't be opened. After a failed write the result is 1, but `packed.whole` is 0. The call always sets
// packed.source, the stamp, to zeros.
BOOL WriteSmallStream(SmallStream& stream, const WCHAR* target, PackedStream& packed);

// Frees the stream's shared memory and sets `state` to SmallStreamState::Left.
void DropSmallStream(SmallStream& stream);
