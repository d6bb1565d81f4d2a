// decompress_stream.cpp - reads any bytes as a stream in two ways: it unpacks them to a file, and it decodes them in
// place. The results must agree on whether the stream is whole.

#include "require.h"
#include "set/compressed_stream.h"
#include "set/stream_decoding.h"
#include "temporary_root.h"

namespace {

BOOL addUp(const BYTE* raw, DWORD bytes, void* total)
{
    auto& sum = *static_cast<std::uint64_t*>(total);
    for (DWORD i = 0; i < bytes; i++)
        sum += raw[i] + std::uint64_t{1};
    return TRUE;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TemporaryRoot root;
    TemporaryRoot::write(u"\\stream", data, size);
    StreamOutcome outcome;
    const BOOL unpacked = DecompressFile(u"\\stream", u"\\raw", &outcome);

    const HANDLE file = CreateFileW(u"\\stream", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    std::uint64_t sum = 0;
    const StreamFault fault = DecodeStream(file, 0, static_cast<DWORD>(size), addUp, &sum);
    CloseHandle(file);
    require((fault == StreamFault::None) == (outcome.whole != 0));
    require(unpacked || !outcome.whole);

    // The unpacked bytes can be packed again.
    PackedStream packed;
    if (unpacked)
        require(CompressFile(u"\\raw", u"\\stream", &packed) && packed.whole);
    return 0;
}
