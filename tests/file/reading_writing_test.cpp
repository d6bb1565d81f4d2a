// reading_writing_test.cpp - reads and writes of all sizes, at all offsets, and with several handles on one file.
#include "file_fixture.h"

#include <sys/stat.h>

#include <limits>
#include <random>
#include <vector>

namespace {

// Returns the size of the file by its handle and by its name.
std::vector<std::size_t> sizesOf(HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    EXPECT_TRUE(GetFileInformationByHandle(file, &information));
    WIN32_FIND_DATAW found = {};
    EXPECT_TRUE(FindClose(FindFirstFileW(u"\\f", &found)));
    return {std::size_t{information.nFileSizeHigh} << 32 | information.nFileSizeLow,
            std::size_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow};
}

// Compares the file with a string, which has no buffers. One handle writes and the other only reads. The reader must
// see the bytes that the writer has gathered, even where it has read ahead.
TEST_F(FileTest, TwoHandlesAgreeWithAPlainStringWhateverTheSizeAndOrderOfTheCalls)
{
    std::mt19937 random(4711);
    const std::string source = patternBytes(100'000);
    std::string model;
    const HANDLE writer = open(u"\\f", GENERIC_READ | GENERIC_WRITE, CREATE_NEW, FILE_SHARE_READ);
    const HANDLE reader = open(u"\\f", GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ | FILE_SHARE_WRITE);
    std::pair<HANDLE, std::size_t> handles[] = {{writer, 0}, {reader, 0}};
    auto& [ignored, offset] = handles[0];
    for (int step = 0; step < 8000; ++step) {
        SCOPED_TRACE(step);
        const std::size_t size = random() % 20 == 0 ? random() % 90'000 : random() % 600;
        auto& [file, readOffset] = handles[random() % 2];
        switch (random() % 12) {
        case 0:
            readOffset = random() % (model.size() + 100);
            ASSERT_EQ(SetFilePointer(file, static_cast<LONG>(readOffset), nullptr, FILE_BEGIN), readOffset);
            break;
        case 1:
            readOffset = model.size();
            ASSERT_EQ(SetFilePointer(file, 0, nullptr, FILE_END), readOffset);
            break;
        case 2:
            ASSERT_EQ(sizesOf(writer), std::vector(2, model.size()));
            break;
        case 3:
            if (random() % 4 == 0) {
                model.resize(offset);
                ASSERT_TRUE(SetEndOfFile(writer));
            }
            break;
        case 4:
        case 5:
        case 6: {
            const std::string expected = readOffset < model.size() ? model.substr(readOffset, size) : "";
            ASSERT_EQ(read(file, static_cast<DWORD>(size)), expected);
            readOffset += expected.size();
            break;
        }
        default: {
            const std::string piece = source.substr(random() % 1000, size);
            ASSERT_EQ(write(writer, piece), piece.size());
            if (!piece.empty() && model.size() < offset + piece.size())
                model.resize(offset + piece.size());
            model.replace(offset, piece.size(), piece);
            offset += piece.size();
        }
        }
    }
    CloseHandle(reader);
    CloseHandle(writer);
    EXPECT_EQ(hostRead(root() / "f"), model);
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
    EXPECT_EQ(sizesOf(file), std::vector(2, (std::size_t{1} << 32) + 20));
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
    // As a result this offset equals the value that reports a failure.
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
    EXPECT_EQ(errorOf(write(file, "late") != 0), ERROR_INVALID_HANDLE);
}

}  // namespace
