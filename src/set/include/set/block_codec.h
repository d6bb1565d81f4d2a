// block_codec.h - packs and unpacks one block of a stream with LZO1X. Only block_codec.cpp calls the LZO library.
#pragma once

#include "ce/types.h"

// The first bytes of a stream. They identify the compression of its blocks.
inline constexpr DWORD StreamMagicBytes = 5;
inline constexpr BYTE StreamMagic[StreamMagicBytes] = {'Q', 'B', 'X', 'P', 'K'};

// Raw bytes in a full block.
inline constexpr DWORD RawBlockBytes = 131072;

// The largest size in bytes of a full block when it is packed. For n raw bytes the LZO library produces at most n +
// n/16 + 64 + 3 bytes.
inline constexpr DWORD PackedBlockBytes = RawBlockBytes + RawBlockBytes / 16 + 64 + 3;

// The packed size in bytes of a block that has 0 raw bytes. The last block of a stream is such a block.
inline constexpr DWORD ClosingBlockBytes = 3;

// Working memory that packing needs in addition to the raw and the packed block. Each thread that packs needs its own.
struct PackingMemory {
    alignas(void*) BYTE bytes[16384 * sizeof(void*)];
};

// Returns a hash of all raw bytes of a block. Compare it only with hashes that this process computed.
std::uint64_t DigestOfBlock(const BYTE* raw, DWORD rawBytes);

// Whether the digest of each packed or unpacked block is computed. The variable is changed only while no other thread
// packs or unpacks blocks.
inline bool gDigestsBlocks;

// Returns whether the LZO library can be used on this machine. Callers check this once before they pack or unpack the
// blocks of a file.
bool CodecWorks();

// Packs up to RawBlockBytes of `raw` into `packed`, which has room for PackedBlockBytes. Returns false if the LZO
// library fails.
bool PackBlock(const BYTE* raw, DWORD rawBytes, BYTE* packed, DWORD& packedBytes, PackingMemory& memory);

// Unpacks into `raw`, which has room for RawBlockBytes. Returns false if `packed` isn't a valid block or has more raw
// bytes than fit. In that case `rawBytes` is the number of bytes that were unpacked before the fault was noticed. Never
// reads or writes outside of the two buffers, even if the bytes are damaged.
bool UnpackBlock(const BYTE* packed, DWORD packedBytes, BYTE* raw, DWORD& rawBytes);

// Returns the length of the longest literal run. A literal run is a sequence of raw bytes that the packed block
// contains unchanged. The block must be one that UnpackBlock has accepted.
DWORD LongestLiteralRun(const BYTE* packed, DWORD packedBytes);
