// compressed_stream.cpp - see compressed_stream.h.

#include "set/compressed_stream.h"

#include "set/block_pipeline.h"
#include "set/stream_decoding.h"

#include "ce/file.h"
#include "ce/text.h"

#include <cstddef>
#include <cstring>

namespace {

HANDLE OpenSource(const WCHAR* path)
{
    return CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

HANDLE OpenTarget(const WCHAR* path)
{
    return CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
}

// Keeps the reason of the first failure, which the last error tells right behind the call.
void NoteFailure(StreamOutcome& outcome)
{
    const DWORD error = GetLastError();
    if (outcome.error == ERROR_SUCCESS)
        outcome.error = error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

void NoteFailure(StreamOutcome& outcome, DWORD error)
{
    SetLastError(error);
    NoteFailure(outcome);
}

// What is written of a target. A write that fails cuts it short: were what follows written all the same, a target could
// lack bytes in its middle and look whole.
struct Target {
    HANDLE file;
    StreamOutcome& outcome;
    bool cut;
    std::uint64_t bytes;
};

void Write(Target& target, const void* bytes, DWORD count)
{
    if (target.cut)
        return;
    DWORD written = 0;
    SetLastError(ERROR_SUCCESS);
    target.cut = !WriteFile(target.file, bytes, count, &written, nullptr) || written != count;
    target.bytes += written;
    if (target.cut)
        NoteFailure(target.outcome);
}

void CloseTarget(Target& target)
{
    target.cut |= !CloseHandle(target.file);  // the last bytes may not have found room
    if (target.cut)
        NoteFailure(target.outcome);
}

// Small pieces of a stream on their way to its file, so that a small stream costs one write.
struct StreamWriter {
    Target target;
    DWORD waiting;
    BYTE bytes[8192];
};

void WriteWaiting(StreamWriter& writer)
{
    if (writer.waiting != 0)
        Write(writer.target, writer.bytes, writer.waiting);
    writer.waiting = 0;
}

void Put(StreamWriter& writer, const void* bytes, DWORD count)
{
    if (count > sizeof writer.bytes - writer.waiting)
        WriteWaiting(writer);
    if (count > sizeof writer.bytes) {
        Write(writer.target, bytes, count);
        return;
    }
    std::memcpy(writer.bytes + writer.waiting, bytes, count);
    writer.waiting += count;
}

// What is read of a source, block by block.
struct SourceReader {
    HANDLE file;
    DWORD wanted;  // after a short read, later reads ask for no more than it returned
    bool atEnd;    // the block of no raw bytes was the last one, or the read that met the end
    bool failed;
    std::uint64_t bytes;  // that were read
};

// False, with no block, when a read fails.
bool ReadBlockAhead(SourceReader& source)
{
    PipelinedBlock& block = TakeBlock();
    DWORD error = ERROR_SUCCESS;
    if (!ReadFile(source.file, block.raw, source.wanted, &source.wanted, nullptr))
        error = GetLastError();
    source.failed = error != ERROR_SUCCESS && error != ERROR_HANDLE_EOF;
    source.atEnd = !source.failed && (error == ERROR_HANDLE_EOF || source.wanted == 0);
    source.bytes += source.wanted;
    if (!source.failed)
        OfferToPack(block, source.wanted);
    return !source.failed;
}

// Blocks, the last one of no raw bytes. Stops behind the last whole block when a read fails.
BOOL PackBlocks(SourceReader& source, StreamWriter& writer)
{
    DWORD inFlight = 0;
    do {
        while (inFlight < PipelinedBlocks && !source.atEnd && !source.failed) {
            if (ReadBlockAhead(source))
                inFlight++;
            else
                NoteFailure(writer.target.outcome);
        }
        if (inFlight == 0)
            return FALSE;
        const PipelinedBlock& block = FinishBlock();
        if (!block.good)
            return FALSE;
        Put(writer, &block.packedBytes, sizeof block.packedBytes);
        Put(writer, block.packed, block.packedBytes);
        inFlight--;
    } while (inFlight != 0 || !source.atEnd);
    return TRUE;
}

BOOL PackAll(SourceReader& source, StreamWriter& writer)
{
    Put(writer, StreamMagic, StreamMagicBytes);
    const BOOL result = PackBlocks(source, writer);
    EmptyPipeline();
    WriteWaiting(writer);
    return result;
}

// A read of 0 bytes counts as the end of the source, but a failing disk may give one before it. A source that grew
// meanwhile gives more than its length.
void HoldAgainstLength(const SourceReader& source, PackedStream& packed)
{
    if (source.bytes < packed.source.length)
        NoteFailure(packed, ERROR_HANDLE_EOF);
}

BOOL PackInto(HANDLE from, HANDLE to, PackedStream& packed)
{
    if (!GetFileStamp(from, &packed.source))
        NoteFailure(packed);
    StreamWriter writer = {{to, packed, false, 0}, 0, {}};
    SourceReader source = {from, RawBlockBytes, false, false, 0};
    const BOOL result = PackAll(source, writer);
    CloseTarget(writer.target);
    packed.bytes = writer.target.bytes;
    if (result)
        HoldAgainstLength(source, packed);
    else
        NoteFailure(packed);
    packed.whole = packed.error == ERROR_SUCCESS;
    return result;
}

// Each folder above the path's last part, from the root on. One that exists already is no failure: the open decides.
void MakeFoldersOf(const WCHAR* path)
{
    WCHAR prefix[MAX_PATH];
    const std::size_t characters = CopyText(prefix, path);
    for (std::size_t i = 1; i < characters; i++) {
        if (prefix[i] != u'\\')
            continue;
        prefix[i] = 0;
        (void)CreateDirectoryW(prefix, nullptr);
        prefix[i] = u'\\';
    }
}

HANDLE OpenTargetWithFolders(const WCHAR* path)
{
    const HANDLE target = OpenTarget(path);
    if (target != INVALID_HANDLE_VALUE)
        return target;
    MakeFoldersOf(path);
    return OpenTarget(path);
}

// The blocks of a stream as they come out of the pipeline.
struct BlockSink {
    Target target;
    bool closed;    // the closing block of no raw bytes was there
    bool overlong;  // and another block behind it
};

void TakeUnpacked(BlockSink& sink, const PipelinedBlock& block)
{
    sink.overlong |= sink.closed;
    sink.closed = block.rawBytes == 0;
    if (block.rawBytes != 0)
        Write(sink.target, block.raw, block.rawBytes);
}

// The stream ends where the file ends: the closing block is one like any other, and one whose length counts too far is
// taken as well if what is there unpacks. Such a stream gives 1, but its outcome isn't whole.
BOOL UnpackBlocks(StreamReader& reader, BlockSink& sink)
{
    StreamOutcome& outcome = sink.target.outcome;
    bool more = true;
    bool readable = true;
    for (DWORD inFlight = 0;; inFlight--) {
        while (more && inFlight < PipelinedBlocks) {
            PipelinedBlock& block = TakeBlock();
            const PackedBlock packed = ReadPackedBlock(reader, block.packed);
            if (packed.fault == StreamFault::ReadFailed)
                NoteFailure(outcome);
            else if (packed.fault != StreamFault::None)
                NoteFailure(outcome, ERROR_FILE_CORRUPT);
            more = packed.bytes != 0;
            readable = more || packed.atEnd;
            if (more) {
                OfferToUnpack(block, packed.bytes);
                inFlight++;
            }
        }
        if (inFlight == 0)
            return readable;
        const PipelinedBlock& block = FinishBlock();
        if (!block.good)
            return FALSE;
        TakeUnpacked(sink, block);
    }
}

BOOL UnpackTo(StreamReader& reader, const WCHAR* path, StreamOutcome& unpacked)
{
    if (ReadMagic(reader) != StreamFault::None) {
        NoteFailure(unpacked, ERROR_FILE_CORRUPT);
        return FALSE;
    }
    const HANDLE file = OpenTargetWithFolders(path);
    if (file == INVALID_HANDLE_VALUE) {
        NoteFailure(unpacked);
        return FALSE;
    }
    unpacked.made = TRUE;
    BlockSink sink = {{file, unpacked, false, 0}, false, false};
    const BOOL result = UnpackBlocks(reader, sink);
    EmptyPipeline();
    CloseTarget(sink.target);
    if (!result || !sink.closed || sink.overlong)
        NoteFailure(unpacked, ERROR_FILE_CORRUPT);
    unpacked.whole = unpacked.error == ERROR_SUCCESS;
    return result;
}

}  // namespace

BOOL CompressFile(const WCHAR* source, const WCHAR* target, PackedStream* told)
{
    PackedStream unasked;
    PackedStream& packed = told ? *told : unasked;
    packed = {};
    if (!CodecWorks()) {
        NoteFailure(packed, ERROR_GEN_FAILURE);
        return FALSE;
    }
    const HANDLE from = OpenSource(source);
    if (from == INVALID_HANDLE_VALUE) {
        NoteFailure(packed);
        return FALSE;
    }
    packed.opened = TRUE;
    const HANDLE to = OpenTarget(target);
    packed.made = to != INVALID_HANDLE_VALUE;
    BOOL result = FALSE;
    if (packed.made)
        result = PackInto(from, to, packed);
    else
        NoteFailure(packed);
    CloseHandle(from);
    return result;
}

BOOL DecompressFile(const WCHAR* source, const WCHAR* target, StreamOutcome* told)
{
    StreamOutcome unasked;
    StreamOutcome& unpacked = told ? *told : unasked;
    unpacked = {};
    if (!CodecWorks()) {
        NoteFailure(unpacked, ERROR_GEN_FAILURE);
        return FALSE;
    }
    StreamReader reader = {OpenSource(source), WholeFile};
    if (reader.file == INVALID_HANDLE_VALUE) {
        NoteFailure(unpacked);
        return FALSE;
    }
    const BOOL result = UnpackTo(reader, target, unpacked);
    CloseHandle(reader.file);
    return result;
}
