// unchanged_deletion_test.cpp - a file is deleted only if it is the one that was stamped, whatever others do meanwhile.
#include "file_fixture.h"
#include "file_stamp.h"

#include "ce/file_deletion.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>

namespace fs = std::filesystem;

namespace {

class UnchangedDeletionTest : public FileTest {
protected:
    UnchangedDeletionTest() { fs::create_directory(root() / "d"); }

    [[nodiscard]] fs::path file() const { return root() / "d" / "letter.txt"; }

    static FileStamp stampNow()
    {
        FileStamp stamp = {};
        const HANDLE file = open(Path, GENERIC_READ, OPEN_EXISTING);
        EXPECT_TRUE(GetFileStamp(file, &stamp));
        EXPECT_TRUE(CloseHandle(file));
        return stamp;
    }

    // Writes the file, and stamps it when its time of writing lies far enough back.
    FileStamp writeAndStamp(const std::string& bytes)
    {
        ::chmod(file().c_str(), 0644);
        fs::remove(file());
        hostWrite(file(), bytes);
        FileStamp stamp = stampNow();
        while (!stamp.provesWrites) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            stamp = stampNow();
        }
        return stamp;
    }

    // 0 or the error.
    static DWORD deletion(const FileStamp& stamp)
    {
        SetLastError(0);
        return DeleteUnchangedFile(Path, &stamp) ? 0 : GetLastError();
    }

    static constexpr const char16_t* Path = u"\\d\\letter.txt";
};

TEST_F(UnchangedDeletionTest, OnlyTheFileOfTheStampGoes)
{
    const fs::path other = root() / "d" / "other";
    const auto append = [](const fs::path& path) { (void)!::truncate(path.c_str(), 7); };
    const auto rewriteKeepingTimes = [&](const fs::path& path) {
        struct stat before = {};
        ::stat(path.c_str(), &before);
        hostWrite(path, "news!");
        const timespec times[] = {before.st_atim, before.st_mtim};
        ::utimensat(AT_FDCWD, path.c_str(), times, 0);
    };
    const auto replaceKeepingTimes = [&](const fs::path& path) {
        hostWrite(other, "news!");
        fs::last_write_time(other, fs::last_write_time(path));
        fs::rename(other, path);
    };
    const std::pair<std::function<void(const fs::path&)>, DWORD> cases[] = {
        {[](const fs::path&) {}, 0},
        {append, ERROR_FILE_INVALID},
        {rewriteKeepingTimes, ERROR_FILE_INVALID},
        {replaceKeepingTimes, ERROR_FILE_INVALID},
        {[](const fs::path& path) { ::chmod(path.c_str(), 0444); }, ERROR_ACCESS_DENIED},
        {[](const fs::path& path) { fs::remove(path); }, ERROR_FILE_NOT_FOUND},
        {[](const fs::path& path) { fs::remove_all(path.parent_path()); }, ERROR_PATH_NOT_FOUND},
    };
    for (const auto& [change, error] : cases) {
        SCOPED_TRACE(&change - &cases[0].first);
        const FileStamp stamp = writeAndStamp("bytes");
        change(file());
        const std::string content = hostRead(file());
        EXPECT_EQ(deletion(stamp), error);
        EXPECT_EQ(hostRead(file()), error == 0 ? "" : content);
        EXPECT_EQ(fs::exists(file()), error == ERROR_FILE_INVALID || error == ERROR_ACCESS_DENIED);
        if (fs::exists(root() / "d")) {
            EXPECT_EQ(std::distance(fs::directory_iterator(root() / "d"), {}), fs::exists(file()) ? 1 : 0);
        }
        fs::create_directory(root() / "d");
    }
}

TEST_F(UnchangedDeletionTest, FileInUseHereOrElsewhereStays)
{
    const FileStamp stamp = writeAndStamp("bytes");
    const HANDLE here = open(Path, GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_EQ(deletion(stamp), ERROR_SHARING_VIOLATION);
    CloseHandle(here);
    for (const int flags : {O_RDONLY, O_WRONLY}) {
        const OtherProcess elsewhere(file(), flags);
        ASSERT_TRUE(elsewhere.opened());
        EXPECT_EQ(deletion(stamp), ERROR_SHARING_VIOLATION);
    }
    EXPECT_EQ(hostRead(file()), "bytes");
    EXPECT_EQ(deletion(stamp), 0U);
    EXPECT_FALSE(fs::exists(file()));
}

// A second write could leave the same time as the first.
TEST_F(UnchangedDeletionTest, StampThatComesTooSoonProvesNothing)
{
    struct Case {
        statx_timestamp write;
        timespec asked;
        BOOL proves;
    };
    const Case cases[] = {
        {{100, 1, {}}, {100, 40'000'000}, FALSE},
        {{100, 1, {}}, {100, 60'000'000}, TRUE},
        {{200, 1, {}}, {150, 0}, FALSE},            // of the future
        {{100, 0, {}}, {103, 900'000'000}, FALSE},  // whole seconds
        {{100, 0, {}}, {104, 1}, TRUE},
        {{-9'000'000'000'000, 1, {}}, {101, 0}, TRUE},
    };
    for (const Case& each : cases) {
        platform::file::HostStatus status = {};
        status.stx_mtime = each.write;
        EXPECT_EQ(platform::file::stampOf(status, each.asked).provesWrites, each.proves) << &each - cases;
    }

    FileStamp stamp = writeAndStamp("bytes");
    stamp.provesWrites = FALSE;
    EXPECT_EQ(deletion(stamp), ERROR_RETRY);
    EXPECT_EQ(hostRead(file()), "bytes");
}

}  // namespace
