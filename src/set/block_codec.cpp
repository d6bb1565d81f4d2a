#include "set/block_codec.h"

#include <algorithm>
#include <functional>
#include <lzo/lzo1x.h>
#include <string_view>

static_assert(sizeof(PackingMemory) == LZO1X_1_MEM_COMPRESS);

namespace {

// A position in the instructions of a packed block (docs/format.md, "LZO1X"). The functions below only count the
// literals, which are the raw bytes that the block contains unchanged.
struct Instructions {
    const BYTE* next;
    const BYTE* end;
    DWORD state;  // number of literals after the previous instruction; 4 means 4 or more
};

// If the first byte of a block is above this value, the block begins with literals. Their number is the byte minus this
// value.
constexpr DWORD FirstRunBase = 17;
constexpr DWORD ManyLiterals = 4;

DWORD Take(Instructions& block)
{
    return block.next < block.end ? *block.next++ : 0;
}

DWORD TakeLongLength(Instructions& block, DWORD base)
{
    constexpr DWORD EachZero = 255;
    for (; block.next < block.end && *block.next == 0; block.next++)
        base += EachZero;
    return base + Take(block);
}

// Takes two bytes as a little-endian number. Its two low bits are the number of literals after the instruction.
DWORD TakeWord(Instructions& block)
{
    const DWORD low = Take(block);
    return low | Take(block) << 8;
}

// Takes the bytes of an instruction, but not the literals after them. Returns the number of these literals.
DWORD TakeInstruction(Instructions& block)
{
    const DWORD code = Take(block);
    if (code < 16 && block.state == 0)
        return code == 0 ? TakeLongLength(block, 18) : code + 3;
    if (code < 16 || code >= 64) {
        (void)Take(block);
        return code & 3;
    }
    const DWORD lengthBits = code < 32 ? 7 : 31;
    if ((code & lengthBits) == 0)
        (void)TakeLongLength(block, 0);
    return TakeWord(block) & 3;
}

// Skips a literal run (block_codec.h). Returns false if the block ends with this run.
bool SkipRun(Instructions& block, DWORD literals)
{
    block.state = std::min(literals, ManyLiterals);
    block.next += std::min<std::ptrdiff_t>(literals, block.end - block.next);
    return block.next < block.end;
}

}  // namespace

bool CodecWorks()
{
    static const bool works = lzo_init() == LZO_E_OK;
    return works;
}

// This function doesn't use the LZO library's CRC-32, because computing that CRC takes longer than packing the block.
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
    // A set can come from anywhere, so a block can be malformed. This decoder checks all lengths.
    const bool good = lzo1x_decompress_safe(packed, packedBytes, raw, &produced, nullptr) == LZO_E_OK;
    rawBytes = static_cast<DWORD>(produced);
    return good;
}

DWORD LongestLiteralRun(const BYTE* packed, DWORD packedBytes)
{
    Instructions block = {packed, packed + packedBytes, 0};
    const bool beginsWithRun = packedBytes != 0 && *packed > FirstRunBase;
    DWORD run = beginsWithRun ? Take(block) - FirstRunBase : 0;
    DWORD longest = run;
    while (SkipRun(block, run)) {
        run = TakeInstruction(block);
        longest = std::max(longest, run);
    }
    return longest;
}
