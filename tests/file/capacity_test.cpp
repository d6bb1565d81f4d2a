// capacity_test.cpp - a full card or file system accepts the bytes that fit, and deleted or truncated files make room.
#include "file_fixture.h"

#include <sys/mount.h>

namespace {

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
        EXPECT_EQ(errorOf(write(file, "x") != 0), ERROR_DISK_FULL);
        SetFilePointer(file, 0, nullptr, FILE_BEGIN);  // existing bytes can be replaced
        EXPECT_EQ(write(file, bytes.substr(0, capacity)), capacity);
        EXPECT_TRUE(CloseHandle(file));
        EXPECT_EQ(hostRead(card / "f"), bytes.substr(0, capacity));
        EXPECT_EQ(used(), capacity);
        std::filesystem::remove_all(card);
    }
}

TEST_F(CardTest, DeletedOrTruncatedFileFreesItsRoomOnTheCardAndAHoleTakesRoom)
{
    addFolder(u"Card", true, 1000);
    for (int round = 0; round < 2; ++round) {
        const HANDLE file = open(u"\\Card\\f", Write, CREATE_ALWAYS);
        SetFilePointer(file, 800, nullptr, FILE_BEGIN);
        EXPECT_EQ(write(file, std::string(300, 'x')), 200U);
        SetFilePointer(file, 5000, nullptr, FILE_BEGIN);
        EXPECT_EQ(errorOf(write(file, "x") != 0), ERROR_DISK_FULL);
        EXPECT_EQ(used(), 1000U);
        CloseHandle(file);
        make(u"\\Card\\f", std::string(900, 'x'));
        EXPECT_EQ(used(), 900U);
        EXPECT_TRUE(DeleteFileW(u"\\Card\\f"));
        EXPECT_EQ(used(), 0U);
    }
}

TEST_F(CardTest, FilesThatWereOnTheCardBeforeItWasMountedUseUpItsCapacity)
{
    const auto folder = outside() / "mounted Card";
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

// A file system of 1 MiB in memory.
class FullHostTest : public FileTest {
protected:
    void SetUp() override
    {
        small_ = addFolder(u"Small", true);
        platform::file::removeAllMounts();
        mounted_ = ::mount("none", small_.c_str(), "tmpfs", 0, "size=1m") == 0;
        if (!mounted_)
            GTEST_SKIP() << "mounting a file system needs the administrator";
        remount();
        addFolder(u"Small", true);
    }
    void TearDown() override
    {
        platform::file::removeAllMounts();
        if (mounted_)
            ::umount(small_.c_str());
    }

    std::filesystem::path small_;
    bool mounted_ = false;
};

TEST_F(FullHostTest, EveryByteReportedIsInTheFileAndNoMore)
{
    const std::string bytes = patternBytes(1'200'000);
    for (const std::size_t piece : {260U, 5000U, 131'072U}) {
        SCOPED_TRACE(piece);
        const HANDLE file = open(u"\\Small\\f", GENERIC_WRITE, CREATE_ALWAYS);
        std::size_t total = 0;
        for (DWORD written = static_cast<DWORD>(piece); written == piece; total += written)
            written = write(file, bytes.substr(total, piece));
        EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
        EXPECT_GT(total, 900'000U);
        EXPECT_TRUE(CloseHandle(file)) << "the write has reported the error";
        EXPECT_EQ(hostRead(small_ / "f"), bytes.substr(0, total));
    }
}

TEST_F(FullHostTest, MarkOfAnUnfinishedFileTakesNoRoomFromIt)
{
    const HANDLE file = open(u"\\Small\\f", GENERIC_WRITE, CREATE_ALWAYS);
    EXPECT_TRUE(MarkUnfinished(file));
    const std::string block = patternBytes(65'536);
    std::size_t total = 0;
    for (DWORD written = 0; WriteFile(file, block.data(), 65'536, &written, nullptr);)
        total += written;
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_EQ(total, std::size_t{1} << 20) << "the mark takes no block";
    EXPECT_TRUE(MarkFinished(file));
    CloseHandle(file);
    EXPECT_EQ(std::filesystem::file_size(small_ / "f"), total);
}

TEST_F(FullHostTest, RoomThatIsOnlyReservedForAnotherFileCanBeUsed)
{
    const HANDLE large = open(u"\\Small\\large", GENERIC_WRITE, CREATE_ALWAYS);
    for (int i = 0; i < 3200; ++i)
        EXPECT_EQ(write(large, std::string(250, 'l')), 250U);
    const std::string bytes = patternBytes(200'000);
    make(u"\\Small\\small", bytes);
    EXPECT_EQ(write(large, std::string(250, 'l')), 250U);
    EXPECT_TRUE(CloseHandle(large));
    EXPECT_EQ(hostRead(small_ / "small"), bytes);
    EXPECT_EQ(hostRead(small_ / "large"), std::string(3201 * 250, 'l'));
}

TEST_F(FullHostTest, WriteThatOnlyReservedRoomCompletesKeepsTheMark)
{
    const HANDLE large = open(u"\\Small\\large", GENERIC_WRITE, CREATE_ALWAYS);
    for (const std::size_t size : {40'000, 40})
        EXPECT_EQ(write(large, std::string(size, 'l')), size);
    const HANDLE file = open(u"\\Small\\f", GENERIC_WRITE, CREATE_ALWAYS);
    EXPECT_TRUE(MarkUnfinished(file));
    EXPECT_EQ(write(file, patternBytes(4090)), 4090U);
    std::ofstream filler(small_ / "filler", std::ios::binary);
    while (filler.write(std::string(4096, 'x').data(), 4096).flush()) {
    }
    EXPECT_EQ(write(file, patternBytes(100)), 100U) << "6 bytes, and the others after the reserve was given back";
    EXPECT_TRUE(HandOverFileBuffers(file));
    EXPECT_EQ(std::filesystem::file_size(small_ / "f"), 4191U);
    CloseHandle(file);
    CloseHandle(large);
}

TEST_F(FullHostTest, OtherFileSystemsInAMountedFolderAreFlushed)
{
    ASSERT_TRUE(platform::file::addMount({u"Outside", ::open(outside().c_str(), O_RDONLY | O_DIRECTORY), false, {}}));
    const auto callsOfFlush = [] { return hostCallsOf([] { EXPECT_TRUE(FlushChangedVolumes()); }); };
    (void)callsOfFlush();
    EXPECT_EQ(openError(u"\\Outside\\mounted Small\\f", GENERIC_WRITE, CREATE_NEW), 0U);
    EXPECT_EQ(callsOfFlush(), 1U);
    EXPECT_EQ(openError(u"\\f", GENERIC_WRITE, CREATE_NEW), 0U);
    EXPECT_TRUE(DeleteFileW(u"\\Outside\\mounted Small\\f"));
    EXPECT_EQ(callsOfFlush(), 2U);
    EXPECT_EQ(openError(u"\\g", GENERIC_WRITE, CREATE_NEW), 0U);
    EXPECT_EQ(openError(u"\\Small\\f", GENERIC_WRITE, CREATE_ALWAYS), 0U);
    EXPECT_TRUE(CreateDirectoryW(u"\\Outside\\mounted Small\\d", nullptr));
    EXPECT_EQ(callsOfFlush(), 2U) << "one flush of the file system that two folders share";
}

}  // namespace
