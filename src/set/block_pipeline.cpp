// Which thread may access a block in which state:
//
//   Idle       the run's thread, which reads into it
//   Offered    nobody, until a thread changes the state to Underway
//   Underway   the thread that made that change; a compare-and-exchange lets only one of the two threads make it
//   Finished   the run's thread, which writes the result to a file
//
// `state` is the only field that both threads access at the same time. It is sequentially consistent. So a thread that
// reads a new state also sees what the other thread wrote into the block before it set that state.
//
// The blocks form a ring. gOldest and gCount say which of them are in use. Only the run's thread reads or writes these
// two variables. The second thread doesn't need them, because it looks at all blocks. A block that isn't in use is
// never Offered.
//
// The run's thread never waits for a block that no thread works on. Until the oldest block is Finished, FinishBlock
// packs or unpacks Offered blocks itself, the oldest first. It waits only if no block is Offered and the second thread
// still works on the oldest block.
#include "set/block_pipeline.h"

#include "set/second_thread.h"

namespace {

PipelinedBlock gBlocks[PipelinedBlocks];
DWORD gOldest;
DWORD gCount;

PackingMemory gRunMemory;
PackingMemory gSecondMemory;

SecondThread gPackingThread;

PipelinedBlock& BlockAt(DWORD index)
{
    return gBlocks[(gOldest + index) % PipelinedBlocks];
}

// Packs or unpacks the block if it is Offered. Returns false if it isn't, for example because the other thread has
// begun to work on it.
bool WorkOn(PipelinedBlock& block, PackingMemory& memory)
{
    BlockState expected = BlockState::Offered;
    if (!block.state.compare_exchange_strong(expected, BlockState::Underway))
        return false;
    block.good = block.unpacks ? UnpackBlock(block.packed, block.packedBytes, block.raw, block.rawBytes)
                               : PackBlock(block.raw, block.rawBytes, block.packed, block.packedBytes, memory);
    if (gDigestsBlocks)
        block.digest = DigestOfBlock(block.raw, block.rawBytes);
    block.state = BlockState::Finished;
    block.state.notify_one();
    return true;
}

bool WorkOnOffered()
{
    bool worked = false;
    for (PipelinedBlock& block : gBlocks)
        worked |= WorkOn(block, gSecondMemory);
    return worked;
}

// Makes the block Offered. Wakes the second thread if there is one, except in two cases:
// - The block is the only one in the pipeline. The run's thread will either work on it itself or offer another block,
//   and that call can wake the second thread.
// - `takesTime` is false: the work on the block takes less time than waking the thread.
void Offer(PipelinedBlock& block, bool takesTime)
{
    block.state = BlockState::Offered;
    if (gPackingThread.runs && gCount > 1 && takesTime)
        WakeSecondThread(gPackingThread);
}

bool WorkOnAnyBlock()
{
    for (DWORD i = 0; i < gCount; i++) {
        if (WorkOn(BlockAt(i), gRunMemory))
            return true;
    }
    return false;
}

}  // namespace

void StartPipelineThread()
{
    StartSecondThread(gPackingThread, WorkOnOffered);
}

void StopPipelineThread()
{
    StopSecondThread(gPackingThread);
}

PipelinedBlock& TakeBlock()
{
    PipelinedBlock& block = BlockAt(gCount++);
    block.state = BlockState::Idle;
    return block;
}

void OfferToPack(PipelinedBlock& block, DWORD rawBytes)
{
    block.unpacks = false;
    block.rawBytes = rawBytes;
    Offer(block, rawBytes != 0);
}

void OfferToUnpack(PipelinedBlock& block, DWORD packedBytes)
{
    block.unpacks = true;
    block.packedBytes = packedBytes;
    Offer(block, packedBytes > ClosingBlockBytes);
}

const PipelinedBlock& FinishBlock()
{
    PipelinedBlock& block = BlockAt(0);
    while (block.state != BlockState::Finished) {
        if (!WorkOnAnyBlock())
            block.state.wait(BlockState::Underway);
    }
    gOldest = (gOldest + 1) % PipelinedBlocks;
    gCount--;
    return block;
}

// Takes back each block that is still Offered. Waits for each block that is Underway, since the second thread still
// writes into it.
void EmptyPipeline()
{
    for (DWORD i = 0; i < gCount; i++) {
        PipelinedBlock& block = BlockAt(i);
        BlockState expected = BlockState::Offered;
        if (!block.state.compare_exchange_strong(expected, BlockState::Idle))
            block.state.wait(BlockState::Underway);
    }
    gCount = 0;
}
