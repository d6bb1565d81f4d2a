// stream_block.cpp - see stream_block.h.

#include "stream_block.h"

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

// The library's checked call: it stops at the end of either buffer, whatever the bytes say.
bool Unpack(DWORD packedBytes, DWORD& rawBytes)
{
    lzo_uint produced = RawBlockBytes;
    if (lzo1x_decompress_safe(gPackedBuffer, packedBytes, gRawBuffer, &produced, nullptr) != LZO_E_OK)
        return false;
    rawBytes = static_cast<DWORD>(produced);
    return true;
}

StreamBlock FaultOf(StreamFault fault)
{
    return {fault, false, false, 0};
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

StreamBlock ReadBlock(StreamReader& reader)
{
    DWORD packedBytes = 0;
    const Delivered length = ReadFrom(reader, &packedBytes, sizeof packedBytes);
    if (length.bytes == 0)
        return {length.failed ? StreamFault::ReadFailed : StreamFault::None, true, false, 0};
    if (length.bytes < sizeof packedBytes)
        return FaultOf(StreamFault::LengthCut);
    if (packedBytes == 0)
        return FaultOf(StreamFault::EmptyBlock);
    if (packedBytes > PackedBlockBytes)
        return FaultOf(StreamFault::BlockTooLong);

    const Delivered packed = ReadFrom(reader, gPackedBuffer, packedBytes);
    if (packed.failed)
        return FaultOf(StreamFault::ReadFailed);
    StreamBlock block;
    const bool cut = packed.bytes < packedBytes;
    block.unpacked = packed.bytes != 0 && Unpack(packed.bytes, block.rawBytes);
    if (cut)
        block.fault = StreamFault::BlockCut;
    else if (!block.unpacked)
        block.fault = StreamFault::BlockDamaged;
    return block;
}
