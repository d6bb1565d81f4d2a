// told_trouble_test.cpp - whatever the host fails at shows in a call's result or in what is told in the end.
#include "file_fixture.h"

#include "file/host_faults.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <set>

using namespace platform::file;

namespace {

class ToldTroubleTest : public FileTest {
protected:
    // In memory, where a flush costs nothing.
    ToldTroubleTest() : FileTest(std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp") { (void)takeTold(); }
    ~ToldTroubleTest() override { clearFaultPlan(); }

    // In a process of its own: 0 if it held.
    static int inChild(const std::function<bool()>& holds)
    {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(holds() ? 0 : 1);
        int status = -1;
        ::waitpid(child, &status, 0);
        return status;
    }

    // All that can be seen of the host through the calls, as a text.
    [[nodiscard]] std::string everything() const
    {
        std::string seen;
        const auto add = [&](auto value) { seen += std::to_string(value) + ' '; };
        WIN32_FIND_DATAW found = {};
        const HANDLE search = FindFirstFileW(u"\\d\\*", &found);
        if (search != INVALID_HANDLE_VALUE) {
            std::set<std::string> names;
            do
                names.insert(std::filesystem::path(found.cFileName).string());
            while (FindNextFileW(search, &found));
            FindClose(search);
            for (const std::string& name : names)
                seen += name + ' ';
        }
        add(GetFileAttributesW(u"\\d\\b"));
        add(openError(u"\\d\\none", GENERIC_READ, OPEN_EXISTING));
        const HANDLE reader = open(u"\\d\\a", GENERIC_READ, OPEN_EXISTING);
        BY_HANDLE_FILE_INFORMATION information = {};
        (void)GetFileInformationByHandle(reader, &information);
        add(information.nFileSizeLow);
        add(SetFilePointer(reader, 1000, nullptr, FILE_BEGIN));
        seen += std::to_string(std::hash<std::string>()(read(reader, 50'000))) + ' ';
        CloseHandle(reader);

        CreateDirectoryW(u"\\d\\made", nullptr);
        for (const DWORD creation : {CREATE_NEW, CREATE_ALWAYS}) {
            const HANDLE writer = open(u"\\d\\made\\f", GENERIC_WRITE, creation);
            for (int i = 0; i < 200; ++i)
                (void)write(writer, std::string(300, 'w'));
            SetFilePointer(writer, 100, nullptr, FILE_BEGIN);
            SetEndOfFile(writer);
            (void)write(writer, "end");
            FlushFileBuffers(writer);
            CloseHandle(writer);
        }
        seen += hostRead(root() / "d" / "made" / "f");
        DeleteFileW(u"\\d\\made\\f");
        add(std::filesystem::exists(root() / "d" / "made" / "f") ? 1 : 0);
        FlushChangedVolumes();
        return seen;
    }

    void prepare() const
    {
        std::filesystem::remove_all(root() / "d");
        std::filesystem::create_directory(root() / "d");
        hostWrite(root() / "d" / "a", patternBytes(60'000));
        hostWrite(root() / "d" / "b", "b");
    }
};

// Not among them: what says that nothing is there, or something already.
TEST_F(ToldTroubleTest, NoFailureOfTheHostIsPassedOverInSilence)
{
    prepare();
    setFaultPlan({});
    const std::string whole = everything();
    const std::uint64_t calls = hostCallsMade();
    clearFaultPlan();
    EXPECT_EQ(takeTold(), std::set<std::u16string>());
    for (const int error : {EACCES, EAGAIN, EBADF,  EBUSY,      EDQUOT,       EFAULT, EFBIG,  EINVAL, EIO,
                            EISDIR, EMFILE, EMLINK, ENFILE,     ENAMETOOLONG, ENODEV, ENOMEM, ENOSPC, ENOSYS,
                            ENXIO,  EPERM,  EROFS,  EOPNOTSUPP, EOVERFLOW,    ESTALE, ETXTBSY}) {
        for (std::uint64_t nth = 1; nth <= calls; ++nth) {
            prepare();
            setFaultPlan({.kind = FaultKind::Fail, .nthCall = nth, .error = error});
            const std::string seen = everything();
            clearFaultPlan();
            const bool told = !takeTold().empty();
            EXPECT_TRUE(told || seen == whole) << "error " << error << " of call " << nth;
        }
    }
}

TEST_F(ToldTroubleTest, EntryThatCannotBeLookedAtIsNamed)
{
    prepare();
    addFolder(u"Card", true);
    const auto search = [](const std::u16string& pattern) {
        WIN32_FIND_DATAW found = {};
        const HANDLE search = FindFirstFileW(pattern.c_str(), &found);
        while (FindNextFileW(search, &found)) {
        }
        FindClose(search);
    };
    // The folder's opening, its reading, and the first of two entries.
    setFaultPlan({.kind = FaultKind::Fail, .nthCall = 3, .error = EIO, .calls = 2});
    search(u"\\d\\*");
    clearFaultPlan();
    EXPECT_EQ(takeTold().size(), 2U);
    setFaultPlan({.kind = FaultKind::Fail, .nthCall = 3, .error = ENOENT, .calls = 2});
    search(u"\\d\\*");
    EXPECT_EQ(takeTold(), std::set<std::u16string>()) << "gone since the folder was read";
    setFaultPlan({.kind = FaultKind::Fail, .nthCall = 2, .error = ESTALE});
    search(u"\\*");
    EXPECT_EQ(takeTold(), std::set<std::u16string>{u"read \\Card"});
    clearFaultPlan();

    // A folder that can be listed and not entered.
    ::chmod((root() / "d").c_str(), 0444);
    EXPECT_EQ(inChild([&] {
                  if (::geteuid() == 0 && ::setuid(65534) != 0)
                      return false;
                  search(u"\\d\\*");
                  return takeTold() == std::set<std::u16string>{u"read \\d\\a", u"read \\d\\b"};
              }),
              0);
    ::chmod((root() / "d").c_str(), 0755);
}

TEST_F(ToldTroubleTest, HandleOfThisProcessInTheWayIsNoTrouble)
{
    prepare();
    const HANDLE held = open(u"\\d\\b", GENERIC_WRITE, OPEN_EXISTING);
    EXPECT_EQ(openError(u"\\d\\b", GENERIC_READ, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(DeleteFileW(u"\\d\\b"));
    CloseHandle(held);
    EXPECT_EQ(takeTold(), std::set<std::u16string>());
    const OtherProcess elsewhere(root() / "d" / "b", O_WRONLY);
    EXPECT_EQ(openError(u"\\d\\b", GENERIC_READ, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(takeTold(), std::set<std::u16string>{u"read \\d\\b"});
}

// The room was reserved, so only a disk that fails can cost them.
TEST_F(ToldTroubleTest, GatheredBytesThatTheDiskRefusesAreNoLongerInTheFile)
{
    const auto card = addFolder(u"Card", true, 200'000);
    const std::pair<const char*, std::function<BOOL(HANDLE)>> losers[] = {
        {"HandOver", [](HANDLE file) { return HandOverFileBuffers(file); }},
        {"Flush", [](HANDLE file) { return FlushFileBuffers(file); }},
        {"Seek", [](HANDLE file) { return SetFilePointer(file, 5, nullptr, FILE_BEGIN) == 5 ? TRUE : FALSE; }},
        {"Write", [](HANDLE file) { return write(file, std::string(50'000, 'l')) != 0 ? TRUE : FALSE; }},
        {"FlushAll", [](HANDLE) { return FlushChangedVolumes(); }},
        {"Close", [](HANDLE file) { return CloseHandle(file); }},
    };
    for (const auto& [name, call] : losers) {
        SCOPED_TRACE(name);
        const HANDLE file = open(u"\\Card\\f", GENERIC_WRITE, CREATE_ALWAYS);
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(write(file, std::string(300, 's')), 300U);
        const auto onHost = std::filesystem::file_size(card / "f");
        ASSERT_LT(onHost, 60'000U) << "nothing is gathered on this file system";
        setFaultPlan({.kind = FaultKind::Fail, .nthCall = 1, .error = EIO});
        EXPECT_FALSE(call(file));
        EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
        clearFaultPlan();
        if (std::string(name) != "Close") {
            EXPECT_EQ(write(file, "more"), 0U) << "bytes before it are missing";
            EXPECT_FALSE(HandOverFileBuffers(file));
            EXPECT_FALSE(CloseHandle(file));
        }
        EXPECT_TRUE(takeTold().contains(u"write \\Card\\f"));
        EXPECT_EQ(std::filesystem::file_size(card / "f"), onHost);
        EXPECT_EQ(usedBytes(u"Card"), onHost);
    }
}

TEST_F(ToldTroubleTest, WhatIsMadeIsItsOwnersWhateverTheMask)
{
    for (const mode_t mask : {0777U, 0400U, 0027U}) {
        EXPECT_EQ(inChild([&] {
                      ::umask(mask);
                      prepareProcess();
                      return CreateDirectoryW(u"\\d", nullptr) && openError(u"\\d\\f", GENERIC_WRITE, CREATE_NEW) == 0;
                  }),
                  0);
        const auto rightsOf = [](const std::filesystem::path& path) {
            return static_cast<mode_t>(std::filesystem::status(path).permissions());
        };
        EXPECT_EQ(rightsOf(root() / "d"), 0700U | (0077U & ~mask));
        EXPECT_EQ(rightsOf(root() / "d" / "f"), 0600U | (0066U & ~mask));
        std::filesystem::remove_all(root() / "d");
    }
}

}  // namespace
