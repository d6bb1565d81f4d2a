// stream_decoding.h - reads a compressed stream block by block and checks each length before its use (docs/format.md,
// "Compressed stream").
//
// Only one operation on streams at a time is possible, since ReadBlock and DecodeStream use static buffers.
#pragma once

#include "set/block_codec.h"

#include "ce/types.h"

enum class StreamFault {
    None,
    NoMagic,
    ReadFailed,
    LengthCut,      // the stream ends inside a block's length
    EmptyBlock,     // a length of 0
    BlockTooLong,   // a length above PackedBlockBytes
    BlockCut,       // the stream ends inside a block
    BlockDamaged,   // the bytes can't be unpacked, or unpack to more than a block
    NotClosed,      // whole blocks, but no closing block
    BytesAfterEnd,  // bytes after the closing block
    StoppedBySink,
};

// The value of bytesLeft for a stream that ends where its file ends.
inline constexpr std::uint64_t WholeFile = ~std::uint64_t{0};

// A stream that begins at the current position of its file.
struct StreamReader {
    HANDLE file;
    std::uint64_t bytesLeft;  // bytes up to the end of the stream; may be more than the file has
};

// Reads the magic. Returns NoMagic if the bytes differ from StreamMagic or are too few.
StreamFault ReadMagic(StreamReader& reader);

// Prepares to read the stream in the bytes of `file` from `start` up to but not including `end`. Reads its magic.
StreamFault BeginStream(StreamReader& reader, HANDLE file, DWORD start, DWORD end);

// The result of ReadPackedBlock. `bytes` is the packed size of the block. With BlockCut it is the number of packed
// bytes that were read before the stream ended. At the end of the stream, and with any other fault, `bytes` is 0.
// `atEnd` is true at the end of the stream, and if the read of a block's length fails.
struct PackedBlock {
    StreamFault fault = StreamFault::None;
    bool atEnd = false;
    DWORD bytes = 0;
};

// Reads the next block into `packed`, which has room for PackedBlockBytes. Doesn't unpack it.
PackedBlock ReadPackedBlock(StreamReader& reader, BYTE* packed);

// The raw bytes of the block that ReadBlock read last.
extern BYTE gRawBuffer[RawBlockBytes];

struct StreamBlock {
    StreamFault fault = StreamFault::None;
    bool atEnd = false;  // there is no block; as in PackedBlock
    DWORD rawBytes = 0;  // in gRawBuffer
};

// Reads the next block and unpacks it into gRawBuffer.
StreamBlock ReadBlock(StreamReader& reader);

// Called with the raw bytes of each block, in the order of the stream. A result of 0 stops the decoding.
using RawBytesSink = BOOL (*)(const BYTE* raw, DWORD bytes, void* context);

// Decodes the stream that fills the bytes of `file` from `start` up to but not including `end`. The closing block must
// be at the end of the stream. `sink` may be null. If there is a fault, the sink receives all blocks before the fault.
StreamFault DecodeStream(HANDLE file, DWORD start, DWORD end, RawBytesSink sink, void* context);
