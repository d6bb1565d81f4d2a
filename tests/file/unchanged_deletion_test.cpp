// unchanged_deletion_test.cpp - a file is deleted only if it hasn't changed since its stamp was taken, whatever other
// programs do at the same time.
#include "file_fixture.h"
#include "file_stamp.h"

#include "ce/file_stamp.h"

#include <sys/stat.h>

#include <cerrno>

namespace fs = std::filesystem;

namespace {

using platform::file::FaultKind;
using platform::file::FaultPlan;

constexpr const char16_t* Path = u"\\d\\letter.txt";

class UnchangedDeletionTest : public FileTest {
protected:
    [[nodiscard]] fs::path file() const { return root() / "d" / "letter.txt"; }

    static FileStamp stampNow()
    {
        FileStamp stamp = {};
        const HANDLE file = open(Path, GENERIC_READ, OPEN_EXISTING);
        EXPECT_TRUE(GetFileStamp(file, &stamp));
        EXPECT_TRUE(CloseHandle(file));
        return stamp;
    }

    // Writes the file, and takes stamps of it until one proves that any later write will change the stamp.
    FileStamp writeAndStamp(const std::string& bytes) const
    {
        FileStamp stamp = writeAndStampNow(bytes);
        do
            stamp = stampNow();
        while (!stamp.provesWrites);
        return stamp;
    }

    // Like writeAndStamp() but without the wait. For tests in which no second write can leave the same times.
    FileStamp writeAndStampNow(const std::string& bytes) const
    {
        fs::remove_all(file().parent_path());
        hostWrite(file(), bytes);
        FileStamp stamp = stampNow();
        stamp.provesWrites = TRUE;
        return stamp;
    }

    // Returns 0 or the error of the deletion.
    static DWORD deletion(const FileStamp& stamp)
    {
        SetLastError(0);
        return errorOf(DeleteUnchangedFile(Path, &stamp));
    }

    static bool isUnchanged(const FileStamp& stamp) { return IsFileUnchanged(Path, &stamp) != FALSE; }

