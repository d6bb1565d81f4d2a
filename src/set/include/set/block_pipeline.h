// block_pipeline.h - packs and unpacks the blocks of one stream on the run's thread, which is the thread that executes
// a backup or a restore. During a run and the verification after it, a second thread helps.
//
// Only the run's thread reads and writes files, in the same order as without a second thread. The second thread only
// packs and unpacks blocks. The run's thread takes a block, reads into it and offers it. Up to PipelinedBlocks blocks
// can be in the pipeline. FinishBlock returns the finished blocks in the order in which they were offered.
//
// The pipeline processes one stream at a time. All calls are made on the run's thread. block_pipeline.cpp explains
// which data the two threads share.
#pragma once

#include "set/block_codec.h"

#include <atomic>

// The largest number of blocks in the pipeline. A block is in the pipeline from the call of TakeBlock that returns it
// until FinishBlock returns it or EmptyPipeline drops it.
inline constexpr DWORD PipelinedBlocks = 4;

enum class BlockState { Idle, Offered, Underway, Finished };

struct PipelinedBlock {
    std::atomic<BlockState> state;
    bool unpacks;  // the block is to be unpacked, otherwise packed
    bool good;     // whether the codec succeeded; valid in the state Finished
    DWORD rawBytes;
    DWORD packedBytes;
    std::uint64_t digest;  // of the raw bytes; valid in the state Finished, if gDigestsBlocks
    BYTE raw[RawBlockBytes];
    BYTE packed[PackedBlockBytes];
};

// Start and stop the second thread. StopPipelineThread waits until the thread has ended. If no thread can be made, the
// run's thread does all the work.
void StartPipelineThread();
void StopPipelineThread();

// Returns an idle block to read into. At most PipelinedBlocks blocks can be taken at the same time.
PipelinedBlock& TakeBlock();

// Offers the block that was taken last, with `rawBytes` bytes in `raw` or `packedBytes` bytes in `packed`.
void OfferToPack(PipelinedBlock& block, DWORD rawBytes);
void OfferToUnpack(PipelinedBlock& block, DWORD packedBytes);

// Returns the oldest offered block after it is packed or unpacked. Its bytes are valid until the next TakeBlock.
const PipelinedBlock& FinishBlock();

// Drops all blocks in the pipeline, finished or not.
void EmptyPipeline();
