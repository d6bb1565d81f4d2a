// stream_block.h - the framing of a compressed stream: its magic and one block after the other, each checked against
// its buffer before it is used (docs/format.md, "Compressed stream").
#pragma once

#include "ce/types.h"

// Raw bytes in a full block.
inline constexpr DWORD RawBlockBytes = 131072;

// What a full block can need packed, by the installed library's own rule for LZO1X: n + n/16 + 64 + 3.
inline constexpr DWORD PackedBlockBytes = RawBlockBytes + RawBlockBytes / 16 + 64 + 3;

inline constexpr DWORD StreamMagicBytes = 5;
inline constexpr BYTE StreamMagic[StreamMagicBytes] = {'Q', 'B', 'X', 'P', 'K'};

// The last block of every stream that was written to its end: no raw bytes, packed.
inline constexpr DWORD ClosingBlockBytes = 3;
inline constexpr BYTE ClosingBlock[ClosingBlockBytes] = {0x11, 0x00, 0x00};

// Both sides of one block, made once and shared by all operations on streams.
extern BYTE gRawBuffer[RawBlockBytes];
extern BYTE gPackedBuffer[PackedBlockBytes];

enum class StreamFault {
    None,
    NoMagic,
    ReadFailed,
    LengthCut,       // the stream ends inside a block's length
    EmptyBlock,      // a length of 0
    BlockTooLong,    // a length above PackedBlockBytes
    BlockCut,        // the stream ends inside a block
    BlockDamaged,    // the bytes don't unpack, or to more than a block may hold
    NotClosed,       // whole blocks, but no closing empty one
    BytesBehindEnd,  // more behind the closing empty block
    StoppedBySink,
};

// A stream that ends where its file does.
inline constexpr std::uint64_t WholeFile = ~std::uint64_t{0};

// A stream that is being read from where its file stands.
struct StreamReader {
    HANDLE file;
    std::uint64_t bytesLeft;  // up to the stream's end; more than the file has is fine
};

// Takes the magic. NoMagic also if fewer bytes are there.
StreamFault ReadMagic(StreamReader& reader);

// The bytes of a block as they lie in the stream, whole or, with BlockCut, as far as they are there. At the stream's
// end, and with any other fault, there are none.
struct PackedBlock {
    StreamFault fault = StreamFault::None;
    bool atEnd = false;
    DWORD bytes = 0;
};

// Reads the next block into `packed`, which has room for PackedBlockBytes.
PackedBlock ReadPackedBlock(StreamReader& reader, BYTE* packed);

// Unpacks into `raw`, which has room for RawBlockBytes. False if the bytes are no block, or one of more.
bool UnpackBlock(const BYTE* packed, DWORD packedBytes, BYTE* raw, DWORD& rawBytes);

// What one block turned out to be. At the stream's end there is no fault and `atEnd` is true.
struct StreamBlock {
    StreamFault fault = StreamFault::None;
    bool atEnd = false;
    DWORD rawBytes = 0;  // in gRawBuffer
};

// Reads the next block and unpacks it into gRawBuffer.
StreamBlock ReadBlock(StreamReader& reader);
