// fault_test.cpp - the host fails, the process is killed, the power goes.
#include "file_fixture.h"

#include "file/file_move.h"
#include "file/host_faults.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>

using namespace platform::file;

namespace {

class FaultTest : public FileTest {
protected:
    ~FaultTest() override { clearFaultPlan(); }

    // Runs `action` in a process of its own under the plan; true if it was killed on the way.
    static bool diesUnder(const FaultPlan& plan, const std::function<void()>& action)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            setFaultPlan(plan);
            action();
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }
};

TEST_F(FaultTest, NoFailureOfTheHostIsTakenForSuccess)
{
    const std::string bytes = patternBytes(60'000);
    std::uint64_t nth = 1;
    for (bool done = false; !done; ++nth) {
        SCOPED_TRACE(nth);
        std::filesystem::remove(root() / "f");
        setFaultPlan({FaultKind::Fail, nth, EIO});
        const HANDLE file = open(u"\\f", GENERIC_WRITE, CREATE_NEW);
        std::size_t total = 0;
        while (total < bytes.size()) {
            const DWORD written = write(file, bytes.substr(total, 260));
            total += written;
            if (written == 0)
                break;
        }
        const bool whole = total == bytes.size() && FlushFileBuffers(file);
        const bool closed = file != INVALID_HANDLE_VALUE && CloseHandle(file);
        done = hostCallsMade() < nth;
        clearFaultPlan();
        // All calls succeeded, or one of them told: the bytes are there, or the caller knows.
        const bool allSucceeded = whole && closed;
        EXPECT_TRUE(!allSucceeded || hostRead(root() / "f") == bytes);
        EXPECT_TRUE(!done || (whole && closed));
    }
    EXPECT_GT(nth, 5U);
}

TEST_F(FaultTest, ReadErrorComesAfterTheBytesBeforeIt)
{
    const std::string bytes = patternBytes(50'000);
    hostWrite(root() / "f", bytes);
    const HANDLE file = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    std::string got;
    setFaultPlan({FaultKind::Fail, 3, EIO});  // 4096 bytes ahead, 8192, and here
    for (;;) {
        const std::string piece = read(file, 1000);
        got += piece;
        if (piece.size() < 1000)
            break;
    }
    // The retry with the caller's own size succeeds: the fault was further on than it asked.
    EXPECT_EQ(got, bytes);
    CloseHandle(file);
    clearFaultPlan();

    const HANDLE again = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    std::string buffer(40'000, '\0');
    DWORD count = 0;
    EXPECT_EQ(read(again, 4000).size(), 4000U);
    setFaultPlan({FaultKind::Fail, 1, EIO});
    EXPECT_FALSE(ReadFile(again, buffer.data(), 40'000, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(count, 96U);
    EXPECT_EQ(buffer.substr(0, 96), bytes.substr(4000, 96));
    EXPECT_EQ(read(again, 10), bytes.substr(4096, 10)) << "the place moved on by what came";
    CloseHandle(again);
}

TEST_F(FaultTest, HostErrorsBecomeThePlatformsNumbers)
{
    hostWrite(root() / "f", "x");
    const std::pair<int, DWORD> cases[] = {{EROFS, ERROR_WRITE_PROTECT},       {ENOSPC, ERROR_DISK_FULL},
                                           {EDQUOT, ERROR_DISK_FULL},          {EACCES, ERROR_ACCESS_DENIED},
                                           {EIO, ERROR_GEN_FAILURE},           {ESTALE, ERROR_GEN_FAILURE},
                                           {ETXTBSY, ERROR_SHARING_VIOLATION}, {EMFILE, ERROR_TOO_MANY_OPEN_FILES}};
    for (const auto& [hostError, expected] : cases) {
        setFaultPlan({FaultKind::Fail, 1, hostError});
        EXPECT_EQ(openError(u"\\new", GENERIC_WRITE, CREATE_NEW), expected) << hostError;
        setFaultPlan({FaultKind::Fail, 1, hostError});
        EXPECT_EQ(openError(u"\\f", GENERIC_READ, OPEN_EXISTING), expected) << hostError;
    }
}

TEST_F(FaultTest, FileWhoseAttributesAreNotToldIsNeitherReplacedNorDeleted)
{
    hostWrite(root() / "rom", "bytes");
    hostMark(root() / "rom", "0x40");
    for (std::uint64_t nth = 1; nth < 15; ++nth) {
        setFaultPlan({FaultKind::Fail, nth, EIO});
        EXPECT_NE(openError(u"\\rom", GENERIC_WRITE, CREATE_ALWAYS), 0U);
        setFaultPlan({FaultKind::Fail, nth, EIO});
        EXPECT_FALSE(DeleteFileW(u"\\rom"));
        EXPECT_EQ(hostRead(root() / "rom"), "bytes");
    }
}

TEST_F(FaultTest, LeaseRefusedForAnotherReasonIsNoFileInUse)
{
    hostWrite(root() / "f", "x");
    for (std::uint64_t nth = 3; nth <= 6; ++nth) {  // the calls between the open and the first byte
        setFaultPlan({FaultKind::Fail, nth, EINVAL});
        EXPECT_NE(openError(u"\\f", GENERIC_READ, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
    }
}

TEST_F(FaultTest, WhatWasFlushedSurvivesAPowerCutAndTheRestDoesNot)
{
    const std::string bytes = patternBytes(90'000);
    const auto action = [&] {
        CreateDirectoryW(u"\\kept", nullptr);
        const HANDLE kept = open(u"\\kept\\f", GENERIC_WRITE, CREATE_NEW);
        (void)write(kept, bytes.substr(0, 50'000));
        (void)FlushFileBuffers(kept);
        (void)write(kept, bytes.substr(50'000));
        CreateDirectoryW(u"\\lost", nullptr);
        const HANDLE lost = open(u"\\lost\\f", GENERIC_WRITE, CREATE_NEW);
        (void)write(lost, bytes);
        CloseHandle(lost);
        CloseHandle(kept);
        (void)GetFileAttributesW(u"\\");
    };
    setFaultPlan({});
    action();
    const std::uint64_t calls = hostCallsMade();
    clearFaultPlan();
    std::filesystem::remove_all(root() / "kept");
    std::filesystem::remove_all(root() / "lost");

    EXPECT_TRUE(diesUnder({FaultKind::PowerCut, calls, 0}, action));
    EXPECT_EQ(hostRead(root() / "kept" / "f"), bytes.substr(0, 50'000));
    EXPECT_FALSE(std::filesystem::exists(root() / "lost"));
}

TEST_F(FaultTest, KilledProcessLeavesWhatTheHostWasGiven)
{
    hostWrite(root() / "old", "old");
    const auto action = [] {
        const HANDLE file = open(u"\\f", GENERIC_WRITE, CREATE_NEW);
        (void)write(file, "given");
        (void)DeleteFileW(u"\\old");
    };
    bool killed = true;
    for (std::uint64_t nth = 1; killed; ++nth) {
        std::filesystem::remove(root() / "f");
        hostWrite(root() / "old", "old");
        killed = diesUnder({FaultKind::Kill, nth, 0}, action);
        EXPECT_TRUE(hostRead(root() / "f") == "given" || std::filesystem::exists(root() / "old"));
    }
    EXPECT_EQ(hostRead(root() / "f"), "given");
}

TEST_F(FaultTest, WholeFlushPutsAllThatWasDoneOnTheDisk)
{
    addFolder(u"Card", true);
    const std::string bytes = patternBytes(90'000);
    const auto action = [&] {
        std::array<HANDLE, 2> files{};
        CreateDirectoryW(u"\\d", nullptr);
        CreateDirectoryW(u"\\Card\\d", nullptr);
        for (const std::size_t i : {0U, 1U}) {
            files[i] = open(i == 0 ? u"\\d\\f" : u"\\Card\\d\\f", GENERIC_WRITE, CREATE_NEW);
            for (std::size_t place = 0; place < 50'000; place += 250)  // gathered, the last of them
                (void)write(files[i], bytes.substr(place, 250));
        }
        EXPECT_TRUE(FlushChangedVolumes());
        for (const HANDLE file : files) {
            (void)write(file, bytes.substr(50'000));
            CloseHandle(file);
        }
        (void)openError(u"\\late", GENERIC_WRITE, CREATE_NEW);
    };
    setFaultPlan({});
    action();
    const std::uint64_t calls = hostCallsMade();
    clearFaultPlan();
    for (const auto& folder : {root(), outside() / "mounted Card"})
        std::filesystem::remove_all(folder / "d");
    std::filesystem::remove(root() / "late");

    EXPECT_TRUE(diesUnder({FaultKind::PowerCut, calls, 0}, action));
    EXPECT_EQ(hostRead(root() / "d" / "f"), bytes.substr(0, 50'000));
    EXPECT_EQ(hostRead(outside() / "mounted Card" / "d" / "f"), bytes.substr(0, 50'000));
    EXPECT_FALSE(std::filesystem::exists(root() / "late"));
}

TEST_F(FaultTest, WholeFlushIsOneCallForEachFileSystemThatChanged)
{
    addFolder(u"Card", true);
    const auto callsOfFlush = [](BOOL succeeds = TRUE, const FaultPlan& plan = {}) {
        setFaultPlan(plan);
        EXPECT_EQ(FlushChangedVolumes(), succeeds);
        const std::uint64_t calls = hostCallsMade();
        clearFaultPlan();
        return calls;
    };
    (void)callsOfFlush();
    EXPECT_EQ(callsOfFlush(), 0U);
    const std::pair<const char*, std::function<bool()>> changes[] = {
        {"make", [] { return openError(u"\\Card\\f", GENERIC_WRITE, CREATE_NEW) == 0; }},
        {"write",
         [] {
             const HANDLE file = open(u"\\Card\\f", GENERIC_WRITE, OPEN_EXISTING);
             return write(file, "x") == 1 && CloseHandle(file) != FALSE;
         }},
        {"cut", [] { return openError(u"\\Card\\f", GENERIC_WRITE, CREATE_ALWAYS) == 0; }},
        {"move", [] { return moveFile(u"\\Card\\f", u"\\Card\\g", false) == 0; }},
        {"delete", [] { return DeleteFileW(u"\\Card\\g") != FALSE; }},
        {"folder", [] { return CreateDirectoryW(u"\\Card\\d", nullptr) != FALSE; }},
        {"both", [] { return CreateDirectoryW(u"\\Card\\e", nullptr) && CreateDirectoryW(u"\\e", nullptr); }},
    };
    for (const auto& [name, change] : changes) {
        EXPECT_TRUE(change()) << name;
        EXPECT_EQ(callsOfFlush(), 1U) << name;
        EXPECT_EQ(callsOfFlush(), 0U) << name;
    }
    EXPECT_EQ(openError(u"\\none", GENERIC_WRITE, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(callsOfFlush(), 0U);

    (void)takeTold();
    EXPECT_TRUE(CreateDirectoryW(u"\\Card\\h", nullptr));
    EXPECT_EQ(callsOfFlush(FALSE, {FaultKind::Fail, 1, EIO}), 1U);
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(takeTold(), std::set<std::u16string>{u"write \\Card"});
    EXPECT_EQ(callsOfFlush(), 1U) << "it has still to be flushed";
}

TEST_F(FaultTest, BytesHandedOverSurviveTheProcess)
{
    const auto action = [] {
        const HANDLE file = open(u"\\f", GENERIC_WRITE, CREATE_NEW);
        for (int i = 0; i < 500; ++i)
            (void)write(file, std::string(100, 'x'));
        (void)HandOverFileBuffers(file);
        setFaultPlan({FaultKind::Kill, 1, 0});
        (void)HandOverFileBuffers(file);  // nothing is left to do, so it isn't killed here
        (void)write(file, "y");
        (void)GetFileAttributesW(u"\\f");
    };
    EXPECT_TRUE(diesUnder({}, action));
    EXPECT_EQ(hostRead(root() / "f"), std::string(50'000, 'x'));
    const HANDLE reader = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    EXPECT_FALSE(HandOverFileBuffers(reader));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    CloseHandle(reader);
}

TEST_F(FaultTest, ReadThatGivesNothingIsMadeOnDemand)
{
    hostWrite(root() / "f", patternBytes(10'000));
    const HANDLE file = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    setFaultPlan({FaultKind::ShortRead, 1, 0});
    EXPECT_EQ(read(file, 20'000), "");
    EXPECT_EQ(read(file, 20'000).size(), 10'000U);
    CloseHandle(file);
}

}  // namespace
