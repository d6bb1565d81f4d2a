#include "set/compressed_stream.h"

#include "set/block_pipeline.h"
#include "set/stream_decoding.h"
#include "set_fixture.h"

#include <cerrno>
#include <deque>
#include <numeric>

namespace {

// Reads with results that only other devices give: fewer bytes than the file has, or an error together with bytes.
struct ScriptedReads {
    std::deque<DWORD> bytes;  // number of bytes for each read. Later reads return all that they ask for.
    DWORD errorOfLast;
    std::vector<DWORD> asked;
};
ScriptedReads* gScriptedReads;  // null if reads aren't scripted

}  // namespace

BOOL platformRead(HANDLE file, void* buffer, DWORD bytes, DWORD* bytesRead, void*) asm("__real__Z8ReadFilePvS_jPjS_");
BOOL scriptedRead(HANDLE file, void* buffer, DWORD bytes, DWORD* bytesRead, void*) asm("__wrap__Z8ReadFilePvS_jPjS_");

BOOL scriptedRead(HANDLE file, void* buffer, DWORD bytes, DWORD* bytesRead, void* overlapped)
{
    if (!gScriptedReads)
        return platformRead(file, buffer, bytes, bytesRead, overlapped);
    auto& [script, errorOfLast, asked] = *gScriptedReads;
    asked.push_back(bytes);
    const bool last = script.size() == 1;
    if (!script.empty()) {
        bytes = std::min(bytes, script.front());
        script.pop_front();
    }
    const BOOL result = platformRead(file, buffer, bytes, bytesRead, overlapped);
    if (!last || errorOfLast == 0)
        return result;
    SetLastError(errorOfLast);
    return FALSE;
}

