// block_pipeline.h - packs and unpacks the blocks of one stream on the run's thread and, during a run
// and the verification after it, on a second one.
//
// The run reads and writes its files by itself and in their order, as it would without a second thread. Only the work
// of the codec is shared. The run takes a block, reads into it and offers it, up to PipelinedBlocks of them, and gets
// them back finished in the order in which it offered them.
//
// One stream at a time, and all calls on the run's thread. block_pipeline.cpp explains what the two threads share.
#pragma once

#include "set/block_codec.h"

#include <atomic>

// At most this many blocks are between TakeBlock and FinishBlock.
inline constexpr DWORD PipelinedBlocks = 4;

enum class BlockState { Idle, Offered, Underway, Finished };

struct PipelinedBlock {
    std::atomic<BlockState> state;
    bool unpacks;  // the block is to be unpacked, otherwise packed
    bool good;     // once it is finished: the codec succeeded
    DWORD rawBytes;
    DWORD packedBytes;
    std::uint64_t digest;  // of the raw bytes, once it is finished, if gDigestsBlocks
    BYTE raw[RawBlockBytes];
    BYTE packed[PackedBlockBytes];
};

// Start the second thread, and stop it and wait until it has ended. Where no thread can be made, the run's thread does
// all the work.
void StartPipelineThread();
void StopPipelineThread();

// An idle block to read into. At most PipelinedBlocks at a time.
PipelinedBlock& TakeBlock();

// Offers the block that was taken last, with `rawBytes` bytes in `raw` or `packedBytes` bytes in `packed`.
void OfferToPack(PipelinedBlock& block, DWORD rawBytes);
void OfferToUnpack(PipelinedBlock& block, DWORD packedBytes);

// Waits for the oldest offered block and returns it. Its bytes are valid until the next TakeBlock.
const PipelinedBlock& FinishBlock();

// Drops all blocks that were taken or offered and not finished.
void EmptyPipeline();
