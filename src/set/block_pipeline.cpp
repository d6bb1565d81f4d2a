// block_pipeline.cpp - see block_pipeline.h.

#include "set/block_pipeline.h"

#include "ce/thread.h"

#include <lzo/lzo1x.h>

namespace {

// The library's own constant: it grows with the size of a pointer.
struct WorkMemory {
    alignas(void*) BYTE bytes[LZO1X_1_MEM_COMPRESS];
};
WorkMemory gRunsMemory;
WorkMemory gSecondMemory;

// The run's alone, but for the blocks themselves.
PipelinedBlock gBlocks[PipelinedBlocks];
DWORD gOldest;
DWORD gCount;

// Shared: each offer that is worth a second thread, and each wish to stop, counts one up.
std::atomic<DWORD> gCalls;
std::atomic<bool> gStopping;
std::atomic<bool> gThreadRuns;

PipelinedBlock& BlockAt(DWORD place)
{
    return gBlocks[(gOldest + place) % PipelinedBlocks];
}

bool Pack(PipelinedBlock& block, WorkMemory& memory)
{
    lzo_uint produced = 0;
    if (lzo1x_1_compress(block.raw, block.rawBytes, block.packed, &produced, memory.bytes) != LZO_E_OK)
        return false;
    block.packedBytes = static_cast<DWORD>(produced);
    return true;
}

// False if somebody else has it, or nobody offers it.
bool Work(PipelinedBlock& block, WorkMemory& memory)
{
    BlockState offered = BlockState::Offered;
    if (!block.state.compare_exchange_strong(offered, BlockState::Underway))
        return false;
    block.good =
        block.unpacks ? UnpackBlock(block.packed, block.packedBytes, block.raw, block.rawBytes) : Pack(block, memory);
    block.state = BlockState::Finished;
    block.state.notify_one();
    return true;
}

// A block that is offered behind the thread's back has called it again.
DWORD RunSecondThread(void* /*unused*/)
{
    while (!gStopping) {
        const DWORD calls = gCalls;
        bool worked = false;
        for (PipelinedBlock& block : gBlocks)
            worked |= Work(block, gSecondMemory);
        if (!worked && !gStopping)
            gCalls.wait(calls);
    }
    gThreadRuns = false;
    gThreadRuns.notify_one();
    return 0;
}

void CallThread()
{
    gCalls++;
    gCalls.notify_one();
}

// The run does a single block itself before another thread could begin, and a closing one costs next to nothing.
void Offer(PipelinedBlock& block, bool worthAThread)
{
    block.state = BlockState::Offered;
    if (gThreadRuns && gCount > 1 && worthAThread)
        CallThread();
}

bool WorkOnAny()
{
    for (DWORD i = 0; i < gCount; i++)
        if (Work(BlockAt(i), gRunsMemory))
            return true;
    return false;
}

}  // namespace

void StartPipelineThread()
{
    gStopping = false;
    gThreadRuns = true;
    const HANDLE thread = CreateThread(nullptr, 0, RunSecondThread, nullptr, 0, nullptr);
    if (thread)
        CloseHandle(thread);
    else
        gThreadRuns = false;
}

void StopPipelineThread()
{
    gStopping = true;
    CallThread();
    gThreadRuns.wait(true);
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
    while (block.state != BlockState::Finished)
        if (!WorkOnAny())
            block.state.wait(BlockState::Underway);
    gOldest = (gOldest + 1) % PipelinedBlocks;
    gCount--;
    return block;
}

void EmptyPipeline()
{
    for (DWORD i = 0; i < gCount; i++) {
        PipelinedBlock& block = BlockAt(i);
        BlockState offered = BlockState::Offered;
        if (!block.state.compare_exchange_strong(offered, BlockState::Idle))
            block.state.wait(BlockState::Underway);
    }
    gCount = 0;
}
