#include "set/compressed_stream.h"

#include "set/stream_decoding.h"
#include "set_fixture.h"

namespace {

const Bytes hiBlock = hex("06 00 00 00  13 48 69 11 00 00");
const Bytes hi = hex("48 69");

// 131,073 bytes 0x41: a literal run of 4, then a match of distance 1.
Bytes blockOfOneByteTooMany()
{
    Bytes packed = hex("15 41 41 41 41  20");
    const std::size_t length = RawBlockBytes + 1 - 4 - 33;
    packed += Bytes((length - 1) / 255, '\0') + static_cast<char>((length - 1) % 255 + 1) + hex("00 00  11 00 00");
    return numberBytes(static_cast<DWORD>(packed.size())) + packed;
}

BOOL collect(const BYTE* raw, DWORD bytes, void* context)
{
    static_cast<Bytes*>(context)->append(reinterpret_cast<const char*>(raw), bytes);
    return TRUE;
}

struct Damage {
    const char* name;
    Bytes afterFirstBlock;
    BOOL unpacks;  // a stream file can end without a closing block
    StreamFault fault;
    Bytes raw = hi;
};

class StreamDamageTest : public SetTest {};

TEST_F(StreamDamageTest, DamageIsFoundAndTheBlocksBeforeItAreKept)
{
    const Damage damages[] = {
        {"None", closing, TRUE, StreamFault::None},
        {"Closing block missing", {}, TRUE, StreamFault::NotClosed},
        {"Closing block in the middle", closing + hiBlock + closing, TRUE, StreamFault::BytesAfterEnd, hi + hi},
        {"Length cut", hex("03 00 00"), FALSE, StreamFault::LengthCut},
        {"Length of nothing", hex("00 00 00 00"), FALSE, StreamFault::EmptyBlock},
        {"Length above the buffer", hex("44 20 02 00") + Bytes(139332, '\0'), FALSE, StreamFault::BlockTooLong},
        {"Length of 4 GiB", hex("FF FF FF FF  11 00 00"), FALSE, StreamFault::BlockTooLong},
        {"Length beyond the stream", hex("64 00 00 00  11 00 00"), TRUE, StreamFault::BlockCut},
        {"Nothing after length", hex("03 00 00 00"), FALSE, StreamFault::BlockCut},
        {"One byte too many", blockOfOneByteTooMany() + closing, FALSE, StreamFault::BlockDamaged},
        {"Match before the start", hex("06 00 00 00  12 48 40 FF 11 00") + closing, FALSE, StreamFault::BlockDamaged},
        {"Literals after the input", hex("03 00 00 00  FF 48 69") + closing, FALSE, StreamFault::BlockDamaged},
        {"Bytes after the end mark", hex("07 00 00 00  13 48 69 11 00 00 00") + closing, FALSE,
         StreamFault::BlockDamaged},
        {"Closing block damaged", hex("03 00 00 00  12 00 00"), FALSE, StreamFault::BlockDamaged},
    };
    for (const auto& [name, afterFirstBlock, unpacks, fault, raw] : damages) {
        SCOPED_TRACE(name);
        const Bytes stream = magic + hiBlock + afterFirstBlock;
        make(u"\\stream", stream);
        StreamOutcome unpacked;
        EXPECT_EQ(DecompressFile(u"\\stream", u"\\back", &unpacked), unpacks);
        EXPECT_EQ(read(u"\\back"), raw);
        EXPECT_EQ(unpacked.whole != 0, fault == StreamFault::None);
        EXPECT_EQ(unpacked.error, unpacked.whole ? ERROR_SUCCESS : ERROR_FILE_CORRUPT);

        // In a data file, bytes of other streams are before and after the stream.
        make(u"\\data", magic + stream + magic);
        const HANDLE data = open(u"\\data", GENERIC_READ, OPEN_EXISTING);
        Bytes collected;
        const auto end = static_cast<DWORD>(magic.size() + stream.size());
        EXPECT_EQ(DecodeStream(data, 5, end, collect, &collected), fault);
        CloseHandle(data);
        EXPECT_EQ(collected, hi);
    }
}

TEST_F(StreamDamageTest, StreamCutAtEveryByteGivesTheWholeBlocksBeforeTheCut)
{
    const Bytes whole = magic + hiBlock + hiBlock + closing;
    for (std::size_t cut = 0; cut < whole.size(); cut++) {
        SCOPED_TRACE(cut);
        DeleteFileW(u"\\back");
        make(u"\\stream", whole.substr(0, cut));
        StreamOutcome unpacked;
        EXPECT_EQ(DecompressFile(u"\\stream", u"\\back", &unpacked) != 0, cut == 5 || cut == 15 || cut == 25);
        EXPECT_FALSE(unpacked.whole);
        EXPECT_EQ(exists(u"\\back"), cut >= 5);
        if (cut >= 5) {
            EXPECT_EQ(read(u"\\back"), cut >= 25 ? hi + hi : cut >= 15 ? hi : Bytes{});
        }
    }
}

TEST_F(StreamDamageTest, StreamThatStartsAbove2GiBIsDecodedAndImpossibleOffsetsGiveNoStream)
{
    const HANDLE data = open(u"\\data", GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS);
    const DWORD start = 0x90000000;
    SetFilePointer(data, static_cast<LONG>(start), nullptr, FILE_BEGIN);
    const Bytes stream = magic + hiBlock + closing;
    const DWORD bytes = write(data, stream);
    Bytes collected;
    EXPECT_EQ(DecodeStream(data, start, start + bytes, collect, &collected), StreamFault::None);
    EXPECT_EQ(collected, hi);
    for (const auto& [from, to] : {std::pair(start, start), {start, start - 1}, {0xFFFFFFFE, 0xFFFFFFFF}})
        EXPECT_EQ(DecodeStream(data, from, to, nullptr, nullptr), StreamFault::NoMagic);
    CloseHandle(data);
}

}  // namespace
