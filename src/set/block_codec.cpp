#include "set/block_codec.h"

#include <functional>
#include <lzo/lzo1x.h>
#include <string_view>

static_assert(sizeof(PackingMemory) == LZO1X_1_MEM_COMPRESS);

bool CodecWorks()
{
    return lzo_init() == LZO_E_OK;
}

// The CRC-32 of the library takes longer than packing.
std::uint64_t DigestOfBlock(const BYTE* raw, DWORD rawBytes)
{
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(raw), rawBytes});
}

bool PackBlock(const BYTE* raw, DWORD rawBytes, BYTE* packed, DWORD& packedBytes, PackingMemory& memory)
{
    lzo_uint produced = 0;
    if (lzo1x_1_compress(raw, rawBytes, packed, &produced, memory.bytes) != LZO_E_OK)
        return false;
    packedBytes = static_cast<DWORD>(produced);
    return true;
}

bool UnpackBlock(const BYTE* packed, DWORD packedBytes, BYTE* raw, DWORD& rawBytes)
{
    lzo_uint produced = RawBlockBytes;
    // The checking decoder, since a set can come from anywhere.
    if (lzo1x_decompress_safe(packed, packedBytes, raw, &produced, nullptr) != LZO_E_OK)
        return false;
    rawBytes = static_cast<DWORD>(produced);
    return true;
}
