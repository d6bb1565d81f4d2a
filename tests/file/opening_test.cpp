// opening_test.cpp - the ways to open and make a file, their errors, and what they leave as it was.
#include "file_fixture.h"
#include "file_trouble.h"

#include <sys/stat.h>

namespace {

TEST_F(FileTest, EachCreationTellsWhetherTheFileExisted)
{
    struct Case {
        DWORD creation;
        DWORD errorWhenMissing;
        DWORD lastErrorWhenMade;
        DWORD errorWhenThere;
        DWORD lastErrorWhenThere;
        const char* contentAfter;
    };
    const Case cases[] = {
        {CREATE_NEW, 0, 0, ERROR_FILE_EXISTS, 0, "old"},
        {CREATE_ALWAYS, 0, 0, 0, ERROR_ALREADY_EXISTS, ""},
        {OPEN_EXISTING, ERROR_FILE_NOT_FOUND, 0, 0, 0, "old"},
        {OPEN_ALWAYS, 0, 0, 0, ERROR_ALREADY_EXISTS, "old"},
        {TRUNCATE_EXISTING, ERROR_FILE_NOT_FOUND, 0, 0, 0, ""},
        {0, ERROR_INVALID_PARAMETER, 0, ERROR_INVALID_PARAMETER, 0, "old"},
        {6, ERROR_INVALID_PARAMETER, 0, ERROR_INVALID_PARAMETER, 0, "old"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.creation);
        std::filesystem::remove(root() / "f");
        SetLastError(77);
        HANDLE file = open(u"\\f", GENERIC_WRITE, each.creation);
        EXPECT_EQ(file == INVALID_HANDLE_VALUE, each.errorWhenMissing != 0);
        EXPECT_EQ(GetLastError(), each.errorWhenMissing + each.lastErrorWhenMade);
        CloseHandle(file);
        EXPECT_EQ(std::filesystem::exists(root() / "f"), each.errorWhenMissing == 0);

        hostWrite(root() / "f", "old");
        SetLastError(77);
        file = open(u"\\f", GENERIC_WRITE, each.creation);
        EXPECT_EQ(file == INVALID_HANDLE_VALUE, each.errorWhenThere != 0);
        EXPECT_EQ(GetLastError(), each.errorWhenThere + each.lastErrorWhenThere);
        CloseHandle(file);
        EXPECT_EQ(hostRead(root() / "f"), each.contentAfter);
    }
}

TEST_F(FileTest, MissingFolderAndMissingFileHaveTheirOwnErrors)
{
    hostWrite(root() / "f", "");
    for (const DWORD creation : {CREATE_NEW, CREATE_ALWAYS, OPEN_EXISTING, OPEN_ALWAYS, TRUNCATE_EXISTING})
        EXPECT_EQ(openError(u"\\no\\f", GENERIC_WRITE, creation), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(openError(u"\\f\\below", GENERIC_READ, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(openError(u"\\missing", GENERIC_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(openError(u"f", GENERIC_READ, OPEN_EXISTING), 0U);  // no current folder: from the root
}

TEST_F(FileTest, FolderIsNeitherOpenedNorReplaced)
{
    std::filesystem::create_directory(root() / "d");
    addFolder(u"Card", true);
    for (const std::u16string path : {u"\\d", u"\\Card", u"\\"}) {
        EXPECT_EQ(openError(path, GENERIC_READ, OPEN_EXISTING), ERROR_ACCESS_DENIED);
        EXPECT_EQ(openError(path, GENERIC_WRITE, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
        EXPECT_EQ(openError(path, GENERIC_WRITE, CREATE_NEW), ERROR_FILE_EXISTS);
        EXPECT_EQ(openError(path, 0, OPEN_EXISTING), ERROR_ACCESS_DENIED);
        EXPECT_FALSE(DeleteFileW(path.c_str()));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    }
}

// The administrator may write anything: the rules hold for him all the same.
std::size_t troubles(platform::kernel::Trouble kind)
{
    return platform::kernel::troublesOf(kind, platform::kernel::Troubled::File).size();
}

TEST_F(FileTest, OnlyWhatIsMissingInTheEndIsTroubleToTell)
{
    using platform::kernel::Trouble;
    hostWrite(root() / "module", "");
    hostMark(root() / "module", "0x2000");
    const std::size_t unread = troubles(Trouble::Reading);
    EXPECT_EQ(openError(u"\\module", GENERIC_READ, OPEN_EXISTING), ERROR_ACCESS_DENIED);
    EXPECT_EQ(openError(u"\\none\\f", GENERIC_READ, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(troubles(Trouble::Reading), unread);

    const std::size_t unwritten = troubles(Trouble::Writing);
    EXPECT_EQ(openError(u"\\late\\f", GENERIC_WRITE, CREATE_ALWAYS), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(troubles(Trouble::Writing), unwritten + 1);
    EXPECT_TRUE(CreateDirectoryW(u"\\late", nullptr));
    EXPECT_EQ(openError(u"\\late\\f", GENERIC_WRITE, CREATE_ALWAYS), 0U);
    EXPECT_EQ(troubles(Trouble::Writing), unwritten);
    EXPECT_EQ(openError(u"\\module", GENERIC_WRITE, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
    EXPECT_EQ(troubles(Trouble::Writing), unwritten + 1);
}

TEST_F(FileTest, ReadOnlyAndRomFilesAreNeverWrittenOrDeleted)
{
    hostWrite(root() / "readonly", "bytes");
    ::chmod((root() / "readonly").c_str(), 0444);
    hostWrite(root() / "rom", "bytes");
    hostMark(root() / "rom", "0x40");
    hostWrite(root() / "module", "bytes");
    hostMark(root() / "module", "0x2040");
    for (const std::u16string path : {u"\\readonly", u"\\rom", u"\\module"}) {
        for (const DWORD creation : {CREATE_ALWAYS, OPEN_EXISTING, OPEN_ALWAYS, TRUNCATE_EXISTING})
            EXPECT_EQ(openError(path, GENERIC_WRITE, creation), ERROR_ACCESS_DENIED);
        EXPECT_EQ(openError(path, GENERIC_READ, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
        EXPECT_FALSE(DeleteFileW(path.c_str()));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        EXPECT_EQ(openError(path, GENERIC_READ, OPEN_EXISTING), path == u"\\module" ? ERROR_ACCESS_DENIED : 0U);
        EXPECT_EQ(hostRead(root() / std::filesystem::path(path.substr(1))), "bytes");
    }
}

TEST_F(FileTest, ReplacedFileKeepsItsPlaceOnTheHost)
{
    hostWrite(root() / "f", "old bytes");
    std::filesystem::create_hard_link(root() / "f", root() / "other name");
    const HANDLE file = open(u"\\f", GENERIC_WRITE, CREATE_ALWAYS);
    EXPECT_EQ(write(file, "new"), 3U);
    CloseHandle(file);
    EXPECT_EQ(hostRead(root() / "other name"), "new");
}

TEST_F(FileTest, CallsOnAHandleOfTheWrongKindFail)
{
    hostWrite(root() / "f", "x");
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(u"\\*", &found);
    const HANDLE file = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    const auto refused = [](BOOL result) { return result == FALSE && GetLastError() == ERROR_INVALID_HANDLE; };
    DWORD count = 77;
    char byte = 0;
    EXPECT_TRUE(refused(CloseHandle(search)));
    EXPECT_TRUE(refused(FindClose(file)));
    EXPECT_TRUE(refused(FindNextFileW(file, &found)));
    EXPECT_TRUE(refused(ReadFile(search, &byte, 1, &count, nullptr)));
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(FindClose(search));
    EXPECT_TRUE(refused(FindClose(search)));
    EXPECT_TRUE(CloseHandle(file));
    EXPECT_TRUE(refused(WriteFile(file, &byte, 1, &count, nullptr)));
    EXPECT_TRUE(refused(FlushFileBuffers(file)));
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    // Without the access that a call needs.
    const HANDLE reader = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    EXPECT_FALSE(WriteFile(reader, &byte, 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(FlushFileBuffers(reader));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    CloseHandle(reader);
}

}  // namespace
