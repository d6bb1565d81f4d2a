// containment_test.cpp - no path leads out of the device, and only files and folders are visible in it.
#include "file_fixture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform::file;

namespace {

TEST_F(FileTest, LinksOutOfTheDeviceAreNotFollowed)
{
    hostWrite(outside() / "secret", "secret");
    std::filesystem::create_symlink(outside() / "secret", root() / "absolute");
    std::filesystem::create_symlink("../secret", root() / "relative");
    std::filesystem::create_symlink(outside(), root() / "folder");
    std::filesystem::create_symlink("nowhere", root() / "dangling");

    for (const WCHAR* path : {u"\\absolute", u"\\relative", u"\\dangling"}) {
        for (const DWORD access : {GENERIC_READ, GENERIC_WRITE})
            EXPECT_EQ(openError(path, access, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
        for (const DWORD creation : {CREATE_ALWAYS, CREATE_NEW, OPEN_ALWAYS})
            EXPECT_EQ(openError(path, GENERIC_WRITE, creation), ERROR_ACCESS_DENIED);
        EXPECT_EQ(GetFileAttributesW(path), INVALID_FILE_ATTRIBUTES);
        EXPECT_EQ(errorOf(DeleteFileW(path)), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(errorOf(CreateDirectoryW(path, nullptr)), ERROR_ACCESS_DENIED);
    }
    EXPECT_EQ(openError(u"\\folder\\secret", GENERIC_READ, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(openError(u"\\folder\\new", GENERIC_WRITE, CREATE_ALWAYS), ERROR_PATH_NOT_FOUND);
    EXPECT_FALSE(CreateDirectoryW(u"\\folder\\new", nullptr));
    EXPECT_FALSE(DeleteFileW(u"\\folder\\secret"));
    EXPECT_EQ(hostRead(outside() / "secret"), "secret");
    EXPECT_FALSE(std::filesystem::exists(outside() / "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(root() / "dangling"));
}

TEST_F(FileTest, CraftedNamesDoNotLeaveTheDevice)
{
    hostWrite(outside() / "secret", "secret");
    // U+F72F would be a slash if each private-use character became the byte in its code.
    for (const WCHAR* path : {u"\\..\\secret", u"..\\secret", u"\\a\\..\\..\\secret", u"\\../secret", u"\\.",
                              u"\\\\secret", u"\\\xF72Fsecret", u"\\..\xF72Fsecret", u"\\\xF72E\xF72E\\secret", u"",
                              u"\\a*", u"\\a?", u"\\a|b", u"\\<>", u"\\\"", u"\\\xD800"}) {
        EXPECT_EQ(openError(path, GENERIC_READ, OPEN_EXISTING), ERROR_INVALID_NAME);
        EXPECT_EQ(openError(path, GENERIC_WRITE, CREATE_ALWAYS), ERROR_INVALID_NAME);
        EXPECT_EQ(GetFileAttributesW(path), INVALID_FILE_ATTRIBUTES);
        EXPECT_FALSE(CreateDirectoryW(path, nullptr));
    }
    EXPECT_TRUE(std::filesystem::is_empty(root()));
    EXPECT_EQ(openError(std::u16string(260, u'a'), GENERIC_WRITE, CREATE_ALWAYS), ERROR_FILENAME_EXCED_RANGE);
}

TEST_F(FileTest, FifoIsNeitherOpenedNorReplaced)
{
    const auto fifo = root() / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0666), 0);
    const int reader = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE}) {
        EXPECT_EQ(openError(u"\\fifo", access, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(openError(u"\\fifo", access, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
        EXPECT_EQ(openError(u"\\fifo", access, OPEN_ALWAYS), ERROR_ACCESS_DENIED);
    }
    EXPECT_FALSE(DeleteFileW(u"\\fifo"));
    EXPECT_EQ(list(u"\\*"), std::set<std::u16string>());
    const int writer = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK);
    ASSERT_EQ(::write(writer, "x", 1), 1);
    char byte = 0;
    EXPECT_EQ(::read(reader, &byte, 1), 1) << "the reader of the host isn't disturbed";
    ::close(writer);
    ::close(reader);
}

TEST_F(FileTest, MountThatCannotServeIsRefused)
{
    const auto folder = [&] { return ::open(root().c_str(), O_RDONLY | O_DIRECTORY); };
    addFolder(u"Card", true);
    for (const WCHAR* name : {u"", u"Card", u"a\\b", u".."})
        EXPECT_FALSE(addMount({name, folder(), false, std::nullopt}));
    EXPECT_FALSE(addMount({u"Closed", -1, false, std::nullopt}));
}

}  // namespace
