// compressed_stream.h - one file as one LZO1X stream and back, path to path (docs/format.md, "Compressed stream").
// Knows nothing of sets.
//
// One operation at a time, those of stream_decoding.h included: all use the same static buffers. The run's thread only.
#pragma once

#include "ce/file_deletion.h"
#include "ce/types.h"

// What became of a target beside the result of the call.
struct StreamOutcome {
    BOOL made;    // the target is a new file, so that what stands at its path is no other's
    BOOL whole;   // all of the source is in the target
    DWORD error;  // unless whole: of the first call that failed, ERROR_HANDLE_EOF for a source that gave fewer bytes
                  // than it is long, ERROR_FILE_CORRUPT for a stream that is damaged or not closed
};

struct PackedStream : StreamOutcome {
    BOOL opened;          // the source could be opened
    std::uint64_t bytes;  // of the stream, as far as it was written
    FileStamp source;     // what the source was before the first read
};

// Packs `source` into a new file `target`; an old target is replaced, one that can't be is left.
// 1: the source was read to its end. That doesn't promise a whole stream, since a full card can cut it, and a failing
//    disk can end a source early.
// 0: if the source couldn't be opened there is no new target, otherwise it holds the blocks so far.
// `packed` may be null.
BOOL CompressFile(const WCHAR* source, const WCHAR* target, PackedStream* packed = nullptr);

// Unpacks the stream `source` into a new file `target`, whose missing folders are made; an old target is replaced.
// 1: the stream was read to its end and every block unpacked. Whether the target took all of it is not looked at, nor
//    whether the stream has its closing block.
// 0: if the source isn't a stream the target is untouched, otherwise it holds the blocks before the fault.
// `unpacked` may be null.
BOOL DecompressFile(const WCHAR* source, const WCHAR* target, StreamOutcome* unpacked = nullptr);
