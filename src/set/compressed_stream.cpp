// compressed_stream.cpp - see compressed_stream.h.

#include "compressed_stream.h"

#include "block_pipeline.h"
#include "stream_block.h"

#include "ce/file.h"
#include "ce/text.h"

#include <lzo/lzo1x.h>

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

// What is written of a target. A write that fails cuts it short: were what follows written all the same, a target could
// lack bytes in its middle and look whole. That it is short is not told here: who needs to know asks StreamIsWhole.
struct Target {
    HANDLE file;
    bool cut;
};

void Write(Target& target, const void* bytes, DWORD count)
{
    DWORD written = 0;
    if (!target.cut)
        target.cut = !WriteFile(target.file, bytes, count, &written, nullptr) || written != count;
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
    DWORD wanted;  // a short read sets the pace of those behind it: the source grows while it is read, or is a slow one
    bool atEnd;    // the block of no raw bytes was the last one, or the read that met the end
    bool failed;
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
    if (!source.failed)
        OfferToPack(block, source.wanted);
    return !source.failed;
}

// Blocks, the last one of no raw bytes. Stops behind the last whole block when a read fails.
BOOL PackBlocks(HANDLE file, StreamWriter& writer)
{
    SourceReader source = {file, RawBlockBytes, false, false};
    DWORD inFlight = 0;
    do {
        while (inFlight < PipelinedBlocks && !source.atEnd && !source.failed)
            inFlight += ReadBlockAhead(source) ? 1 : 0;
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

BOOL PackAll(HANDLE source, HANDLE target)
{
    StreamWriter writer;
    writer.target = {target, false};
    writer.waiting = 0;
    Put(writer, StreamMagic, StreamMagicBytes);
    const BOOL result = PackBlocks(source, writer);
    EmptyPipeline();
    WriteWaiting(writer);
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

// The stream ends where the file ends: the closing block is one like any other, and one whose length counts too far is
// taken as well if what is there unpacks.
BOOL UnpackBlocks(StreamReader& reader, HANDLE file)
{
    Target target = {file, false};
    bool more = true;
    bool readable = true;
    for (DWORD inFlight = 0;; inFlight--) {
        while (more && inFlight < PipelinedBlocks) {
            PipelinedBlock& block = TakeBlock();
            const PackedBlock packed = ReadPackedBlock(reader, block.packed);
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
        if (block.rawBytes != 0)
            Write(target, block.raw, block.rawBytes);
    }
}

BOOL UnpackTo(StreamReader& reader, const WCHAR* path, BOOL& made)
{
    if (ReadMagic(reader) != StreamFault::None)
        return FALSE;
    const HANDLE target = OpenTargetWithFolders(path);
    if (target == INVALID_HANDLE_VALUE)
        return FALSE;
    made = TRUE;
    const BOOL result = UnpackBlocks(reader, target);
    EmptyPipeline();
    CloseHandle(target);
    return result;
}

// The length of the next block and the first bytes behind it: no block is shorter than the closing one.
struct BlockHead {
    DWORD packedBytes;
    BYTE first[ClosingBlockBytes];
};
static_assert(sizeof(BlockHead) == 8 && offsetof(BlockHead, first) == 4);
constexpr DWORD BlockHeadBytes = 4 + ClosingBlockBytes;

bool ReadWhole(HANDLE file, void* buffer, DWORD bytes)
{
    DWORD delivered = 0;
    return ReadFile(file, buffer, bytes, &delivered, nullptr) && delivered == bytes;
}

bool Skip(HANDLE file, DWORD bytes)
{
    SetLastError(ERROR_SUCCESS);
    return SetFilePointer(file, static_cast<LONG>(bytes), nullptr, FILE_CURRENT) != INVALID_SET_FILE_POINTER ||
           GetLastError() == ERROR_SUCCESS;
}

// Each length is held against what is left of the file, so that a block that was cut is never stepped over.
BOOL BlocksAreWhole(HANDLE stream, std::uint64_t bytesLeft)
{
    BlockHead head;
    while (bytesLeft >= BlockHeadBytes && ReadWhole(stream, &head, BlockHeadBytes)) {
        bytesLeft -= BlockHeadBytes;
        if (head.packedBytes < ClosingBlockBytes || head.packedBytes > PackedBlockBytes)
            return FALSE;
        const DWORD rest = head.packedBytes - ClosingBlockBytes;
        if (rest == 0)
            return bytesLeft == 0 && std::memcmp(head.first, ClosingBlock, ClosingBlockBytes) == 0;
        if (rest > bytesLeft || !Skip(stream, rest))
            return FALSE;
        bytesLeft -= rest;
    }
    return FALSE;
}

BOOL OpenStreamIsWhole(HANDLE stream)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    BYTE magic[StreamMagicBytes];
    if (!GetFileInformationByHandle(stream, &information) || !ReadWhole(stream, magic, StreamMagicBytes) ||
        std::memcmp(magic, StreamMagic, StreamMagicBytes) != 0)
        return FALSE;
    const std::uint64_t size = std::uint64_t{information.nFileSizeHigh} << 32 | information.nFileSizeLow;
    return BlocksAreWhole(stream, size - StreamMagicBytes);
}

}  // namespace

BOOL CompressFile(const WCHAR* source, const WCHAR* target, BOOL* made)
{
    BOOL unasked = FALSE;
    BOOL& targetMade = made ? *made : unasked;
    targetMade = FALSE;
    if (lzo_init() != LZO_E_OK)
        return FALSE;
    const HANDLE from = OpenSource(source);
    if (from == INVALID_HANDLE_VALUE)
        return FALSE;
    const HANDLE to = OpenTarget(target);
    BOOL result = FALSE;
    if (to != INVALID_HANDLE_VALUE) {
        targetMade = TRUE;
        result = PackAll(from, to);
        CloseHandle(to);
    }
    CloseHandle(from);
    return result;
}

BOOL DecompressFile(const WCHAR* source, const WCHAR* target, BOOL* made)
{
    BOOL unasked = FALSE;
    BOOL& targetMade = made ? *made : unasked;
    targetMade = FALSE;
    if (lzo_init() != LZO_E_OK)
        return FALSE;
    StreamReader reader = {OpenSource(source), WholeFile};
    if (reader.file == INVALID_HANDLE_VALUE)
        return FALSE;
    const BOOL result = UnpackTo(reader, target, targetMade);
    CloseHandle(reader.file);
    return result;
}

BOOL StreamIsWhole(const WCHAR* path)
{
    const HANDLE stream = OpenSource(path);
    if (stream == INVALID_HANDLE_VALUE)
        return FALSE;
    const BOOL result = OpenStreamIsWhole(stream);
    CloseHandle(stream);
    return result;
}
