// full_host_test.cpp - a full file system of the host: 1 MiB of memory, mounted for the test.
#include "file_fixture.h"

#include <fcntl.h>
#include <sys/mount.h>

namespace {

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

TEST_F(FullHostTest, RoomThatIsOnlyReservedForAnotherFileCanBeUsed)
{
    const HANDLE large = open(u"\\Small\\large", GENERIC_WRITE, CREATE_ALWAYS);
    const std::string piece(260, 'l');
    std::size_t inLarge = 0;
    while (inLarge < 800'000)
        inLarge += write(large, piece);
    // This file needs room that is reserved for the first one.
    const std::string bytes = patternBytes(200'000);
    const HANDLE small = open(u"\\Small\\small", GENERIC_WRITE, CREATE_ALWAYS);
    EXPECT_EQ(write(small, bytes), bytes.size());
    EXPECT_TRUE(CloseHandle(small));
    EXPECT_EQ(write(large, piece), piece.size());
    EXPECT_TRUE(CloseHandle(large));
    EXPECT_EQ(hostRead(small_ / "small"), bytes);
    EXPECT_EQ(hostRead(small_ / "large"), std::string(inLarge + 260, 'l'));
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
