// stream_decoding.h - a stream that lies inside a data file, decoded where it lies and held to the format to the last
// byte, for whoever looks into a set or checks it.
//
// Uses the buffers of compressed_stream.h: one operation at a time.
#pragma once

#include "set/stream_block.h"

#include "ce/types.h"

// Gets each block's raw bytes in turn; 0 stops the decoding.
using RawBytesSink = BOOL (*)(const BYTE* raw, DWORD bytes, void* context);

// Decodes the stream that fills the bytes from `start` to before `end`, up to its closing empty block, which must be
// the last thing in it. `sink` may be null. What stands before a fault has been delivered.
StreamFault DecodeStream(HANDLE file, DWORD start, DWORD end, RawBytesSink sink, void* context);
