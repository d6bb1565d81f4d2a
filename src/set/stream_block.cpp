// stream_block.cpp - see stream_block.h.

#include "set/stream_block.h"

#include "ce/file.h"

#include <lzo/lzo1x.h>

#include <algorithm>
#include <cstring>

BYTE gRawBuffer[RawBlockBytes];
BYTE gPackedBuffer[PackedBlockBytes];

namespace {

// What a read of the stream gave. End of file isn't a failure, whatever number the platform gives it.
struct Delivered {
    DWORD bytes;
    bool failed;
};

Delivered ReadFrom(StreamReader& reader, void* buffer, DWORD wanted)
{
    Delivered delivered = {0, false};
    const auto bytes = static_cast<DWORD>(std::min<std::uint64_t>(wanted, reader.bytesLeft));
    if (!ReadFile(reader.file, buffer, bytes, &delivered.bytes, nullptr)) {
        const DWORD error = GetLastError();
        delivered.failed = error != ERROR_SUCCESS && error != ERROR_HANDLE_EOF;
    }
    reader.bytesLeft -= delivered.bytes;
    return delivered;
}

}  // namespace

StreamFault ReadMagic(StreamReader& reader)
{
    BYTE magic[StreamMagicBytes];
    const Delivered delivered = ReadFrom(reader, magic, StreamMagicBytes);
    if (delivered.failed)
        return StreamFault::ReadFailed;
    const bool good = delivered.bytes == StreamMagicBytes && std::memcmp(magic, StreamMagic, StreamMagicBytes) == 0;
    return good ? StreamFault::None : StreamFault::NoMagic;
}

PackedBlock ReadPackedBlock(StreamReader& reader, BYTE* packed)
{
    DWORD packedBytes = 0;
    const Delivered length = ReadFrom(reader, &packedBytes, sizeof packedBytes);
    if (length.bytes == 0)
        return {length.failed ? StreamFault::ReadFailed : StreamFault::None, true, 0};
    if (length.bytes < sizeof packedBytes)
        return {StreamFault::LengthCut, false, 0};
    if (packedBytes == 0)
        return {StreamFault::EmptyBlock, false, 0};
    if (packedBytes > PackedBlockBytes)
        return {StreamFault::BlockTooLong, false, 0};

    const Delivered delivered = ReadFrom(reader, packed, packedBytes);
    if (delivered.failed)
        return {StreamFault::ReadFailed, false, 0};
    return {delivered.bytes < packedBytes ? StreamFault::BlockCut : StreamFault::None, false, delivered.bytes};
}

// The library's checked call: it stops at the end of either buffer, whatever the bytes say.
bool UnpackBlock(const BYTE* packed, DWORD packedBytes, BYTE* raw, DWORD& rawBytes)
{
    lzo_uint produced = RawBlockBytes;
    if (lzo1x_decompress_safe(packed, packedBytes, raw, &produced, nullptr) != LZO_E_OK)
        return false;
    rawBytes = static_cast<DWORD>(produced);
    return true;
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
