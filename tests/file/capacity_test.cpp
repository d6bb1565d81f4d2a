// capacity_test.cpp - a full card takes the bytes that fit, and deleted or cut files make room.
#include "file_fixture.h"

namespace {

constexpr DWORD Write = GENERIC_WRITE;

class CardTest : public FileTest {
protected:
    [[nodiscard]] static std::uint64_t used() { return platform::file::usedBytes(u"Card").value_or(~0ULL); }
};

TEST_F(CardTest, WritePastTheCapacityTakesTheBytesThatFit)
{
    for (const std::uint64_t capacity : {0U, 1U, 259U, 1000U, 70'001U}) {
        SCOPED_TRACE(capacity);
        remount();
        const auto card = addFolder(u"Card", true, capacity);
        const std::string bytes = patternBytes(80'000);
        const HANDLE file = open(u"\\Card\\f", Write, CREATE_ALWAYS);
        std::size_t total = 0;
        DWORD written = 260;
        while (written == 260)
            total += written = write(file, bytes.substr(total, 260));
        EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
        EXPECT_EQ(total, capacity);
        EXPECT_EQ(write(file, "x"), 0U);
        EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
        SetFilePointer(file, 0, nullptr, FILE_BEGIN);  // existing bytes can be replaced
        EXPECT_EQ(write(file, bytes.substr(0, capacity)), capacity);
        EXPECT_TRUE(CloseHandle(file));
        EXPECT_EQ(hostRead(card / "f"), bytes.substr(0, capacity));
        EXPECT_EQ(used(), capacity);
        std::filesystem::remove_all(card);
    }
}

TEST_F(CardTest, DeletedAndCutFilesMakeRoom)
{
    addFolder(u"Card", true, 1000);
    EXPECT_TRUE(CreateDirectoryW(u"\\Card\\d", nullptr));
    for (int round = 0; round < 5; ++round) {
        HANDLE file = open(u"\\Card\\d\\f", Write, CREATE_ALWAYS);
        EXPECT_EQ(write(file, std::string(900, 'x')), 900U);
        CloseHandle(file);
        file = open(u"\\Card\\d\\f", Write, CREATE_ALWAYS);
        EXPECT_EQ(used(), 0U);
        EXPECT_EQ(write(file, std::string(2000, 'x')), 1000U);
        CloseHandle(file);
        EXPECT_TRUE(DeleteFileW(u"\\Card\\d\\f"));
        EXPECT_EQ(used(), 0U);
    }
}

TEST_F(CardTest, FilesThatTheCardHasAlreadyCount)
{
    const auto folder = outside() / "mounted Card";
    std::filesystem::create_directories(folder / "a" / "b");
    hostWrite(folder / "a" / "b" / "old", std::string(300, 'x'));
    std::filesystem::create_hard_link(folder / "a" / "b" / "old", folder / "same file");
    std::filesystem::create_symlink(root(), folder / "link");
    hostWrite(root() / "elsewhere", std::string(5000, 'x'));
    addFolder(u"Card", true, 1000);
    EXPECT_EQ(used(), 300U);
    const HANDLE file = open(u"\\Card\\a\\b\\old", Write, OPEN_EXISTING);
    SetFilePointer(file, 0, nullptr, FILE_END);
    EXPECT_EQ(write(file, std::string(800, 'x')), 700U);
    CloseHandle(file);
    EXPECT_EQ(platform::file::usedBytes(u""), std::nullopt);
}

TEST_F(CardTest, HoleBeforeAWriteAfterTheEndNeedsRoom)
{
    const auto card = addFolder(u"Card", true, 1000);
    const HANDLE file = open(u"\\Card\\f", Write, CREATE_ALWAYS);
    SetFilePointer(file, 900, nullptr, FILE_BEGIN);
    EXPECT_EQ(write(file, std::string(300, 'x')), 100U);
    SetFilePointer(file, 5000, nullptr, FILE_BEGIN);
    EXPECT_EQ(write(file, "x"), 0U);
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    CloseHandle(file);
    EXPECT_EQ(std::filesystem::file_size(card / "f"), 1000U);
}

}  // namespace
