// Packing and unpacking work in the same way. The run's thread reads blocks and offers them until the pipeline is full
// (block_pipeline.h). Then it waits until the oldest block is finished, and writes that block. So it reads and writes
// in the order of the file. Meanwhile the blocks that it has read and not yet written are packed or unpacked.
//
// CompressFile and DecompressFile have a result and an outcome (StreamOutcome), which differ on purpose. The result
// says whether the source could be processed to its end. The run's next steps and its log depend on the result. The
// outcome says whether the target is complete. It decides whether the item is reported and whether its source is
// deleted. A write that fails therefore changes only the outcome.
#include "set/compressed_stream.h"

#include "set/block_pipeline.h"
#include "set/stream_decoding.h"
#include "stream_files.h"

#include "ce/file.h"
#include "ce/progress.h"
#include "ce/text.h"

#include <cstddef>
#include <cstring>

namespace {

// Buffers the small pieces of a stream, so that a small stream is written by one call.
struct StreamWriter {
    Target target;
    DWORD filled;
    BYTE bytes[8192];
};

void WriteGathered(StreamWriter& writer)
{
    if (writer.filled != 0)
        Write(writer.target, writer.bytes, writer.filled);
    writer.filled = 0;
}

// A piece that is larger than the buffer is written directly, after the bytes in the buffer.
void Put(StreamWriter& writer, const void* bytes, DWORD count)
{
    if (count > sizeof writer.bytes - writer.filled)
        WriteGathered(writer);
    if (count > sizeof writer.bytes) {
        Write(writer.target, bytes, count);
        return;
    }
    std::memcpy(writer.bytes + writer.filled, bytes, count);
    writer.filled += count;
}

struct SourceReader {
    HANDLE file;
    DWORD wanted;  // size of the next read: the number of bytes that the last read returned
    bool atEnd;    // the last read reached the end; its block closes the stream and usually has no raw bytes
    bool failed;
    std::uint64_t bytes;   // read so far
    std::uint64_t digest;  // DigestWith of the blocks that were packed so far
};

// Reads the next block and offers it to the pipeline. If the read fails, returns false and offers no block.
bool OfferNextBlock(SourceReader& source)
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

// Keeps the pipeline full while there is something to read, and writes the blocks in their order. Returns FALSE if a
// read fails or a block can't be packed. After a failed read the blocks that were read before it are still written.
BOOL PackBlocks(SourceReader& source, StreamWriter& writer)
{
    DWORD offered = 0;
    do {
        while (offered < PipelinedBlocks && !source.atEnd && !source.failed) {
            if (OfferNextBlock(source))
                offered++;
            else
                NoteFailure(writer.target.outcome);
        }
        if (offered == 0)
            return FALSE;
        const PipelinedBlock& block = FinishBlock();
        if (!block.good)
            return FALSE;
        Put(writer, &block.packedBytes, sizeof block.packedBytes);
        Put(writer, block.packed, block.packedBytes);
        if (block.rawBytes != 0)
            source.digest = DigestWith(source.digest, block.digest);
        ReportItemBytes(source.bytes);
        offered--;
    } while (offered != 0 || !source.atEnd);
    return TRUE;
}

// If PackBlocks fails, blocks can still be in the pipeline. They must be dropped, since the next stream uses the same
// pipeline.
BOOL PackAll(SourceReader& source, StreamWriter& writer)
{
    Put(writer, StreamMagic, StreamMagicBytes);
    const BOOL result = PackBlocks(source, writer);
    EmptyPipeline();
    WriteGathered(writer);
    return result;
}

// Stores an error if fewer bytes were read than the source had before the first read. A read of 0 bytes is treated as
// the end of the source, but a failing disk can return 0 bytes before the end. If more bytes were read, the source has
// grown during the reading, which isn't a failure.
void CheckLength(const SourceReader& source, PackedStream& packed)
{
    if (source.bytes < packed.source.length)
        NoteFailure(packed, ERROR_HANDLE_EOF);
}

// Packs the source. Takes the source's stamp, which has its length and times, before the first read. If the source
// changes while it is read or later, it no longer matches the stamp, and the backup doesn't delete it.
BOOL PackInto(HANDLE from, HANDLE to, PackedStream& packed)
{
    if (!GetFileStamp(from, &packed.source))
        NoteFailure(packed);
    StreamWriter writer = {{to, packed, false, 0}, 0, {}};
    SourceReader source = {from, RawBlockBytes, false, false, 0, 0};
    const BOOL result = PackAll(source, writer);
    CloseTarget(writer.target);
    packed.bytes = writer.target.bytes;
    packed.readBytes = source.bytes;
    packed.digest = source.digest;
    if (result)
        CheckLength(source, packed);
    else
        NoteFailure(packed);
    packed.whole = packed.error == ERROR_SUCCESS;
    return result;
}

// Makes the folders of the path, beginning at the root. Failures aren't checked here, since opening the target fails if
// a folder is missing.
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

HANDLE OpenTargetWithFolders(const WCHAR* path, bool keepsOld)
{
    const DWORD creation = keepsOld ? CREATE_NEW : CREATE_ALWAYS;
    const HANDLE target = OpenTarget(path, creation);
    if (target != INVALID_HANDLE_VALUE || (keepsOld && GetLastError() != ERROR_PATH_NOT_FOUND))
        return target;
    MakeFoldersOf(path);
    return OpenTarget(path, creation);
}

// The state while the unpacked blocks of a stream are written in their order.
struct BlockSink {
    Target target;
    bool closed;    // the block that was written last had no raw bytes
    bool overlong;  // a block followed the closing block
};

// Writes the raw bytes of a block. Blocks after the closing block are written too, although such a stream is damaged.
void TakeUnpacked(BlockSink& sink, const PipelinedBlock& block)
{
    sink.overlong |= sink.closed;
    sink.closed = block.rawBytes == 0;
    if (block.rawBytes != 0)
        Write(sink.target, block.raw, block.rawBytes);
}

// Reads the next block and offers it to the pipeline. Returns false if there is no block to offer. In that case
// `readable` says whether the stream counts as read to its end. It becomes false if the stream is damaged or a block
// can't be read. It becomes true at the end of the stream. It also becomes true if the read of a block's length fails,
// but then the outcome gets an error.
bool OfferNextPackedBlock(StreamReader& reader, StreamOutcome& outcome, bool& readable)
{
    PipelinedBlock& block = TakeBlock();
    const PackedBlock packed = ReadPackedBlock(reader, block.packed);
    if (packed.fault == StreamFault::ReadFailed)
        NoteFailure(outcome);
    else if (packed.fault != StreamFault::None)
        NoteFailure(outcome, ERROR_FILE_CORRUPT);
    if (packed.bytes == 0) {
        readable = packed.atEnd;
        return false;
    }
    OfferToUnpack(block, packed.bytes);
    return true;
}

// Unpacks and writes the blocks up to the end of the file, including the closing block. Returns FALSE if a block can't
// be read or unpacked. If the file ends inside the last block, the bytes that the file has of this block are unpacked
// too. If that succeeds, the function returns TRUE, but the outcome (sink.target.outcome) has an error.
BOOL UnpackBlocks(StreamReader& reader, BlockSink& sink)
{
    bool more = true;
    bool readable = true;
    DWORD offered = 0;
    std::uint64_t bytes = 0;
    for (;;) {
        while (more && offered < PipelinedBlocks) {
            more = OfferNextPackedBlock(reader, sink.target.outcome, readable);
            offered += more ? 1 : 0;
        }
        if (offered == 0)
            return readable;
        const PipelinedBlock& block = FinishBlock();
        offered--;
        if (!block.good)
            return FALSE;
        TakeUnpacked(sink, block);
        bytes += block.packedBytes;
        ReportItemBytes(bytes);
    }
}

BOOL UnpackTo(StreamReader& reader, const WCHAR* path, StreamOutcome& unpacked, bool keepsOld)
{
    if (ReadMagic(reader) != StreamFault::None) {
        NoteFailure(unpacked, ERROR_FILE_CORRUPT);
        return FALSE;
    }
    const HANDLE file = OpenTargetWithFolders(path, keepsOld);
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

BOOL CompressFile(const WCHAR* source, const WCHAR* target, PackedStream* outcome)
{
    PackedStream unused;
    PackedStream& packed = outcome ? *outcome : unused;
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

BOOL DecompressFile(const WCHAR* source, const WCHAR* target, StreamOutcome* outcome, bool keepsOld)
{
    StreamOutcome unused;
    StreamOutcome& unpacked = outcome ? *outcome : unused;
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
    const BOOL result = UnpackTo(reader, target, unpacked, keepsOld);
    CloseHandle(reader.file);
    return result;
}
