// sharing_test.cpp - which opens of one file exclude each other, in this process and in others.
#include "file_fixture.h"

#include <atomic>
#include <thread>
#include <vector>

namespace {

constexpr DWORD Read = GENERIC_READ;
constexpr DWORD ShareRead = FILE_SHARE_READ;
constexpr DWORD ShareBoth = FILE_SHARE_READ | FILE_SHARE_WRITE;

TEST_F(FileTest, SecondOpenNeedsBothSidesToAllowIt)
{
    struct Case {
        DWORD firstAccess, firstShare, secondAccess, secondShare;
        bool allowed;
    };
    const Case cases[] = {
        {Read, 0, Read, 0, false},
        {Read, 0, Read, ShareBoth, false},
        {Read, ShareRead, Read, 0, false},
        {Read, ShareRead, Read, ShareRead, true},
        {Read, ShareRead, Write, ShareBoth, false},
        {Read, ShareBoth, Write, ShareBoth, true},
        {Read, ShareBoth, Write, FILE_SHARE_WRITE, false},
        {Write, ShareRead, Read, ShareRead, false},
        {Write, ShareRead, Read, ShareBoth, true},
        {Write, ShareBoth, Write, ShareBoth, true},
        {Read | Write, ShareBoth, Read, ShareRead, false},
        {Read, 0, 0, 0, true},
        {0, 0, Read | Write, 0, true},
    };
    hostWrite(root() / "f", "bytes");
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        const HANDLE first = open(u"\\f", each.firstAccess, OPEN_EXISTING, each.firstShare);
        ASSERT_NE(first, INVALID_HANDLE_VALUE);
        EXPECT_EQ(openError(u"\\f", each.secondAccess, OPEN_EXISTING, each.secondShare),
                  each.allowed ? 0U : ERROR_SHARING_VIOLATION);
        CloseHandle(first);
        EXPECT_EQ(openError(u"\\f", Read | Write, OPEN_EXISTING), 0U);
    }
}

TEST_F(FileTest, FileInUseIsNeitherEmptiedNorDeleted)
{
    hostWrite(root() / "f", "bytes");
    std::filesystem::create_hard_link(root() / "f", root() / "other name");
    const HANDLE first = open(u"\\f", Read, OPEN_EXISTING, ShareRead);
    for (const WCHAR* path : {u"\\f", u"\\other name"}) {
        EXPECT_EQ(openError(path, Write, CREATE_ALWAYS), ERROR_SHARING_VIOLATION);
        EXPECT_EQ(openError(path, Read, CREATE_ALWAYS, ShareBoth), ERROR_SHARING_VIOLATION);
        EXPECT_EQ(errorOf(DeleteFileW(path)), ERROR_SHARING_VIOLATION);
    }
    EXPECT_NE(GetFileAttributesW(u"\\f"), INVALID_FILE_ATTRIBUTES);
    CloseHandle(first);
    EXPECT_EQ(hostRead(root() / "f"), "bytes");
    EXPECT_TRUE(DeleteFileW(u"\\f"));
}

TEST_F(FileTest, FileOpenInAnotherProcessCanBeOpenedIfBothOnlyReadOrTheCallAllowsWriting)
{
    const std::tuple<int, DWORD, DWORD, DWORD> cases[] = {
        {O_WRONLY, Read, 0, ERROR_SHARING_VIOLATION},
        {O_WRONLY, Read, ShareRead, ERROR_SHARING_VIOLATION},
        {O_WRONLY, Read, ShareBoth, 0},
        {O_RDONLY, Read, ShareRead, 0},
        {O_RDONLY, Write, 0, ERROR_SHARING_VIOLATION},
    };
    hostWrite(root() / "f", "bytes");
    for (const auto& [otherFlags, access, share, error] : cases) {
        SCOPED_TRACE(testing::Message() << otherFlags << ' ' << access << ' ' << share);
        const OtherProcess other(root() / "f", otherFlags);
        ASSERT_TRUE(other.opened());
        EXPECT_EQ(openError(u"\\f", access, OPEN_EXISTING, share), error);
        EXPECT_EQ(openError(u"\\f", Write, CREATE_ALWAYS), ERROR_SHARING_VIOLATION);
        EXPECT_EQ(hostRead(root() / "f"), "bytes");
    }
}

// Indexing programs open every new file for a moment.
TEST_F(FileTest, NewFileThatAnotherProcessReadsIsNotInUse)
{
    make(u"\\f", "bytes");
    const OtherProcess indexer(root() / "f", O_RDONLY);
    ASSERT_TRUE(indexer.opened());
    EXPECT_EQ(readAll(u"\\f"), "bytes");
}

TEST_F(FileTest, ThreadsThatWriteByOneHandleLoseNoBytes)
{
    const HANDLE written = open(u"\\written", Write, CREATE_NEW);
    std::atomic<int> wrong = 0;
    std::vector<std::jthread> threads;
    for (char letter = 'a'; letter < 'e'; ++letter) {
        threads.emplace_back([&, letter] {
            for (int i = 0; i < 300; ++i) {
                wrong += write(written, std::string(100, letter)) == 100 ? 0 : 1;
                if (i % 50 == 0)
                    wrong += HandOverFileBuffers(written) && FlushChangedVolumes() ? 0 : 1;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(CloseHandle(written));
    const std::string bytes = hostRead(root() / "written");
    ASSERT_EQ(bytes.size(), 120'000U);
    for (std::size_t offset = 0; offset < bytes.size(); offset += 100)
        ASSERT_EQ(bytes.substr(offset, 100), std::string(100, bytes[offset]));
}

// Each thread asks the host for a lease, to find out whether another process uses the file. But the host counts a
// descriptor of the other thread like one of another process. A lease that one thread holds for a moment also makes an
// opening by the other thread fail.
TEST_F(FileTest, ThreadsThatOpenOneFileAtTheSameTimeAreNotTakenForAnotherProcess)
{
    hostWrite(root() / "f", "content");
    takeNoted();
    for (const DWORD share : {0U, FILE_SHARE_READ}) {
        std::atomic<int> opened = 0;
        std::atomic<int> refused = 0;
        const auto openOften = [&] {
            for (int round = 0; round < 3000; ++round) {
                const DWORD error = openError(u"\\f", GENERIC_READ, OPEN_EXISTING, share);
                opened += error == 0 ? 1 : 0;
                refused += error == ERROR_SHARING_VIOLATION ? 1 : 0;
            }
        };
        std::thread other(openOften);
        openOften();
        other.join();
        EXPECT_EQ(opened + refused, 6000);
        // While a handle that doesn't share is open, further opens are refused.
        EXPECT_GE(opened, share == 0 ? 1 : 6000);
    }
    EXPECT_EQ(takeNoted(), std::set<std::u16string>{});
    const OtherProcess user(root() / "f", O_RDONLY);
    EXPECT_EQ(openError(u"\\f", GENERIC_READ, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
}

}  // namespace
