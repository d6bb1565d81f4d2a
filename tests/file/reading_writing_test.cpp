// reading_writing_test.cpp - reads and writes of all sizes, at all offsets, and with several handles on one file.
#include "file_fixture.h"

#include <sys/stat.h>

#include <limits>
#include <random>

namespace {

TEST_F(FileTest, BytesComeBackWhateverTheSizeOfTheCalls)
{
    const std::string bytes = patternBytes(300'001);
    for (const std::size_t piece : {7U, 260U, 4096U, 8193U, 70'000U, 400'000U}) {
        SCOPED_TRACE(piece);
        const HANDLE file = open(u"\\f", GENERIC_WRITE, CREATE_ALWAYS);
        for (std::size_t offset = 0; offset < bytes.size(); offset += piece)
            ASSERT_EQ(write(file, bytes.substr(offset, piece)), std::min(piece, bytes.size() - offset));
        EXPECT_TRUE(CloseHandle(file));
        EXPECT_EQ(hostRead(root() / "f"), bytes);
        EXPECT_EQ(readAll(u"\\f", static_cast<DWORD>(piece)), bytes);
    }
}

// Compares with a string, which has no buffers.
TEST_F(FileTest, MixedReadsWritesAndSeeksAgreeWithAPlainString)
{
    std::mt19937 random(4711);
    std::string model;
    std::size_t offset = 0;
    const HANDLE file = open(u"\\f", GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
    const std::string source = patternBytes(200'000);
    for (int step = 0; step < 4000; ++step) {
        const std::size_t size = random() % 20 == 0 ? random() % 90'000 : random() % 600;
        switch (random() % 8) {
        case 0:
            offset = random() % (model.size() + 100);
            ASSERT_EQ(SetFilePointer(file, static_cast<LONG>(offset), nullptr, FILE_BEGIN), offset);
            break;
        case 1:
            offset = model.size();
            ASSERT_EQ(SetFilePointer(file, 0, nullptr, FILE_END), offset);
            break;
        case 2:
        case 3: {
            const std::string expected = offset < model.size() ? model.substr(offset, size) : "";
            ASSERT_EQ(read(file, static_cast<DWORD>(size)), expected) << step;
            offset += expected.size();
            break;
        }
        default: {
            const std::string piece = source.substr(random() % 1000, size);
            ASSERT_EQ(write(file, piece), piece.size());
            if (!piece.empty() && model.size() < offset + piece.size())
                model.resize(offset + piece.size());
            model.replace(offset, piece.size(), piece);
            offset += piece.size();
        }
        }
    }
    CloseHandle(file);
    EXPECT_EQ(hostRead(root() / "f"), model);
}

TEST_F(FileTest, GatheredBytesAreVisibleToEveryOtherCall)
{
    for (const std::size_t size : {6'000U, 100'000U}) {
        SCOPED_TRACE(size);
        const std::string bytes = patternBytes(size);
        const HANDLE writer = open(u"\\f", GENERIC_WRITE, CREATE_ALWAYS, FILE_SHARE_READ);
        const HANDLE reader = open(u"\\f", GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ | FILE_SHARE_WRITE);
        ASSERT_NE(reader, INVALID_HANDLE_VALUE);
        for (std::size_t offset = 0; offset < size; offset += 100)
            ASSERT_EQ(write(writer, bytes.substr(offset, 100)), 100U);
        WIN32_FIND_DATAW found = {};
        EXPECT_TRUE(FindClose(FindFirstFileW(u"\\f", &found)));
        EXPECT_EQ(found.nFileSizeLow, size);
        EXPECT_EQ(read(reader, 200'000), bytes);
        BY_HANDLE_FILE_INFORMATION information = {};
        ASSERT_EQ(write(writer, "tail"), 4U);
        ASSERT_TRUE(GetFileInformationByHandle(writer, &information));
        EXPECT_EQ(information.nFileSizeLow, size + 4);
        ASSERT_EQ(write(writer, "more"), 4U);
        EXPECT_EQ(SetFilePointer(reader, 0, nullptr, FILE_END), size + 8);
        CloseHandle(reader);

        SetFilePointer(writer, 1000, nullptr, FILE_CURRENT);
        EXPECT_TRUE(SetEndOfFile(writer));
        EXPECT_EQ(write(writer, "end"), 3U);
        const std::string all = bytes + "tailmore" + std::string(1000, '\0') + "end";
        // Small files are gathered only in the rest of a block, and a hole has no block.
        EXPECT_TRUE(hostRead(root() / "f") == all || size == 100'000);
        CloseHandle(writer);
        EXPECT_TRUE(hostRead(root() / "f") == all);
    }
}

TEST_F(FileTest, BytesReadAheadAreNotServedAfterAWrite)
{
    hostWrite(root() / "f", std::string(3000, 'o'));
    const HANDLE reader = open(u"\\f", GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ | FILE_SHARE_WRITE);
    const HANDLE writer = open(u"\\f", GENERIC_WRITE, OPEN_EXISTING, FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_EQ(read(reader, 10), std::string(10, 'o'));
    SetFilePointer(writer, 12, nullptr, FILE_BEGIN);
    EXPECT_EQ(write(writer, "new"), 3U);
    EXPECT_EQ(read(reader, 6), "oonewo");
    SetFilePointer(writer, 0, nullptr, FILE_END);
    EXPECT_EQ(read(reader, 5000).size(), 3000U - 16);
    EXPECT_EQ(read(reader, 10), "");
    EXPECT_EQ(write(writer, "longer"), 6U);
    EXPECT_EQ(read(reader, 10), "longer");
    CloseHandle(reader);
    CloseHandle(writer);
}

TEST_F(FileTest, RoomReservedForGatheringIsReleased)
{
    const HANDLE file = open(u"\\f", GENERIC_WRITE, CREATE_NEW);
    const std::string piece(260, 'x');
    for (int i = 0; i < 3000; ++i)
        ASSERT_EQ(write(file, piece), piece.size());
    EXPECT_TRUE(CloseHandle(file));
    struct stat status = {};
    ASSERT_EQ(::stat((root() / "f").c_str(), &status), 0);
    EXPECT_EQ(status.st_size, 780'000);
    EXPECT_LE(status.st_blocks * 512, 780'000 + 65'536);
}

TEST_F(FileTest, OffsetsAboveTwoAndFourGigabytesAreReached)
{
    const HANDLE file = open(u"\\f", GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
    // Only with FILE_BEGIN the offset is unsigned.
    const auto threeGigabytes = static_cast<LONG>(3'000'000'000U);
    EXPECT_EQ(SetFilePointer(file, threeGigabytes, nullptr, FILE_BEGIN), 3'000'000'000U);
    EXPECT_EQ(write(file, "three"), 5U);
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(file, 16, &high, FILE_BEGIN), 16U);
    EXPECT_EQ(high, 1);
    EXPECT_EQ(write(file, "five"), 4U);
    BY_HANDLE_FILE_INFORMATION information = {};
    ASSERT_TRUE(GetFileInformationByHandle(file, &information));
    EXPECT_EQ(information.nFileSizeHigh, 1U);
    EXPECT_EQ(information.nFileSizeLow, 20U);
    WIN32_FIND_DATAW found = {};
    EXPECT_TRUE(FindClose(FindFirstFileW(u"\\f", &found)));
    EXPECT_EQ(found.nFileSizeHigh, 1U);
    EXPECT_EQ(found.nFileSizeLow, 20U);
    EXPECT_EQ(SetFilePointer(file, threeGigabytes, nullptr, FILE_BEGIN), 3'000'000'000U);
    EXPECT_EQ(read(file, 5), "three");
    CloseHandle(file);
}

TEST_F(FileTest, SeekOutOfRangeKeepsTheOffset)
{
    hostWrite(root() / "f", "0123456789");
    const HANDLE file = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    const auto fails = [&](LONG distance, LONG* high, DWORD method, DWORD error) {
        SetLastError(0);
        return SetFilePointer(file, distance, high, method) == INVALID_SET_FILE_POINTER && GetLastError() == error;
    };
    SetFilePointer(file, 4, nullptr, FILE_BEGIN);
    EXPECT_TRUE(fails(-5, nullptr, FILE_CURRENT, ERROR_NEGATIVE_SEEK));
    EXPECT_TRUE(fails(-11, nullptr, FILE_END, ERROR_NEGATIVE_SEEK));
    EXPECT_TRUE(fails(0, nullptr, 3, ERROR_INVALID_PARAMETER));
    LONG high = std::numeric_limits<LONG>::max();
    EXPECT_TRUE(fails(-1, &high, FILE_CURRENT, ERROR_INVALID_PARAMETER));
    high = std::numeric_limits<LONG>::min();
    EXPECT_TRUE(fails(0, &high, FILE_CURRENT, ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_CURRENT), 3U);
    EXPECT_EQ(read(file, 2), "34");
    EXPECT_EQ(SetFilePointer(file, 100, nullptr, FILE_CURRENT), 105U);
    EXPECT_EQ(read(file, 2), "");
    // This offset has the value that reports a failure.
    SetLastError(77);
    EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    CloseHandle(file);
}

TEST_F(FileTest, FileThatIsOpenWhenItsMountEndsKeepsItsBytes)
{
    const HANDLE file = open(u"\\f", GENERIC_WRITE, CREATE_NEW);
    const std::string bytes = patternBytes(50'000);
    for (std::size_t offset = 0; offset < bytes.size(); offset += 100)
        (void)write(file, bytes.substr(offset, 100));
    remount();
    EXPECT_EQ(hostRead(root() / "f"), bytes);
    EXPECT_EQ(write(file, "late"), 0U);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

}  // namespace
