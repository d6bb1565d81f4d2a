#include "set_verification.h"

#include "engine/stored_digests.h"
#include "set/block_pipeline.h"
#include "set/compressed_stream.h"
#include "set/item_kinds.h"
#include "set/list_file.h"
#include "set/list_reader.h"
#include "set/stream_decoding.h"

#include "ce/file.h"
#include "ce/outcome.h"

namespace {

// Unpacks the blocks of a stream on the run's thread and the pipeline thread (block_pipeline.h), and adds their digests
// to `digest`. Returns true if all blocks are whole, the last one is a closing block, and no other block is a closing
// block.
bool AddBlocks(StreamReader& reader, std::uint64_t& digest)
{
    DWORD offered = 0;
    for (;;) {
        while (offered < PipelinedBlocks && reader.bytesLeft != 0) {
            PipelinedBlock& block = TakeBlock();
            const PackedBlock packed = ReadPackedBlock(reader, block.packed);
            if (packed.fault != StreamFault::None || packed.atEnd)
                return false;
            OfferToUnpack(block, packed.bytes);
            offered++;
        }
        if (offered == 0)
            return false;
        const PipelinedBlock& block = FinishBlock();
        offered--;
        if (!block.good || block.rawBytes == 0)
            return block.good && offered == 0 && reader.bytesLeft == 0;
        digest = DigestWith(digest, block.digest);
    }
}

bool IsAsItWasRead(HANDLE dataFile, const ListEntry& entry, std::uint64_t expected)
{
    StreamReader reader;
    std::uint64_t digest = 0;
    const bool whole = BeginStream(reader, dataFile, entry.startOffset, entry.endOffset) == StreamFault::None &&
                       AddBlocks(reader, digest);
    EmptyPipeline();
    return whole && digest == expected;
}

HANDLE OpenFromDisk(const WCHAR* path)
{
    const HANDLE file = CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file != INVALID_HANDLE_VALUE)
        (void)DropFromCache(file);
    return file;
}

void Report(DWORD kind, const WCHAR* name)
{
    ReportItem(OutcomeNotStored, kind, name, ERROR_FILE_CORRUPT);
}

void VerifyEntries(HANDLE listFile, HANDLE dataFile, const WCHAR* listPath)
{
    static ListReader reader;  // too large for the stack
    static ListEntry entry;
    WCHAR comment[CommentChars];
    StartListReader(reader, listFile);
    (void)ReadListHead(reader, comment);
    std::size_t number = 0;
    for (; !JobIsToStop() && ReadListEntry(reader, entry); number++) {
        if (number >= gStoredDigests.size() || !IsAsItWasRead(dataFile, entry, gStoredDigests[number]))
            Report(KindOf(entry.kind).reportedAs, entry.blob.name);
    }
    if (JobIsToStop())
        ReportItem(OutcomeNotReached, OutcomeFile, listPath, ERROR_SUCCESS);
    else if (number != gStoredDigests.size() || reader.readError != ERROR_SUCCESS)
        Report(OutcomeFile, listPath);
}

void VerifyWithPipeline(HANDLE listFile, HANDLE dataFile, const WCHAR* listPath)
{
    StartPipelineThread();
    VerifyEntries(listFile, dataFile, listPath);
    StopPipelineThread();
}

}  // namespace

void VerifyStoredSet(const WCHAR* listPath)
{
    WCHAR dataPath[MAX_PATH];
    DataPathOfList(dataPath, listPath);
    const HANDLE listFile = OpenFromDisk(listPath);
    const HANDLE dataFile = OpenFromDisk(dataPath);
    if (listFile != INVALID_HANDLE_VALUE && dataFile != INVALID_HANDLE_VALUE)
        VerifyWithPipeline(listFile, dataFile, listPath);
    else
        Report(OutcomeFile, listFile == INVALID_HANDLE_VALUE ? listPath : dataPath);
    for (const HANDLE file : {listFile, dataFile}) {
        if (file != INVALID_HANDLE_VALUE)
            CloseHandle(file);
    }
}
