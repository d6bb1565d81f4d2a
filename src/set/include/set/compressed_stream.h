// compressed_stream.h - packs a file into a stream and unpacks a stream into a file (docs/format.md, "Compressed
// stream"). The caller passes the paths of both files.
//
// Only one operation at a time is possible, since there is only one pipeline of blocks (block_pipeline.h). All calls
// are made on the run's thread, which executes a backup or a restore. During a run a second thread helps to pack and
// unpack blocks. The order in which files are read and written doesn't depend on that thread.
#pragma once

#include "set/stream_outcome.h"

#include "ce/file_stamp.h"
#include "ce/types.h"

// Combines the digest of the previous blocks of a stream with the digest of the next block. Returns the digest of all
// these blocks. The result depends on their order.
inline std::uint64_t DigestWith(std::uint64_t digest, std::uint64_t blockDigest)
{
    constexpr std::uint64_t OddFactor = 0x9E3779B97F4A7C15;
    return (digest + blockDigest + 1) * OddFactor;
}

struct PackedStream : StreamOutcome {
    BOOL opened;              // the source could be opened
    std::uint64_t bytes;      // written bytes of the stream
    std::uint64_t readBytes;  // bytes that were read from the source
    std::uint64_t digest;     // DigestWith of all blocks that have raw bytes; computed if gDigestsBlocks
    FileStamp source;         // stamp of the source before the first read
};

// Packs `source` into the new file `target`. A file at the path of the target is replaced. If it can't be replaced, it
// stays unchanged. Returns:
// 1: The source was read until a read returned 0 bytes, and each block was packed. The stream can still lack bytes, for
//    example because the card is full, or because a failing disk returned 0 bytes before the end of the source. In
//    these cases `packed->whole` is 0.
// 0: There are two kinds of failures. If CodecWorks() is false, or if the source or the target can't be opened, nothing
//    is written. If the source can't be read to its end, or if a block can't be packed, the target has the blocks
//    before the failure.
// `packed` may be null.
BOOL CompressFile(const WCHAR* source, const WCHAR* target, PackedStream* packed = nullptr);

// Unpacks the stream `source` into the new file `target` and makes the missing folders of the target's path. If a file
// exists at the path of the target, `keepsOld` decides. If it is false, the file is replaced. If it is true, the file
// stays unchanged, and the call fails with error 80. Returns:
// 1: The stream was read to its end and each block was unpacked. A failed read of a block's length counts as the end.
//    The target can still lack bytes, and the closing block can be missing or not be the last one. In these cases
//    `unpacked->whole` is 0.
// 0: There are two kinds of failures. If CodecWorks() is false, if the source or the target can't be opened, or if the
//    source isn't a stream, an existing target is unchanged. If a block can't be read or unpacked, the target has the
//    blocks before the failure.
// `unpacked` may be null.
BOOL DecompressFile(const WCHAR* source, const WCHAR* target, StreamOutcome* unpacked = nullptr, bool keepsOld = false);
