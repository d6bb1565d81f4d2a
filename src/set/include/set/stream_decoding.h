// stream_decoding.h - reads a compressed stream block by block and checks each length before it uses it
// (docs/format.md, "Compressed stream").
//
// One operation on streams at a time: ReadBlock and DecodeStream use static buffers.
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
    BlockDamaged,   // the bytes can't be unpacked, or are more than a block when unpacked
    NotClosed,      // whole blocks, but no closing block
    BytesAfterEnd,  // bytes after the closing block
    StoppedBySink,
};

// The bytes left of a stream that ends where its file ends.
inline constexpr std::uint64_t WholeFile = ~std::uint64_t{0};

// A stream that begins at the current position of its file.
struct StreamReader {
    HANDLE file;
    std::uint64_t bytesLeft;  // to the end of the stream; may be more than the file has
};

// Reads the magic. NoMagic also if there are too few bytes.
StreamFault ReadMagic(StreamReader& reader);

// Begins to read the stream that fills the bytes of `file` from `start` to before `end`, as far as after its magic.
StreamFault BeginStream(StreamReader& reader, HANDLE file, DWORD start, DWORD end);

// A block as it is in the stream. With BlockCut `bytes` is what there is of it. At the end of the stream, and with any
// other fault, it is 0.
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
    bool atEnd = false;  // the stream ends here, and there is no block
    DWORD rawBytes = 0;  // in gRawBuffer
};

// Reads the next block and unpacks it into gRawBuffer.
StreamBlock ReadBlock(StreamReader& reader);

// Receives the raw bytes of each block in turn. 0 stops the decoding.
using RawBytesSink = BOOL (*)(const BYTE* raw, DWORD bytes, void* context);

// Decodes the stream that fills the bytes of `file` from `start` to before `end`. Its closing block must be the last
// thing in it. `sink` may be null. Before a fault is returned, the sink has received every block before it.
StreamFault DecodeStream(HANDLE file, DWORD start, DWORD end, RawBytesSink sink, void* context);
