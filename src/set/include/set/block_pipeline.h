// block_pipeline.h - the blocks of one stream on their way through LZO, on the run's thread and, during a run, on a
// second one.
//
// The run reads and writes by itself, in its own order, as if it were alone; only the packing and unpacking between is
// shared. A block is read into the pipeline, offered, and comes out finished, the oldest first.
//
// One stream at a time. All calls are the run's thread's. What both threads share: the blocks, each of which belongs to
// whoever set its state to Underway, and to the run in any other state; and the words at the top of block_pipeline.cpp.
#pragma once

#include "set/stream_block.h"

#include <atomic>

// At most so many blocks are in the pipeline.
inline constexpr DWORD PipelinedBlocks = 4;

enum class BlockState { Idle, Offered, Underway, Finished };

struct PipelinedBlock {
    std::atomic<BlockState> state;
    bool unpacks;  // otherwise it is to be packed
    bool good;     // with Finished: the result is there
    DWORD rawBytes;
    DWORD packedBytes;
    BYTE raw[RawBlockBytes];
    BYTE packed[PackedBlockBytes];
};

// Starts and ends the second thread; the end waits for it. Without one, on a machine with one processor or where none
// can be made, the run's own thread does all.
void StartPipelineThread();
void StopPipelineThread();

// A block to read into.
PipelinedBlock& TakeBlock();

// Its bytes are there: `rawBytes` of `raw`, or `packedBytes` of `packed`.
void OfferToPack(PipelinedBlock& block, DWORD rawBytes);
void OfferToUnpack(PipelinedBlock& block, DWORD packedBytes);

// The oldest block that was offered. Its bytes stay until the next call of TakeBlock.
const PipelinedBlock& FinishBlock();

// Forgets what was offered and not finished.
void EmptyPipeline();
