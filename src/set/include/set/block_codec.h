// block_codec.h - how one block of a stream is packed and unpacked: LZO1X. No other unit uses the library or depends on
// its properties.
#pragma once

#include "ce/types.h"

// The first bytes of a stream. They identify the compression of its blocks.
inline constexpr DWORD StreamMagicBytes = 5;
inline constexpr BYTE StreamMagic[StreamMagicBytes] = {'Q', 'B', 'X', 'P', 'K'};

// Raw bytes in a full block.
inline constexpr DWORD RawBlockBytes = 131072;

// The most that a full block can need when it is packed, by the rule of the installed library: n + n/16 + 64 + 3.
inline constexpr DWORD PackedBlockBytes = RawBlockBytes + RawBlockBytes / 16 + 64 + 3;

// A packed block of no raw bytes: the last block of a stream.
inline constexpr DWORD ClosingBlockBytes = 3;

// What packing needs beside the two blocks. Two threads that pack at the same time need one each.
struct PackingMemory {
    alignas(void*) BYTE bytes[16384 * sizeof(void*)];
};

// A number that depends on every byte, to compare the raw bytes of two blocks within this process.
std::uint64_t DigestOfBlock(const BYTE* raw, DWORD rawBytes);

// Whether a block that is packed or unpacked gets a digest. Set while there is no second thread.
inline bool gDigestsBlocks;

// Whether the library can be used on this machine. Checked before a whole file is packed or unpacked.
bool CodecWorks();

// Packs up to RawBlockBytes of `raw` into `packed`, which has room for PackedBlockBytes.
bool PackBlock(const BYTE* raw, DWORD rawBytes, BYTE* packed, DWORD& packedBytes, PackingMemory& memory);

// Unpacks into `raw`, which has room for RawBlockBytes. False if the bytes aren't a block, or one that is larger; then
// `rawBytes` is what was unpacked before the fault was noticed. Never reads or writes outside of the two blocks,
// whatever the bytes are.
bool UnpackBlock(const BYTE* packed, DWORD packedBytes, BYTE* raw, DWORD& rawBytes);

// The length of the longest run of raw bytes that are in the block as they are. UnpackBlock must have accepted the
// block.
DWORD LongestLiteralRun(const BYTE* packed, DWORD packedBytes);
