// stream_decoding.cpp - see stream_decoding.h.

#include "set/stream_decoding.h"

#include "ce/file.h"

namespace {

bool SeekTo(HANDLE file, DWORD place)
{
    SetLastError(ERROR_SUCCESS);
    return SetFilePointer(file, static_cast<LONG>(place), nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER ||
           GetLastError() == ERROR_SUCCESS;
}

}  // namespace

StreamFault DecodeStream(HANDLE file, DWORD start, DWORD end, RawBytesSink sink, void* context)
{
    if (!SeekTo(file, start))
        return StreamFault::ReadFailed;
    StreamReader reader = {file, end > start ? end - start : 0};
    if (const StreamFault fault = ReadMagic(reader); fault != StreamFault::None)
        return fault;
    for (;;) {
        const StreamBlock block = ReadBlock(reader);
        if (block.fault != StreamFault::None)
            return block.fault;
        if (block.atEnd)
            return StreamFault::NotClosed;
        if (block.rawBytes == 0)
            return reader.bytesLeft == 0 ? StreamFault::None : StreamFault::BytesBehindEnd;
        if (sink && !sink(gRawBuffer, block.rawBytes, context))
            return StreamFault::StoppedBySink;
    }
}
