// containment_test.cpp - nothing leads out of the device, and what isn't a file or folder isn't there.
#include "file_fixture.h"

#include "file/name_space.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

using namespace platform::file;

namespace {

TEST_F(FileTest, LinkOutOfTheDeviceIsNotFollowed)
{
    hostWrite(outside() / "secret", "secret");
    std::filesystem::create_symlink(outside() / "secret", root() / "absolute");
    std::filesystem::create_symlink("../secret", root() / "relative");
    std::filesystem::create_symlink(outside(), root() / "folder");
    std::filesystem::create_symlink("nowhere", root() / "dangling");

    for (const std::u16string path : {u"\\absolute", u"\\relative", u"\\dangling"}) {
        EXPECT_EQ(openError(path, GENERIC_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(openError(path, GENERIC_WRITE, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(openError(path, GENERIC_WRITE, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
        EXPECT_EQ(openError(path, GENERIC_WRITE, CREATE_NEW), ERROR_ACCESS_DENIED);
        EXPECT_EQ(openError(path, GENERIC_WRITE, OPEN_ALWAYS), ERROR_ACCESS_DENIED);
        EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
        EXPECT_FALSE(DeleteFileW(path.c_str()));
        EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
        EXPECT_FALSE(CreateDirectoryW(path.c_str(), nullptr));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    }
    EXPECT_EQ(openError(u"\\folder\\secret", GENERIC_READ, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(openError(u"\\folder\\new", GENERIC_WRITE, CREATE_ALWAYS), ERROR_PATH_NOT_FOUND);
    EXPECT_FALSE(CreateDirectoryW(u"\\folder\\new", nullptr));
    EXPECT_FALSE(DeleteFileW(u"\\folder\\secret"));
    EXPECT_EQ(hostRead(outside() / "secret"), "secret");
    EXPECT_FALSE(std::filesystem::exists(outside() / "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(root() / "dangling"));
}

TEST_F(FileTest, CraftedNameDoesNotLeaveTheDevice)
{
    hostWrite(outside() / "secret", "secret");
    // U+F72F would be a slash if private-use characters were taken byte by byte.
    for (const std::u16string path : {u"\\..\\secret", u"..\\secret", u"\\a\\..\\..\\secret", u"\\../secret", u"\\.",
                                      u"\\\\secret", u"\\\xF72Fsecret", u"\\..\xF72Fsecret", u"\\\xF72E\xF72E\\secret",
                                      u"", u"\\a*", u"\\a?", u"\\a|b", u"\\<>", u"\\\"", u"\\\xD800"}) {
        EXPECT_EQ(openError(path, GENERIC_READ, OPEN_EXISTING), ERROR_INVALID_NAME);
        EXPECT_EQ(openError(path, GENERIC_WRITE, CREATE_ALWAYS), ERROR_INVALID_NAME);
        EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
        EXPECT_FALSE(CreateDirectoryW(path.c_str(), nullptr));
    }
    EXPECT_TRUE(std::filesystem::is_empty(root()));
    EXPECT_EQ(openError(std::u16string(260, u'a'), GENERIC_WRITE, CREATE_ALWAYS), ERROR_FILENAME_EXCED_RANGE);
}

TEST_F(FileTest, FifoNeitherHangsNorIsReplaced)
{
    ASSERT_EQ(::mkfifo((root() / "fifo").c_str(), 0666), 0);
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE}) {
        EXPECT_EQ(openError(u"\\fifo", access, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(openError(u"\\fifo", access, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
        EXPECT_EQ(openError(u"\\fifo", access, OPEN_ALWAYS), ERROR_ACCESS_DENIED);
    }
    EXPECT_FALSE(DeleteFileW(u"\\fifo"));
    WIN32_FIND_DATAW found = {};
    EXPECT_EQ(FindFirstFileW(u"\\*", &found), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(std::filesystem::is_fifo(root() / "fifo"));
}

TEST_F(FileTest, WriterDoesNotDisturbTheReaderOfAFifo)
{
    ASSERT_EQ(::mkfifo((root() / "fifo").c_str(), 0666), 0);
    const int reader = ::open((root() / "fifo").c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(openError(u"\\fifo", GENERIC_WRITE, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
    const int writer = ::open((root() / "fifo").c_str(), O_WRONLY | O_NONBLOCK);
    ASSERT_EQ(::write(writer, "x", 1), 1);
    char byte = 0;
    EXPECT_EQ(::read(reader, &byte, 1), 1);
    ::close(writer);
    ::close(reader);
}

TEST_F(FileTest, EveryHostNameIsReachedUnderItsOwnDeviceName)
{
    const std::set<std::string> names = {"plain",       "caf\xC3\xA9", "bad\xFF\xFE",
                                         "back\\slash", "star*?",      "\xF0\x9F\x93\x81"};
    for (const std::string& name : names)
        hostWrite(root() / name, name);
    std::set<std::string> seen;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(u"\\*", &found);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    do
        seen.insert(readAll(u"\\" + std::u16string(found.cFileName)));
    while (FindNextFileW(search, &found));
    EXPECT_TRUE(FindClose(search));
    EXPECT_EQ(seen, names);
}

TEST_F(FileTest, NamesThatDifferByCaseStayTwoFiles)
{
    hostWrite(root() / "Notes", "upper");
    EXPECT_EQ(openError(u"\\notes", GENERIC_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    const HANDLE file = open(u"\\notes", GENERIC_WRITE, CREATE_NEW);
    EXPECT_EQ(write(file, "lower"), 5U);
    EXPECT_TRUE(CloseHandle(file));
    EXPECT_EQ(hostRead(root() / "Notes"), "upper");
    EXPECT_EQ(hostRead(root() / "notes"), "lower");
}

TEST_F(FileTest, MountThatCannotServeIsRefused)
{
    const auto folder = [&] { return ::open(root().c_str(), O_RDONLY | O_DIRECTORY); };
    EXPECT_FALSE(addMount({u"", folder(), false, std::nullopt}));  // there is a root already
    EXPECT_FALSE(addMount({u"a\\b", folder(), false, std::nullopt}));
    EXPECT_FALSE(addMount({u"..", folder(), false, std::nullopt}));
    EXPECT_FALSE(addMount({u"Closed", -1, false, std::nullopt}));
    addFolder(u"Card", true);
    EXPECT_FALSE(addMount({u"Card", folder(), false, std::nullopt}));
}

}  // namespace
