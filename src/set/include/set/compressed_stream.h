// compressed_stream.h - packs a file into a stream and unpacks a stream into a file (docs/format.md, "Compressed
// stream"). The caller passes the paths of both files.
//
// Only one operation at a time is possible, since there is only one pipeline of blocks (block_pipeline.h). All calls
// are made on the run's thread. During a run a second thread helps to pack and unpack blocks. The order in which files
// are read and written doesn't depend on that thread.
#pragma once

#include "set/stream_outcome.h"

#include "ce/file_stamp.h"
#include "ce/types.h"

// Adds the digest of the next block to the digest of a stream. The result depends on the order of the blocks.
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

// Packs `source` into the new file `target`. If a file exists at the path of the target, it is replaced. If it can't be
// replaced, it stays unchanged.
// 1: The source was read to its end. The stream can still lack bytes, because the card is full or because a failing
//    disk ended the source early. `packed->whole` is 0 in these cases.
// 0: The source wasn't read to its end. If the source or the target couldn't be opened, nothing is written. After a
//    later failure the target has the blocks before the failure.
// `packed` may be null.
BOOL CompressFile(const WCHAR* source, const WCHAR* target, PackedStream* packed = nullptr);

// Unpacks the stream `source` into the new file `target` and makes the missing folders of the target's path. If a file
// exists at the path of the target, it is replaced. But if `keepsOld` is true, it stays unchanged, and the call fails
// with error 80.
// 1: The stream was read to its end and each block was unpacked. The target can still lack bytes, and the closing block
//    of the stream can be missing. `unpacked->whole` is 0 in these cases.
// 0: The call failed earlier. If the source isn't a stream, the target is unchanged. After a later fault the target has
//    the blocks before the fault.
// `unpacked` may be null.
BOOL DecompressFile(const WCHAR* source, const WCHAR* target, StreamOutcome* unpacked = nullptr, bool keepsOld = false);