namespace {

class CompressedStreamTest : public SetTest {
protected:
    // Runs `round` with the nth host call failing, for each n until the code makes fewer than n calls. Then does the
    // same with the nth call and the next one failing.
    template <class Round>
    static void withEachFailure(const Round& round)
    {
        for (const std::uint64_t calls : {1U, 2U}) {
            bool reached = true;
            for (std::uint64_t nth = 1; reached && !HasFatalFailure(); nth++) {
                SCOPED_TRACE(testing::Message() << calls << " from " << nth);
                round([&](const auto& call) {
                    BOOL result = FALSE;
                    const platform::file::FaultPlan plan = {platform::file::FaultKind::Fail, nth, ENOSPC, calls};
                    reached = hostCallsOf([&] { result = call(); }, plan) >= nth;
                    return result;
                });
            }
        }
    }
};

bool packsWhole(const WCHAR* target)
{
    PackedStream packed;
    return CompressFile(u"\\source", target, &packed) && packed.whole;
}

// Bytes that grow when they are packed. The library packs the block in parts. The bytes consist of runs of 19 new
// bytes, each followed by a copy of 4 bytes from earlier in the same part. A run of 19 new bytes is the shortest whose
// length takes 2 bytes. A copy from more than 2,048 bytes earlier takes 3 bytes. At the start of a part, the copies
// come from a shorter distance. Without these copies, the library would try fewer and fewer positions, and miss later
// copies.
Bytes expandingBytes()
{
    constexpr std::size_t stretch = 19, copied = 4, cycle = stretch + copied, farthest = 95, part = 49152;
    Bytes bytes = patternBytes(RawBlockBytes, 1);
    for (std::size_t at = stretch; at + copied <= bytes.size(); at += cycle) {
        const std::size_t back = std::min(farthest, at % part / cycle) * cycle;
        const std::size_t from = at - stretch + 7 - std::min(back, at - stretch);
        for (std::size_t i = 0; i < copied && back != 0; i++)
            bytes[at + i] = bytes[from + i];
    }
    return bytes;
}

// Returns the packed sizes of a stream's blocks, or nothing if the lengths don't match the size of the stream.
std::vector<DWORD> blockSizes(const Bytes& stream)
{
    std::vector<DWORD> sizes;
    std::size_t at = magic.size();
    while (at + 4 <= stream.size()) {
        DWORD size = 0;
        std::memcpy(&size, stream.data() + at, sizeof size);
        sizes.push_back(size);
        at += 4 + size;
    }
    return at == stream.size() ? sizes : std::vector<DWORD>{};
}

TEST_F(CompressedStreamTest, SourcesOfSizesAroundABlockArePackedInTheFormatAndUnpackedUnchanged)
{
    for (const std::size_t size : {0U, 1U, 4U, 131071U, 131072U, 131073U, 2 * 131072U, 327680U}) {
        SCOPED_TRACE(size);
        const Bytes source = patternBytes(size, static_cast<std::uint32_t>(size));
        make(u"\\source", source);
        ASSERT_TRUE(packsWhole(u"\\stream"));
        const Bytes stream = read(u"\\stream");
        EXPECT_EQ(blockSizes(stream).size(), (size + RawBlockBytes - 1) / RawBlockBytes + 1);
        EXPECT_TRUE(stream.starts_with(magic) && stream.ends_with(closing));
        StreamOutcome unpacked;
        ASSERT_TRUE(DecompressFile(u"\\stream", u"\\back", &unpacked));
        EXPECT_TRUE(unpacked.whole);
        EXPECT_EQ(read(u"\\back"), source);
    }
}

// The bound that the library documented earlier, 133,139 bytes for a full block, is too small for this block.
TEST_F(CompressedStreamTest, BlockThatGrowsWhenPackedFitsItsBuffer)
{
    const Bytes source = expandingBytes();
    make(u"\\source", source);
    ASSERT_TRUE(CompressFile(u"\\source", u"\\stream"));
    const DWORD packed = blockSizes(read(u"\\stream")).front();
    EXPECT_GT(packed, 133139U);
    EXPECT_LE(packed, PackedBlockBytes);
    ASSERT_TRUE(DecompressFile(u"\\stream", u"\\back"));
    EXPECT_EQ(read(u"\\back"), source);
}

// Returns blocks whose packing takes very different times, so that two threads finish them out of order.
Bytes mixedBlocks(unsigned count)
{
    Bytes bytes;
    for (unsigned block = 0; block < count; block++)
        bytes = bytes + (block % 3 == 0   ? Bytes(RawBlockBytes, static_cast<char>(block))
                         : block % 3 == 1 ? patternBytes(RawBlockBytes, block)
                                          : expandingBytes());
    return bytes + patternBytes(4711, count);
}

TEST_F(CompressedStreamTest, LongestLiteralRunIsFoundInEachKindOfInstruction)
{
    const Bytes end = hex("11 00 00");
    const Bytes four = hex("15 61 62 63 64");
    const std::tuple<Bytes, DWORD, DWORD> cases[] = {
        {end, 0, 0},
        {four + end, 4, 4},
        {hex("00 00 01") + Bytes(274, 'a') + end, 274, 274},
        {four + hex("4C 00  02 65 66 67 68 69") + end, 12, 5},               // short match, run of 5
        {four + hex("2F 0F 00 65 66 67  40 00") + end, 27, 4},               // 3 literals after a match
        {four + hex("20 00 01 0C 00  0D") + Bytes(16, 'b') + end, 309, 16},  // long match
        {four + hex("4D 00 65  04 00") + end, 10, 4},
    };
    for (const auto& [packed, rawBytes, longest] : cases) {
        DWORD bytes = 0;
        const auto* block = reinterpret_cast<const BYTE*>(packed.data());
        ASSERT_TRUE(UnpackBlock(block, static_cast<DWORD>(packed.size()), gRawBuffer, bytes));
        EXPECT_EQ(bytes, rawBytes);
        EXPECT_EQ(LongestLiteralRun(block, static_cast<DWORD>(packed.size())), longest);
    }
}

TEST_F(CompressedStreamTest, SecondThreadKeepsAllBlocksInTheirOrder)
{
    const Bytes raw = mixedBlocks(24);
    make(u"\\raw", raw);
    ASSERT_TRUE(CompressFile(u"\\raw", u"\\alone"));
    const Bytes stream = read(u"\\alone");
    Bytes damaged = stream;
    const std::vector<DWORD> sizes = blockSizes(stream);
    std::size_t end = magic.size();
    for (std::size_t block = 0; block <= 10; block++)
        end += 4 + sizes[block];
    damaged[end - 1] = 1;  // a byte of the mark that ends the eleventh block
    make(u"\\damaged", damaged);

    for (int run = 0; run < 5; run++) {
        StartPipelineThread();
        EXPECT_TRUE(CompressFile(u"\\raw", u"\\stream"));
        EXPECT_FALSE(DecompressFile(u"\\damaged", u"\\part"));
        EXPECT_TRUE(DecompressFile(u"\\stream", u"\\back"));
        StopPipelineThread();
        EXPECT_TRUE(read(u"\\stream") == stream);
        EXPECT_TRUE(read(u"\\back") == raw);
        EXPECT_TRUE(read(u"\\part") == raw.substr(0, 10 * RawBlockBytes));
    }
}

TEST_F(CompressedStreamTest, ReadsAfterAShortOneAskForNoMoreBytesAndAnyErrorExceptEndOfFileIsAFailure)
{
    struct Case {
        std::deque<DWORD> delivered;
        DWORD errorOfLast;
        std::vector<DWORD> asked;
        std::vector<DWORD> blocks;  // raw bytes
        BOOL result;
    };
    const DWORD full = RawBlockBytes;
    for (const Case& c :
         {Case{{10, 10, 4, 0}, 0, {full, 10, 10, 4}, {10, 10, 4, 0}, TRUE},
          Case{{10, 7}, 0, {full, 10, 7, 7}, {10, 7, 7, 0}, TRUE},
          Case{{full, 5}, ERROR_HANDLE_EOF, {full, full}, {full, 5}, TRUE},
          Case{{10, 0}, ERROR_HANDLE_EOF, {full, 10}, {10, 0}, TRUE}, Case{{0}, ERROR_GEN_FAILURE, {full}, {}, FALSE},
          Case{{full, 0}, ERROR_GEN_FAILURE, {full, full}, {full}, FALSE},
          Case{{10, 10, 4}, ERROR_GEN_FAILURE, {full, 10, 10}, {10, 10}, FALSE}}) {
        const Bytes source = patternBytes(std::accumulate(c.blocks.begin(), c.blocks.end(), std::size_t{0}), 7);
        make(u"\\source", source);
        ScriptedReads reads = {c.delivered, c.errorOfLast, {}};
        gScriptedReads = &reads;
        EXPECT_EQ(CompressFile(u"\\source", u"\\stream"), c.result);
        gScriptedReads = nullptr;
        EXPECT_EQ(reads.asked, c.asked);
        std::vector<DWORD> blocks;
        const Bytes stream = read(u"\\stream");
        std::size_t at = magic.size();
        for (const DWORD packed : blockSizes(stream)) {
            blocks.push_back(0);
            ASSERT_TRUE(
                UnpackBlock(reinterpret_cast<const BYTE*>(stream.data()) + at + 4, packed, gRawBuffer, blocks.back()));
            at += 4 + packed;
        }
        EXPECT_EQ(blocks, c.blocks);
    }
}

TEST_F(CompressedStreamTest, SourceThatIsMissingInUseOrNoStreamLeavesTheTargetUnchanged)
{
    make(u"\\target", hex("AA"));
    make(u"\\used", hex("BB"));
    const HANDLE used = open(u"\\used", GENERIC_READ, OPEN_EXISTING);
    EXPECT_FALSE(CompressFile(u"\\used", u"\\target"));
    CloseHandle(used);
    EXPECT_FALSE(CompressFile(u"\\none", u"\\target"));
    EXPECT_FALSE(DecompressFile(u"\\none", u"\\target"));
    for (const Bytes& stream : {Bytes{}, hex("51 42 58 50"), hex("51 42 58 50 4C") + closing}) {
        make(u"\\stream", stream);
        EXPECT_FALSE(DecompressFile(u"\\stream", u"\\target"));
        EXPECT_FALSE(DecompressFile(u"\\stream", u"\\new"));
    }
    EXPECT_EQ(read(u"\\target"), hex("AA"));
    EXPECT_FALSE(exists(u"\\new"));
}

TEST_F(CompressedStreamTest, StreamOrTargetWithAGapIsNeverReportedAsWholeWhicheverHostCallFails)
{
    // All blocks of a source have the same packed size, except a shorter last block. So a stream in which some of these
    // blocks are missing could still be readable. Therefore the test compares the contents.
    for (const Bytes& source : {patternBytes(RawBlockBytes * 4 + 5, 4), Bytes(RawBlockBytes * 61, '\0')}) {
        make(u"\\source", source);
        withEachFailure([&](const auto& faulted) {
            DeleteFileW(u"\\stream");
            if (faulted([] { return BOOL{packsWhole(u"\\stream")}; })) {
                ASSERT_TRUE(DecompressFile(u"\\stream", u"\\back"));
                ASSERT_TRUE(read(u"\\back") == source);
            }
        });
        withEachFailure([&](const auto& faulted) {
            DeleteFileW(u"\\back");
            StreamOutcome unpacked;
            (void)faulted([&] { return DecompressFile(u"\\stream", u"\\back", &unpacked); });
            const Bytes back = exists(u"\\back") ? read(u"\\back") : Bytes();
            ASSERT_TRUE(source.starts_with(back));
            ASSERT_TRUE(!unpacked.whole || back.size() == source.size());
        });
    }
}

}  // namespace
