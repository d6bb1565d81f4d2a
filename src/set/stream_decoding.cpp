#include "set/stream_decoding.h"

#include "ce/file.h"

#include <algorithm>
#include <cstring>

BYTE gRawBuffer[RawBlockBytes];

namespace {

BYTE gPackedBuffer[PackedBlockBytes];

// The result of one read. The end of the file isn't a failure.
struct ReadResult {
    DWORD bytes;
    bool failed;
};

ReadResult ReadFrom(StreamReader& reader, void* buffer, DWORD wanted)
{
    ReadResult result = {0, false};
    const auto bytes = static_cast<DWORD>(std::min<std::uint64_t>(wanted, reader.bytesLeft));
    if (!ReadFile(reader.file, buffer, bytes, &result.bytes, nullptr)) {
        const DWORD error = GetLastError();
        result.failed = error != ERROR_SUCCESS && error != ERROR_HANDLE_EOF;
    }
    reader.bytesLeft -= result.bytes;
    return result;
}

bool SeekTo(HANDLE file, DWORD offset)
{
    SetLastError(ERROR_SUCCESS);
    return SetFilePointer(file, static_cast<LONG>(offset), nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER ||
           GetLastError() == ERROR_SUCCESS;
}

}  // namespace

StreamFault ReadMagic(StreamReader& reader)
{
    BYTE magic[StreamMagicBytes];
    const ReadResult result = ReadFrom(reader, magic, StreamMagicBytes);
    if (result.failed)
        return StreamFault::ReadFailed;
    const bool good = result.bytes == StreamMagicBytes && std::memcmp(magic, StreamMagic, StreamMagicBytes) == 0;
    return good ? StreamFault::None : StreamFault::NoMagic;
}

StreamFault BeginStream(StreamReader& reader, HANDLE file, DWORD start, DWORD end)
{
    reader = {file, end > start ? end - start : 0};
    return SeekTo(file, start) ? ReadMagic(reader) : StreamFault::ReadFailed;
}

PackedBlock ReadPackedBlock(StreamReader& reader, BYTE* packed)
{
    DWORD packedBytes = 0;
    const ReadResult length = ReadFrom(reader, &packedBytes, sizeof packedBytes);
    if (length.bytes == 0)
        return {length.failed ? StreamFault::ReadFailed : StreamFault::None, true, 0};
    if (length.bytes < sizeof packedBytes)
        return {StreamFault::LengthCut, false, 0};
    if (packedBytes == 0)
        return {StreamFault::EmptyBlock, false, 0};
    if (packedBytes > PackedBlockBytes)
        return {StreamFault::BlockTooLong, false, 0};

    const ReadResult result = ReadFrom(reader, packed, packedBytes);
    if (result.failed)
        return {StreamFault::ReadFailed, false, 0};
    return {result.bytes < packedBytes ? StreamFault::BlockCut : StreamFault::None, false, result.bytes};
}

StreamBlock ReadBlock(StreamReader& reader)
{
    const PackedBlock packed = ReadPackedBlock(reader, gPackedBuffer);
    StreamBlock block = {packed.fault, packed.atEnd, 0};
    if (packed.fault == StreamFault::None && !packed.atEnd &&
        !UnpackBlock(gPackedBuffer, packed.bytes, gRawBuffer, block.rawBytes))
        block.fault = StreamFault::BlockDamaged;
    return block;
}

StreamFault DecodeStream(HANDLE file, DWORD start, DWORD end, RawBytesSink sink, void* context)
{
    StreamReader reader;
    if (const StreamFault fault = BeginStream(reader, file, start, end); fault != StreamFault::None)
        return fault;
    for (;;) {
        const StreamBlock block = ReadBlock(reader);
        if (block.fault != StreamFault::None)
            return block.fault;
        if (block.atEnd)
            return StreamFault::NotClosed;
        if (block.rawBytes == 0)
            return reader.bytesLeft == 0 ? StreamFault::None : StreamFault::BytesAfterEnd;
        if (sink && !sink(gRawBuffer, block.rawBytes, context))
            return StreamFault::StoppedBySink;
    }
}
