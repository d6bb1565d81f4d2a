// decompress_stream.cpp - any bytes as a stream: unpacked to a file, walked, and decoded in place. None may contradict
// another.

#include "compressed_stream.h"
#include "stream_decoding.h"
#include "temporary_root.h"

namespace {

BOOL addUp(const BYTE* raw, DWORD bytes, void* total)
{
    auto& sum = *static_cast<std::uint64_t*>(total);
    for (DWORD i = 0; i < bytes; i++)
        sum += raw[i] + std::uint64_t{1};
    return TRUE;
}

void require(bool holds)
{
    if (!holds)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TemporaryRoot root;
    TemporaryRoot::write(u"\\stream", data, size);
    const BOOL unpacked = DecompressFile(u"\\stream", u"\\raw");
    const BOOL whole = StreamIsWhole(u"\\stream");

    const HANDLE file = CreateFileW(u"\\stream", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    std::uint64_t sum = 0;
    const StreamFault fault = DecodeStream(file, 0, static_cast<DWORD>(size), addUp, &sum);
    CloseHandle(file);
    // An empty block can be spelt in other bits than the writer's: then it decodes, but isn't taken for whole.
    if (fault == StreamFault::None)
        require(unpacked != 0);
    if (whole)
        require(fault == StreamFault::None || fault == StreamFault::BlockDamaged ||
                fault == StreamFault::BytesBehindEnd);

    // What was unpacked comes back from a stream of our own.
    if (unpacked)
        require(CompressFile(u"\\raw", u"\\stream") && StreamIsWhole(u"\\stream"));
    return 0;
}
