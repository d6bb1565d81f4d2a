// compressed_stream.h - packs a file into a stream and unpacks a stream into a file, by their paths (docs/format.md,
// "Compressed stream"). Independent of sets.
//
// One operation at a time, since there is one pipeline of blocks (block_pipeline.h). The run's thread only. A second
// thread takes part in the packing during a run; the files are read and written in the same order without it.
#pragma once

#include "set/stream_outcome.h"

#include "ce/file_stamp.h"
#include "ce/types.h"

// The digests of a stream's blocks, in their order, as one number.
inline std::uint64_t DigestWith(std::uint64_t digest, std::uint64_t blockDigest)
{
    constexpr std::uint64_t OddFactor = 0x9E3779B97F4A7C15;
    return (digest + blockDigest + 1) * OddFactor;
}

struct PackedStream : StreamOutcome {
    BOOL opened;              // the source could be opened
    std::uint64_t bytes;      // of the stream, as far as it was written
    std::uint64_t readBytes;  // of the source
    std::uint64_t digest;     // DigestWith of all blocks that have raw bytes, if gDigestsBlocks
    FileStamp source;         // what the source was before the first read
};

// Packs `source` into the new file `target`. An old target is replaced, or left if it can't be.
// 1: the source was read to its end. The stream can still lack bytes, if the card is full or a failing disk ended the
//    source early: `packed` says whether it is whole.
// 0: otherwise. If the source couldn't be opened there is no new target, else it has the blocks so far.
// `packed` may be null.
BOOL CompressFile(const WCHAR* source, const WCHAR* target, PackedStream* packed = nullptr);

// Unpacks the stream `source` into the new file `target` and makes the folders that are missing on its path. An old
// target is replaced, or with `keepsOld` left: error 80.
// 1: the stream was read to its end and each block was unpacked. The target can still lack bytes, and the stream its
//    closing block: `unpacked` says whether it is whole.
// 0: otherwise. If the source isn't a stream the target is unchanged, else it has the blocks before the fault.
// `unpacked` may be null.
BOOL DecompressFile(const WCHAR* source, const WCHAR* target, StreamOutcome* unpacked = nullptr, bool keepsOld = false);
