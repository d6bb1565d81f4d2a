// unchanged_deletion_test.cpp - a file is deleted only if it is the one that was stamped, whatever others do meanwhile.
#include "file_fixture.h"
#include "file_stamp.h"

#include "file/host_faults.h"

#include "ce/file_deletion.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <functional>
#include <set>
#include <thread>

namespace fs = std::filesystem;

namespace {

using platform::file::FaultKind;
using platform::file::FaultPlan;

constexpr const char16_t* Path = u"\\d\\letter.txt";

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

    // For tests in which no second write could leave the same times: nothing has to be waited for.
    FileStamp writeAndStampNow(const std::string& bytes)
    {
        fs::remove_all(file().parent_path());
        fs::create_directory(file().parent_path());
        hostWrite(file(), bytes);
        FileStamp stamp = stampNow();
        stamp.provesWrites = TRUE;
        return stamp;
    }

    // 0 or the error, while the plan holds. `calls` are those that were made.
    static DWORD deletionUnder(const FaultPlan& plan, const FileStamp& stamp, std::uint64_t& calls)
    {
        platform::file::setFaultPlan(plan);
        const DWORD error = deletion(stamp);
        calls = platform::file::hostCallsMade();
        platform::file::clearFaultPlan();
        return error;
    }

    // 0 or the error.
    static DWORD deletion(const FileStamp& stamp)
    {
        SetLastError(0);
        return DeleteUnchangedFile(Path, &stamp) ? 0 : GetLastError();
    }

    // What the files of the folder hold, whatever their names.
    [[nodiscard]] std::multiset<std::string> contents() const
    {
        std::multiset<std::string> all;
        for (const auto& entry : fs::directory_iterator(root() / "d"))
            all.insert(hostRead(entry.path()));
        return all;
    }
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
        statx_timestamp write, change;
        timespec asked;
        BOOL proves;
    };
    const Case cases[] = {
        {{100, 1, {}}, {100, 1, {}}, {100, 40'000'000}, FALSE},
        {{100, 1, {}}, {100, 1, {}}, {100, 60'000'000}, TRUE},
        {{90, 0, {}}, {100, 1, {}}, {100, 40'000'000}, TRUE},     // set back: a write would show in the fine one
        {{200, 1, {}}, {100, 1, {}}, {150, 0}, FALSE},            // of the future
        {{100, 0, {}}, {100, 0, {}}, {103, 900'000'000}, FALSE},  // whole seconds
        {{90, 0, {}}, {100, 0, {}}, {103, 900'000'000}, FALSE},   // set back
        {{100, 0, {}}, {100, 0, {}}, {104, 1}, TRUE},
        {{-9'000'000'000'000, 1, {}}, {100, 1, {}}, {101, 0}, TRUE},
    };
    for (const Case& each : cases) {
        platform::file::HostStatus status = {};
        status.stx_mtime = each.write;
        status.stx_ctime = each.change;
        EXPECT_EQ(platform::file::stampOf(status, each.asked).provesWrites, each.proves) << &each - cases;
    }

    FileStamp stamp = writeAndStamp("bytes");
    stamp.provesWrites = FALSE;
    EXPECT_EQ(deletion(stamp), ERROR_RETRY);
    EXPECT_EQ(hostRead(file()), "bytes");
}

// EINVAL stands for a file system that can't refuse to replace, EACCES for a file that gets no lease.
TEST_F(UnchangedDeletionTest, FileThatIsNotDeletedKeepsItsNameWhicheverCallFails)
{
    const std::pair<int, std::uint64_t> faults[] = {{EIO, 1},    {EIO, 2},    {EINVAL, 1}, {EACCES, 1},
                                                    {ENOMEM, 1}, {EEXIST, 1}, {EAGAIN, 1}};
    for (const auto& [hostError, times] : faults) {
        std::uint64_t calls = 0;
        for (std::uint64_t nth = 1; nth == 1 || calls >= nth - 1; ++nth) {
            SCOPED_TRACE(std::to_string(hostError) + " at " + std::to_string(nth));
            const FileStamp stamp = writeAndStampNow("bytes");
            const DWORD error = deletionUnder(
                {.kind = FaultKind::Fail, .nthCall = nth, .error = hostError, .calls = times}, stamp, calls);
            EXPECT_EQ(hostRead(file()), error == 0 ? "" : "bytes");
            EXPECT_EQ(contents().size(), error == 0 ? 0U : 1U);
            EXPECT_TRUE(error == 0 || calls >= nth) << "this one met no fault";
        }
    }
}