    // The contents of the files in the folder, whatever their names.
    [[nodiscard]] std::multiset<std::string> contents() const
    {
        std::multiset<std::string> all;
        std::error_code noFolder;
        for (const auto& entry : fs::directory_iterator(root() / "d", noFolder))
            all.insert(hostRead(entry.path()));
        return all;
    }
};

TEST_F(UnchangedDeletionTest, OnlyTheUnchangedFileIsDeleted)
{
    using Path = const fs::path&;
    const auto rewriteKeepingTimes = [this](Path path) {
        const auto time = fs::last_write_time(path);
        hostWrite(path, "news!");
        fs::last_write_time(path, time);
    };
    const auto replaceKeepingTimes = [this](Path path) {
        const fs::path other = root() / "d" / "other";
        hostWrite(other, "news!");
        fs::last_write_time(other, fs::last_write_time(path));
        fs::rename(other, path);
    };
    const std::pair<std::function<void(Path)>, DWORD> cases[] = {
        {[](Path) {}, 0},
        {[](Path path) { fs::resize_file(path, 7); }, ERROR_FILE_INVALID},
        {rewriteKeepingTimes, ERROR_FILE_INVALID},
        {replaceKeepingTimes, ERROR_FILE_INVALID},
        {[](Path path) { ::chmod(path.c_str(), 0444); }, ERROR_ACCESS_DENIED},
        {[](Path path) { fs::remove(path); }, ERROR_FILE_NOT_FOUND},
        {[](Path path) { fs::remove_all(path.parent_path()); }, ERROR_PATH_NOT_FOUND},
    };
    for (const auto& [change, error] : cases) {
        SCOPED_TRACE(&change - &cases[0].first);
        const FileStamp stamp = writeAndStamp("bytes");
        change(file());
        const std::string content = hostRead(file());
        EXPECT_EQ(isUnchanged(stamp), error == 0);
        EXPECT_EQ(deletion(stamp), error);
        const bool kept = error == ERROR_FILE_INVALID || error == ERROR_ACCESS_DENIED;
        EXPECT_EQ(fs::exists(file()), kept);
        EXPECT_EQ(contents(), kept ? std::multiset{content} : std::multiset<std::string>());
    }
}

TEST_F(UnchangedDeletionTest, FileCountsAsUnchangedOnlyIfThatIsCertain)
{
    FileStamp stamp = writeAndStamp("bytes");
    EXPECT_TRUE(isUnchanged(stamp));
    EXPECT_FALSE(IsFileUnchanged(u"\\d", &stamp));
    EXPECT_FALSE(IsFileUnchanged(nullptr, &stamp));
    EXPECT_FALSE(IsFileUnchanged(Path, nullptr));
    EXPECT_EQ(hostCallsOf([&] { EXPECT_FALSE(isUnchanged(stamp)); }, {.nthCall = 1, .error = EIO}), 1U);
    const HANDLE here = open(Path, GENERIC_WRITE, OPEN_EXISTING);
    EXPECT_TRUE(write(here, "B")) << "the host doesn't have it yet";
    EXPECT_FALSE(isUnchanged(stamp));
    CloseHandle(here);
    stamp = stampNow();
    stamp.provesWrites = FALSE;
    EXPECT_FALSE(isUnchanged(stamp));
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

// A second write soon after the first could leave the same time.
TEST_F(UnchangedDeletionTest, StampSoonAfterAWriteProvesNothing)
{
    struct Case {
        statx_timestamp write, change;
        timespec asked;
        BOOL proves;
    };
    const Case cases[] = {
        {{100, 1, {}}, {100, 1, {}}, {100, 40'000'000}, FALSE},
        {{100, 1, {}}, {100, 1, {}}, {100, 60'000'000}, TRUE},
        {{90, 0, {}}, {100, 1, {}}, {100, 40'000'000}, TRUE},     // set back, but the change time shows the write
        {{200, 1, {}}, {100, 1, {}}, {150, 0}, FALSE},            // in the future
        {{100, 0, {}}, {100, 0, {}}, {103, 900'000'000}, FALSE},  // the host stores whole seconds
        {{90, 0, {}}, {100, 0, {}}, {103, 900'000'000}, FALSE},   // whole seconds, and the write time was set back
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

// A file system that can't rename without replacing returns EINVAL. A file that can get no lease returns EACCES.
TEST_F(UnchangedDeletionTest, FileThatIsNotDeletedKeepsItsNameWhicheverCallFails)
{
    const std::pair<int, std::uint64_t> faults[] = {{EIO, 1},    {EIO, 2},    {EINVAL, 1}, {EACCES, 1},
                                                    {ENOMEM, 1}, {EEXIST, 1}, {EAGAIN, 1}};
    for (const auto& [hostError, times] : faults) {
        std::uint64_t calls = 0;
        for (std::uint64_t nth = 1; nth == 1 || calls >= nth - 1; ++nth) {
            SCOPED_TRACE(std::to_string(hostError) + " at " + std::to_string(nth));
            const FileStamp stamp = writeAndStampNow("bytes");
            DWORD error = 0;
            const FaultPlan plan = {.kind = FaultKind::Fail, .nthCall = nth, .error = hostError, .calls = times};
            calls = hostCallsOf([&] { error = deletion(stamp); }, plan);
            EXPECT_EQ(hostRead(file()), error == 0 ? "" : "bytes");
            EXPECT_EQ(contents().size(), error == 0 ? 0U : 1U);
            EXPECT_TRUE(error == 0 || calls >= nth) << "no call failed";
        }
    }
}

TEST_F(UnchangedDeletionTest, KillLeavesTheFileUnderANameThatSaysWhy)
{
    std::set<std::string> names;
    for (const FaultKind kind : {FaultKind::Kill, FaultKind::PowerCut}) {
        for (std::uint64_t nth = 1; nth == 1 || !contents().empty(); ++nth) {
            const FileStamp stamp = writeAndStampNow("bytes");
            statusOfChild([&] {
                platform::file::setFaultPlan({.kind = kind, .nthCall = nth});
                return DeleteUnchangedFile(Path, &stamp) != FALSE;
            });
            for (const auto& entry : fs::directory_iterator(root() / "d")) {
                EXPECT_EQ(hostRead(entry.path()), "bytes");
                names.insert(entry.path().filename().string().substr(0, 37));
            }
        }
    }
    EXPECT_EQ(names, (std::set<std::string>{"letter.txt", "letter.txt (being deleted by Quillbox"}));
}

// What another program can do between two calls, once or several times.
struct Intruder {
    fs::path file;
    int times = 0;
    std::multiset<std::string> survive;  // contents that must still exist
    int held = -1;                       // a descriptor to which the intruder writes after the deletion
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

// Returns -1 if the file is missing or if a blocking open would wait for the lease.
int openWith(int flags)
{
    const int descriptor = ::open(intruder.file.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | flags, 0666);
    if (descriptor < 0 && errno == EAGAIN)
        intruder.survive.insert("bytes");
    return descriptor;
}

void writeAndClose(int descriptor)
{
    if (descriptor < 0)
        return;
    struct stat before = {};
    ::fstat(descriptor, &before);
    const std::string bytes = "more " + std::to_string(++intruder.times);
    EXPECT_EQ(::write(descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ::close(descriptor);
    intruder.survive.insert((before.st_size != 0 ? "bytes" : "") + bytes);
}

void writeTo(int flags)
{
    writeAndClose(openWith(flags));
}

TEST_F(UnchangedDeletionTest, NothingThatAnotherProgramWritesDuringADeletionIsLost)
{
    const std::tuple<const char*, void (*)(), std::uint64_t> cases[] = {
        {"replace", replaceFile, 1},
        {"replace twice", replaceFile, 2},
        {"append", [] { writeTo(O_APPEND); }, 1},
        {"hold and append later", [] { intruder.held = openWith(O_APPEND); }, 1},
        {"make", [] { writeTo(O_CREAT | O_EXCL); }, 1},
        {"replace and make", [] { intruder.times == 0 ? replaceFile() : writeTo(O_CREAT | O_EXCL); }, 3},
    };
    for (const auto& [name, act, times] : cases) {
        std::uint64_t calls = 0;
        for (std::uint64_t nth = 1; nth == 1 || calls >= nth - 1; ++nth) {
            SCOPED_TRACE(std::string(name) + " at " + std::to_string(nth));
            const FileStamp stamp = writeAndStampNow("bytes");
            intruder = {file(), 0, {}, -1};
            DWORD error = 0;
            const FaultPlan plan = {
                .kind = FaultKind::Meanwhile, .nthCall = nth, .error = 0, .calls = times, .meanwhile = act};
            calls = hostCallsOf([&] { error = deletion(stamp); }, plan);
            writeAndClose(intruder.held);
            const std::multiset<std::string> found = contents();
            for (const std::string& bytes : intruder.survive)
                EXPECT_EQ(found.count(bytes), 1U) << bytes;
            EXPECT_EQ(fs::exists(file()), !found.empty());
            EXPECT_TRUE(error == 0 || intruder.times != 0 || !intruder.survive.empty());
        }
    }
}

}  // namespace
