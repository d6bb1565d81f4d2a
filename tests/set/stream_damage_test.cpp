#include "set/compressed_stream.h"

#include "set/stream_decoding.h"
#include "set_fixture.h"

namespace {

const Bytes magic = hex("51 42 58 50 4B");
const Bytes hiBlock = hex("06 00 00 00  13 48 69 11 00 00");
const Bytes closing = hex("03 00 00 00  11 00 00");
const Bytes hi = hex("48 69");

// 131,073 bytes 0x41: a literal run of 4, then a match of distance 1.
Bytes blockOfOneByteTooMany()
{
    Bytes packed = hex("15 41 41 41 41  20");
    const std::size_t length = RawBlockBytes + 1 - 4 - 33;
    packed = packed + Bytes((length - 1) / 255);
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
    Bytes afterFirstBlock;
    BOOL unpacks;  // a stream file can end without a closing block
    StreamFault fault;
    Bytes raw = hi;
};

void PrintTo(const Damage& damage, std::ostream* out)
{
    *out << damage.name;
}

class StreamDamageTest : public SetTest, public testing::WithParamInterface<Damage> {};

TEST_P(StreamDamageTest, IsFoundAndTheBlocksBeforeItAreKept)
{
    const auto& [name, afterFirstBlock, unpacks, fault, raw] = GetParam();
    const Bytes stream = magic + hiBlock + afterFirstBlock;
    write(u"\\stream", stream);
    StreamOutcome unpacked;
    EXPECT_EQ(DecompressFile(u"\\stream", u"\\back", &unpacked), unpacks);
    EXPECT_EQ(read(u"\\back"), raw);
    EXPECT_EQ(unpacked.whole != 0, fault == StreamFault::None);
    EXPECT_EQ(unpacked.error, unpacked.whole ? ERROR_SUCCESS : ERROR_FILE_CORRUPT);

    // In a data file the bytes of other streams surround it.
    write(u"\\data", magic + stream + magic);
    const HANDLE data = open(u"\\data", GENERIC_READ, OPEN_EXISTING);
    Bytes collected;
    const auto end = static_cast<DWORD>(magic.size() + stream.size());
    EXPECT_EQ(DecodeStream(data, 5, end, collect, &collected), fault);
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
        Damage{"LengthAboveTheBuffer", hex("44 20 02 00") + Bytes(139332), FALSE, StreamFault::BlockTooLong},
        Damage{"LengthOf4GiB", hex("FF FF FF FF  11 00 00"), FALSE, StreamFault::BlockTooLong},
        Damage{"LengthBeyondTheStream", hex("64 00 00 00  11 00 00"), TRUE, StreamFault::BlockCut},
        Damage{"NothingAfterLength", hex("03 00 00 00"), FALSE, StreamFault::BlockCut},
        Damage{"OneByteTooMany", blockOfOneByteTooMany() + closing, FALSE, StreamFault::BlockDamaged},
        Damage{"MatchBeforeTheStart", hex("06 00 00 00  12 48 40 FF 11 00") + closing, FALSE,
               StreamFault::BlockDamaged},
        Damage{"LiteralsAfterTheInput", hex("03 00 00 00  FF 48 69") + closing, FALSE, StreamFault::BlockDamaged},
        Damage{"BytesAfterTheEndMark", hex("07 00 00 00  13 48 69 11 00 00 00") + closing, FALSE,
               StreamFault::BlockDamaged},
        Damage{"ClosingBlockDamaged", hex("03 00 00 00  12 00 00"), FALSE, StreamFault::BlockDamaged}),
    [](const auto& damage) { return std::string(damage.param.name); });

class StreamCutTest : public SetTest {};

TEST_F(StreamCutTest, StreamCutAtEveryByteGivesTheWholeBlocksBeforeTheCut)
{
    const Bytes whole = magic + hiBlock + hiBlock + closing;
    for (std::ptrdiff_t cut = 0; cut < std::ssize(whole); cut++) {
        SCOPED_TRACE(cut);
        DeleteFileW(u"\\back");
        write(u"\\stream", Bytes(whole.begin(), whole.begin() + cut));
        StreamOutcome unpacked;
        EXPECT_EQ(DecompressFile(u"\\stream", u"\\back", &unpacked) != 0, cut == 5 || cut == 15 || cut == 25);
        EXPECT_FALSE(unpacked.whole);
        EXPECT_EQ(exists(u"\\back"), cut >= 5);
        if (cut >= 5) {
            EXPECT_EQ(read(u"\\back"), cut >= 25 ? hi + hi : cut >= 15 ? hi : Bytes{});
        }
    }
}

TEST_F(StreamCutTest, StreamAbove2GiBIsFoundAndOffsetsThatMakeNoSenseGiveNone)
{
    const HANDLE data = open(u"\\data", GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS);
    const DWORD start = 0x90000000;
    SetFilePointer(data, static_cast<LONG>(start), nullptr, FILE_BEGIN);
    const Bytes stream = magic + hiBlock + closing;
    const DWORD bytes = FileTest::write(data, std::string(stream.begin(), stream.end()));
    Bytes collected;
    EXPECT_EQ(DecodeStream(data, start, start + bytes, collect, &collected), StreamFault::None);
    EXPECT_EQ(collected, hi);
    for (const auto& [from, to] : {std::pair(start, start), {start, start - 1}, {0xFFFFFFFE, 0xFFFFFFFF}})
        EXPECT_EQ(DecodeStream(data, from, to, nullptr, nullptr), StreamFault::NoMagic);
    CloseHandle(data);
}

}  // namespace
