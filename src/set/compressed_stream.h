// compressed_stream.h - one file as one LZO1X stream and back, path to path (docs/format.md, "Compressed stream").
// Knows nothing of sets.
//
// One operation at a time, those of stream_decoding.h included: all use the same static buffers. The run's thread only.
#pragma once

#include "ce/types.h"

// Packs `source` into a new file `target`; an old target is replaced, one that can't be is left.
// 1: the source was read to its end. That doesn't promise a whole stream, since a full card can cut it:
//    StreamIsWhole tells.
// 0: if the source couldn't be opened there is no new target, otherwise it holds the blocks so far.
// `made`, if it isn't null: whether the target is a new one, so that what stands at its path is no other's.
BOOL CompressFile(const WCHAR* source, const WCHAR* target, BOOL* made = nullptr);

// Unpacks the stream `source` into a new file `target`, whose missing folders are made; an old target is replaced.
// 1: the stream was read to its end and every block unpacked. Whether the target took all of it is not looked at.
// 0: if the source isn't a stream the target is untouched, otherwise it holds the blocks before the fault.
// `made`, if it isn't null: whether the target is a new one, so that what stands at its path is no other's.
BOOL DecompressFile(const WCHAR* source, const WCHAR* target, BOOL* made = nullptr);

// Whether a stream file has its magic, blocks that follow on one another, and the closing empty block as its last
// bytes. Walks the lengths without unpacking, so it costs little beside the packing. 0 also if the file can't be read.
BOOL StreamIsWhole(const WCHAR* path);
