// Who may touch a block:
//
//   Idle       the run's thread, which reads into it
//   Offered    nobody, until a thread changes the state to Underway
//   Underway   the thread that made that change: one compare-and-exchange decides between the two
//   Finished   the run's thread, which writes the result to a file
//
// `state` is the only field that both threads access at the same time. It is sequentially consistent, so whoever reads
// a new state also sees what the other thread wrote into the block before it.
//
// The blocks are a ring. gOldest and gCount say which of them are in use, and only the run's thread reads or writes
// those two. The second thread looks at all blocks instead: one that isn't in use is never Offered.
//
// No call waits for a block that nobody works on. FinishBlock packs what is offered by itself, the oldest block first,
// and waits only when the oldest block is Underway, which is then on the second thread.
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

// False if the block isn't offered, or the other thread was faster.
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

// The second thread isn't woken for a single block, which the run's thread finishes before another could begin, nor for
// one that takes less time than waking.
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

// A block that is still Offered is taken back. For one that is Underway there is nothing to do but wait, since the
// second thread writes into it.
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