TEST_F(UnchangedDeletionTest, KillLeavesTheFileUnderANameThatTellsWhy)
{
    std::set<std::string> names;
    for (const FaultKind kind : {FaultKind::Kill, FaultKind::PowerCut}) {
        for (std::uint64_t nth = 1; nth == 1 || !contents().empty(); ++nth) {
            const FileStamp stamp = writeAndStampNow("bytes");
            const pid_t child = ::fork();
            if (child == 0) {
                platform::file::setFaultPlan({.kind = kind, .nthCall = nth});
                (void)DeleteUnchangedFile(Path, &stamp);
                ::_exit(0);
            }
            ::waitpid(child, nullptr, 0);
            for (const auto& entry : fs::directory_iterator(root() / "d")) {
                EXPECT_EQ(hostRead(entry.path()), "bytes");
                names.insert(entry.path().filename().string().substr(0, 37));
            }
        }
    }
    EXPECT_EQ(names, (std::set<std::string>{"letter.txt", "letter.txt (being deleted by Quillbox"}));
}

// What other programs might do between any two calls. Each does it once or twice.
struct Intruder {
    fs::path file;
    int times = 0;
    std::multiset<std::string> survive;  // what nobody but the deletion could have taken away
};
Intruder intruder;

void replaceFile()
{
    const std::string bytes = "replaced " + std::to_string(++intruder.times);
    const fs::path beside = intruder.file.parent_path() / "beside";
    std::ofstream(beside) << bytes;
    fs::rename(beside, intruder.file);
    intruder.survive = {bytes};
}

void writeTo(int flags)
{
    const int descriptor = ::open(intruder.file.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | flags, 0666);
    if (descriptor < 0) {
        if (errno == EAGAIN)  // it would wait for the lease, and then write to this file
            intruder.survive.insert("bytes");
        return;
    }
    struct stat before = {};
    ::fstat(descriptor, &before);
    const std::string bytes = "more " + std::to_string(++intruder.times);
    EXPECT_EQ(::write(descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ::close(descriptor);
    intruder.survive.insert((before.st_size != 0 ? "bytes" : "") + bytes);
}

TEST_F(UnchangedDeletionTest, NothingThatOthersDoBetweenItsCallsIsLost)
{
    struct Case {
        const char* name;
        void (*act)();
        std::uint64_t times;
    };
    const Case cases[] = {
        {"replace", replaceFile, 1},
        {"replace twice", replaceFile, 2},
        {"append", [] { writeTo(O_APPEND); }, 1},
        {"make", [] { writeTo(O_CREAT | O_EXCL); }, 1},
        {"replace and make", [] { intruder.times == 0 ? replaceFile() : writeTo(O_CREAT | O_EXCL); }, 3},
    };
    for (const Case& each : cases) {
        std::uint64_t calls = 0;
        for (std::uint64_t nth = 1; nth == 1 || calls >= nth - 1; ++nth) {
            SCOPED_TRACE(std::string(each.name) + " at " + std::to_string(nth));
            const FileStamp stamp = writeAndStampNow("bytes");
            intruder = {file(), 0, {}};
            const FaultPlan plan{
                .kind = FaultKind::Meanwhile, .nthCall = nth, .error = 0, .calls = each.times, .meanwhile = each.act};
            const DWORD error = deletionUnder(plan, stamp, calls);
            const std::multiset<std::string> found = contents();
            for (const std::string& bytes : intruder.survive)
                EXPECT_EQ(found.count(bytes), 1U) << bytes;
            EXPECT_EQ(fs::exists(file()), !found.empty());
            EXPECT_TRUE(error == 0 || intruder.times != 0 || !intruder.survive.empty());
        }
    }
}

}  // namespace
