// opening_test.cpp - the ways to open and make a file, their errors, and what they leave unchanged.
#include "file_fixture.h"

#include <sys/stat.h>

namespace {

TEST_F(FileTest, EachCreationReportsWhetherTheFileExisted)
{
    struct Case {
        DWORD creation;
        bool makes;
        DWORD lastErrorIfMissing;
        bool opens;
        DWORD lastErrorIfExisting;
        const char* contentAfter;
    };
    const Case cases[] = {
        {CREATE_NEW, true, 0, false, ERROR_FILE_EXISTS, "old"},
        {CREATE_ALWAYS, true, 0, true, ERROR_ALREADY_EXISTS, ""},
        {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, true, 0, "old"},
        {OPEN_ALWAYS, true, 0, true, ERROR_ALREADY_EXISTS, "old"},
        {TRUNCATE_EXISTING, false, ERROR_FILE_NOT_FOUND, true, 0, ""},
        {0, false, ERROR_INVALID_PARAMETER, false, ERROR_INVALID_PARAMETER, "old"},
        {6, false, ERROR_INVALID_PARAMETER, false, ERROR_INVALID_PARAMETER, "old"},
    };
    const auto expectOpen = [](DWORD creation, bool succeeds, DWORD lastError) {
        SetLastError(77);
        const HANDLE file = open(u"\\f", GENERIC_WRITE, creation);
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, succeeds);
        EXPECT_EQ(GetLastError(), lastError);
        CloseHandle(file);
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.creation);
        std::filesystem::remove(root() / "f");
        expectOpen(each.creation, each.makes, each.lastErrorIfMissing);
        EXPECT_EQ(std::filesystem::exists(root() / "f"), each.makes);
        hostWrite(root() / "f", "old");
        expectOpen(each.creation, each.opens, each.lastErrorIfExisting);
        EXPECT_EQ(hostRead(root() / "f"), each.contentAfter);
    }
}

TEST_F(FileTest, MissingFolderAndMissingFileHaveDifferentErrors)
{
    hostWrite(root() / "f", "");
    for (const DWORD creation : {CREATE_NEW, CREATE_ALWAYS, OPEN_EXISTING, OPEN_ALWAYS, TRUNCATE_EXISTING})
        EXPECT_EQ(openError(u"\\no\\f", GENERIC_WRITE, creation), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(errorOf(DeleteFileW(u"\\no\\f")), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(errorOf(DeleteFileW(u"\\missing")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(openError(u"\\f\\below", GENERIC_READ, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(openError(u"\\missing", GENERIC_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(openError(u"f", GENERIC_READ, OPEN_EXISTING), 0U);  // relative to the root
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
        EXPECT_EQ(errorOf(DeleteFileW(path.c_str())), ERROR_ACCESS_DENIED);
    }
}

TEST_F(FileTest, OnlyFailuresThatMatterInTheEndAreNoted)
{
    using Noted = std::set<std::u16string>;
    hostWrite(root() / "module", "");
    hostMark(root() / "module", "0x2000");
    (void)takeNoted();
    EXPECT_EQ(openError(u"\\module", GENERIC_READ, OPEN_EXISTING), ERROR_ACCESS_DENIED);
    EXPECT_EQ(openError(u"\\none\\f", GENERIC_READ, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(takeNoted(), Noted());
    EXPECT_EQ(openError(u"\\late\\f", GENERIC_WRITE, CREATE_ALWAYS), ERROR_PATH_NOT_FOUND);
    EXPECT_TRUE(CreateDirectoryW(u"\\late", nullptr));
    EXPECT_EQ(openError(u"\\late\\f", GENERIC_WRITE, CREATE_ALWAYS), 0U);
    EXPECT_EQ(takeNoted(), Noted()) << "the folder was made later";
    EXPECT_EQ(openError(u"\\later\\f", GENERIC_WRITE, CREATE_ALWAYS), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(openError(u"\\module", GENERIC_WRITE, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
    EXPECT_EQ(takeNoted(), (Noted{u"write \\later\\f", u"write \\module"}));
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
        EXPECT_EQ(errorOf(DeleteFileW(path.c_str())), ERROR_ACCESS_DENIED);
        EXPECT_EQ(openError(path, GENERIC_READ, OPEN_EXISTING), path == u"\\module" ? ERROR_ACCESS_DENIED : 0U);
        EXPECT_EQ(hostRead(root() / std::filesystem::path(path.substr(1))), "bytes");
    }
}

TEST_F(FileTest, ReplacedFileKeepsItsOtherNamesOnTheHost)
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
    DWORD count = 77;
    char byte = 0;
    const auto expectRefused = [](BOOL result) { EXPECT_EQ(errorOf(result), ERROR_INVALID_HANDLE); };
    expectRefused(CloseHandle(search));
    expectRefused(FindClose(file));
    expectRefused(FindNextFileW(file, &found));
    expectRefused(ReadFile(search, &byte, 1, &count, nullptr));
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(FindClose(search));
    expectRefused(FindClose(search));
    EXPECT_EQ(errorOf(WriteFile(file, &byte, 1, &count, nullptr)), ERROR_ACCESS_DENIED) << "the handle may only read";
    EXPECT_EQ(errorOf(FlushFileBuffers(file)), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(CloseHandle(file));
    expectRefused(WriteFile(file, &byte, 1, &count, nullptr));
    expectRefused(FlushFileBuffers(file));
    expectRefused(SetFilePointer(file, 0, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER);
}

}  // namespace
