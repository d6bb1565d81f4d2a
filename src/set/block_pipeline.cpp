// block_pipeline.cpp - see block_pipeline.h.

#include "block_pipeline.h"

#include "ce/thread.h"

#include <lzo/lzo1x.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

using Lock = std::unique_lock<std::mutex>;

// The library's own constant: it grows with the size of a pointer.
struct WorkMemory {
    alignas(void*) BYTE bytes[LZO1X_1_MEM_COMPRESS];
};
WorkMemory gRunsMemory;
WorkMemory gSecondMemory;

// All that the two threads share. The mutex guards each word; the bytes of a block, and its result, belong to whoever
// set its state to Underway, and to the run in any other state.
struct Shared {
    std::mutex mutex;
    std::condition_variable blockOffered;
    std::condition_variable blockFinished;
    bool threadRuns;
    bool stopping;
    PipelinedBlock blocks[PipelinedBlocks];
    DWORD oldest;
    DWORD count;
};
Shared gShared;

PipelinedBlock& BlockAt(DWORD place)
{
    return gShared.blocks[(gShared.oldest + place) % PipelinedBlocks];
}

bool Pack(PipelinedBlock& block, WorkMemory& memory)
{
    lzo_uint produced = 0;
    if (lzo1x_1_compress(block.raw, block.rawBytes, block.packed, &produced, memory.bytes) != LZO_E_OK)
        return false;
    block.packedBytes = static_cast<DWORD>(produced);
    return true;
}

void Work(Lock& lock, PipelinedBlock& block, WorkMemory& memory)
{
    block.state = BlockState::Underway;
    lock.unlock();
    block.good =
        block.unpacks ? UnpackBlock(block.packed, block.packedBytes, block.raw, block.rawBytes) : Pack(block, memory);
    lock.lock();
    block.state = BlockState::Finished;
}

PipelinedBlock* OfferedBlock()
{
    for (DWORD i = 0; i < gShared.count; i++)
        if (BlockAt(i).state == BlockState::Offered)
            return &BlockAt(i);
    return nullptr;
}

DWORD RunSecondThread(void* /*unused*/)
{
    Lock lock(gShared.mutex);
    while (!gShared.stopping) {
        if (PipelinedBlock* block = OfferedBlock()) {
            Work(lock, *block, gSecondMemory);
            gShared.blockFinished.notify_one();
        } else {
            gShared.blockOffered.wait(lock);
        }
    }
    gShared.threadRuns = false;
    gShared.blockFinished.notify_one();
    return 0;
}

// The run does a single block itself before another thread could begin, and a closing one costs next to nothing.
void Offer(PipelinedBlock& block, bool worthAThread)
{
    const Lock lock(gShared.mutex);
    block.state = BlockState::Offered;
    if (gShared.threadRuns && gShared.count > 1 && worthAThread)
        gShared.blockOffered.notify_one();
}

}  // namespace

void StartPipelineThread()
{
    if (std::thread::hardware_concurrency() < 2)
        return;
    const Lock lock(gShared.mutex);
    gShared.stopping = false;
    const HANDLE thread = CreateThread(nullptr, 0, RunSecondThread, nullptr, 0, nullptr);
    gShared.threadRuns = thread != nullptr;
    if (thread)
        CloseHandle(thread);
}

void StopPipelineThread()
{
    Lock lock(gShared.mutex);
    gShared.stopping = true;
    gShared.blockOffered.notify_one();
    gShared.blockFinished.wait(lock, [] { return !gShared.threadRuns; });
}

PipelinedBlock& TakeBlock()
{
    const Lock lock(gShared.mutex);
    PipelinedBlock& block = BlockAt(gShared.count++);
    block.state = BlockState::Taken;
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
    Lock lock(gShared.mutex);
    PipelinedBlock& block = BlockAt(0);
    while (block.state != BlockState::Finished) {
        if (PipelinedBlock* offered = OfferedBlock())
            Work(lock, *offered, gRunsMemory);
        else
            gShared.blockFinished.wait(lock);
    }
    gShared.oldest = (gShared.oldest + 1) % PipelinedBlocks;
    gShared.count--;
    return block;
}

void EmptyPipeline()
{
    Lock lock(gShared.mutex);
    for (DWORD i = 0; i < gShared.count; i++)
        gShared.blockFinished.wait(lock, [&] { return BlockAt(i).state != BlockState::Underway; });
    gShared.count = 0;
}
