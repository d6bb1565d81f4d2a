#include "set/compressed_stream.h"

#include "set/stream_decoding.h"
#include "set_fixture.h"

namespace {

const Bytes magic = hex("51 42 58 50 4B");
const Bytes hiBlock = hex("06 00 00 00  13 48 69 11 00 00");
const Bytes closing = hex("03 00 00 00  11 00 00");
const Bytes hi = hex("48 69");

// 131,073 bytes of 0x41: one literal run of 4, then a match of distance 1.
Bytes blockOfOneByteTooMany()
{
    Bytes packed = hex("15 41 41 41 41  20");
    const std::size_t length = RawBlockBytes + 1 - 4 - 33;
    packed = packed + repeated((length - 1) / 255, 0);
    packed.push_back(static_cast<BYTE>((length - 1) % 255 + 1));
    packed = packed + hex("00 00  11 00 00");
    const auto size = static_cast<DWORD>(packed.size());
    Bytes block(sizeof size);
    std::memcpy(block.data(), &size, sizeof size);
    return block + packed;
}

BOOL collect(const BYTE* raw, DWORD bytes, void* context)
{
    auto& collected = *static_cast<Bytes*>(context);
    collected.insert(collected.end(), raw, raw + bytes);
    return TRUE;
}

struct Damage {
    const char* name;
    Bytes behindFirstBlock;
    BOOL unpacks;  // to the reader the stream ends where the file ends
    StreamFault fault;
    Bytes raw = hi;
};

void PrintTo(const Damage& damage, std::ostream* out)
{
    *out << damage.name;
}

class StreamDamageTest : public SetTest, public testing::WithParamInterface<Damage> {};

TEST_P(StreamDamageTest, IsRefusedAndLeavesTheBlocksBeforeIt)
{
    const Bytes stream = magic + hiBlock + GetParam().behindFirstBlock;
    write(u"\\stream", stream);
    StreamOutcome unpacked;
    EXPECT_EQ(DecompressFile(u"\\stream", u"\\back", &unpacked), GetParam().unpacks);
    EXPECT_EQ(read(u"\\back"), GetParam().raw);
    EXPECT_EQ(unpacked.whole != 0, GetParam().fault == StreamFault::None);
    EXPECT_EQ(unpacked.error, unpacked.whole ? ERROR_SUCCESS : ERROR_FILE_CORRUPT);

    // The same between other streams' bytes: nothing behind its end may be taken for a part of it.
    write(u"\\data", magic + stream + magic);
    const HANDLE data = CreateFileW(u"\\data", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    Bytes collected;
    const auto end = static_cast<DWORD>(magic.size() + stream.size());
    EXPECT_EQ(DecodeStream(data, 5, end, collect, &collected), GetParam().fault);
    CloseHandle(data);
    EXPECT_EQ(collected, hi);
}

INSTANTIATE_TEST_SUITE_P(
    Single, StreamDamageTest,
    testing::Values(
        Damage{"None", closing, TRUE, StreamFault::None},
        Damage{"ClosingBlockMissing", {}, TRUE, StreamFault::NotClosed},
        Damage{"ClosingBlockInTheMiddle", closing + hiBlock + closing, TRUE, StreamFault::BytesBehindEnd, hi + hi},
        Damage{"LengthCut", hex("03 00 00"), FALSE, StreamFault::LengthCut},
        Damage{"LengthOfNothing", hex("00 00 00 00"), FALSE, StreamFault::EmptyBlock},
        Damage{"LengthAboveTheBuffer", hex("44 20 02 00") + repeated(139332, 0), FALSE, StreamFault::BlockTooLong},
        Damage{"LengthOf4GiB", hex("FF FF FF FF  11 00 00"), FALSE, StreamFault::BlockTooLong},
        Damage{"LengthBehindTheStream", hex("64 00 00 00  11 00 00"), TRUE, StreamFault::BlockCut},
        Damage{"NothingBehindLength", hex("03 00 00 00"), FALSE, StreamFault::BlockCut},
        Damage{"OneByteTooMany", blockOfOneByteTooMany() + closing, FALSE, StreamFault::BlockDamaged},
        Damage{"MatchBeforeTheStart", hex("06 00 00 00  12 48 40 FF 11 00") + closing, FALSE,
               StreamFault::BlockDamaged},
        Damage{"LiteralsBehindTheInput", hex("03 00 00 00  FF 48 69") + closing, FALSE, StreamFault::BlockDamaged},
        Damage{"BytesBehindTheEndMark", hex("07 00 00 00  13 48 69 11 00 00 00") + closing, FALSE,
               StreamFault::BlockDamaged},
        Damage{"ClosingBlockDamaged", hex("03 00 00 00  12 00 00"), FALSE, StreamFault::BlockDamaged}),
    [](const auto& damage) { return std::string(damage.param.name); });

class StreamCutTest : public SetTest {};

TEST_F(StreamCutTest, StreamCutAtEveryByteGivesTheWholeBlocksBeforeTheCut)
{
    const Bytes whole = magic + hiBlock + hiBlock + closing;
    const std::size_t ends[] = {5, 15, 25};
    for (std::size_t cut = 0; cut < whole.size(); cut++) {
        SCOPED_TRACE(cut);
        DeleteFileW(u"\\back");
        write(u"\\stream", Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut)));
        const bool atABlocksEnd = std::find(std::begin(ends), std::end(ends), cut) != std::end(ends);
        StreamOutcome unpacked;
        EXPECT_EQ(DecompressFile(u"\\stream", u"\\back", &unpacked) != 0, atABlocksEnd);
        EXPECT_FALSE(unpacked.whole);
        EXPECT_EQ(exists(u"\\back"), cut >= magic.size());
        if (cut >= magic.size()) {
            EXPECT_EQ(read(u"\\back"), cut >= 25 ? hi + hi : cut >= 15 ? hi : Bytes{});
        }
    }
}

TEST_F(StreamCutTest, StreamBehind2GiBIsFoundAndOffsetsThatMakeNoSenseGiveNone)
{
    const HANDLE data = CreateFileW(u"\\data", GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    const DWORD start = 0x90000000;
    SetFilePointer(data, static_cast<LONG>(start), nullptr, FILE_BEGIN);
    const Bytes stream = magic + hiBlock + closing;
    const auto bytes = static_cast<DWORD>(stream.size());
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(data, stream.data(), bytes, &written, nullptr));
    Bytes collected;
    EXPECT_EQ(DecodeStream(data, start, start + bytes, collect, &collected), StreamFault::None);
    EXPECT_EQ(collected, hi);
    EXPECT_EQ(DecodeStream(data, start, start, nullptr, nullptr), StreamFault::NoMagic);
    EXPECT_EQ(DecodeStream(data, start, start - 1, nullptr, nullptr), StreamFault::NoMagic);
    EXPECT_EQ(DecodeStream(data, 0xFFFFFFFE, 0xFFFFFFFF, nullptr, nullptr), StreamFault::NoMagic);
    CloseHandle(data);
}

}  // namespace
