// entries_test.cpp - attributes, folders made, files moved and deleted.
#include "file/file_move.h"
#include "file_fixture.h"

#include <sys/stat.h>

namespace {

TEST_F(FileTest, AttributesComeFromModeNameAndStoredBits)
{
    hostWrite(root() / "plain", "");
    EXPECT_EQ(GetFileAttributesW(u"\\plain"), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(GetFileAttributesW(u"plain"), FILE_ATTRIBUTE_NORMAL);
    hostWrite(root() / ".point", "");
    EXPECT_EQ(GetFileAttributesW(u"\\.point"), FILE_ATTRIBUTE_HIDDEN);
    ::chmod((root() / ".point").c_str(), 0555);
    EXPECT_EQ(GetFileAttributesW(u"\\.point"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY);

    struct Stored {
        std::string text;
        DWORD attributes;
    };
    using namespace std::string_literals;
    const Stored cases[] = {
        {"0x26", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE},
        {"0x22\0"s, FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE},
        {"0x2040", FILE_ATTRIBUTE_INROM | FILE_ATTRIBUTE_ROMMODULE},
        {"0x110", FILE_ATTRIBUTE_NORMAL},  // neither a folder nor a card by saying so
        {"22", FILE_ATTRIBUTE_NORMAL},
        {"0x", FILE_ATTRIBUTE_NORMAL},
        {"0x2G", FILE_ATTRIBUTE_NORMAL},
        {"0x22 ", FILE_ATTRIBUTE_NORMAL},
        {"0x100000020", FILE_ATTRIBUTE_NORMAL},
        {"\0\0\3\0\3\0\0\0\x22\0\0\0"s, FILE_ATTRIBUTE_NORMAL},
        {std::string(500, '0'), FILE_ATTRIBUTE_NORMAL},
    };
    for (const Stored& each : cases) {
        hostMark(root() / "plain", each.text);
        EXPECT_EQ(GetFileAttributesW(u"\\plain"), each.attributes) << each.text;
    }
}

TEST_F(FileTest, OnlyTheCardsOwnFolderLooksLikeACard)
{
    const auto card = addFolder(u"Card", true);
    addFolder(u"Folder", false);
    std::filesystem::create_directories(card / "d" / "e");
    hostWrite(card / "f", "");
    constexpr DWORD Folder = FILE_ATTRIBUTE_DIRECTORY;
    for (const std::u16string end : {u"", u"\\"}) {
        EXPECT_EQ(GetFileAttributesW((u"\\Card" + end).c_str()), Folder | FILE_ATTRIBUTE_TEMPORARY);
        EXPECT_EQ(GetFileAttributesW((u"\\Card\\d" + end).c_str()), Folder);
        EXPECT_EQ(GetFileAttributesW((u"\\Card\\d\\e" + end).c_str()), Folder);
        EXPECT_EQ(GetFileAttributesW((u"\\Folder" + end).c_str()), Folder);
    }
    EXPECT_EQ(GetFileAttributesW(u"\\Card\\f"), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(GetFileAttributesW(u"\\"), Folder);
    const auto fails = [](const char16_t* path, DWORD error) {
        return GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES && GetLastError() == error;
    };
    EXPECT_TRUE(fails(u"\\Card\\f\\", ERROR_PATH_NOT_FOUND));
    EXPECT_TRUE(fails(u"\\Card\\missing", ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(fails(u"\\Card\\d\\missing", ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(fails(u"\\missing\\missing", ERROR_PATH_NOT_FOUND));
    EXPECT_TRUE(fails(u"\\Card\\\\", ERROR_INVALID_NAME));
}

TEST_F(FileTest, FolderIsMadeOnceAndOnlyInAFolder)
{
    const auto fails = [](const char16_t* path, DWORD error) {
        return !CreateDirectoryW(path, nullptr) && GetLastError() == error;
    };
    addFolder(u"Card", true);
    hostWrite(root() / "file", "");
    EXPECT_TRUE(CreateDirectoryW(u"\\d", nullptr));
    EXPECT_TRUE(CreateDirectoryW(u"\\d\\e", nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(root() / "d" / "e"));
    EXPECT_TRUE(fails(u"\\d\\e", ERROR_ALREADY_EXISTS));
    EXPECT_TRUE(fails(u"\\file", ERROR_ALREADY_EXISTS));
    EXPECT_TRUE(fails(u"\\Card", ERROR_ALREADY_EXISTS));
    EXPECT_TRUE(fails(u"\\", ERROR_ALREADY_EXISTS));
    EXPECT_TRUE(fails(u"\\missing\\d", ERROR_PATH_NOT_FOUND));
    EXPECT_TRUE(fails(u"\\file\\d", ERROR_PATH_NOT_FOUND));
}

TEST_F(FileTest, DeletionTakesTheFileAndNothingElse)
{
    std::filesystem::create_directory(root() / "d");
    hostWrite(root() / "d" / "f", "x");
    hostWrite(root() / "d" / "g", "x");
    EXPECT_TRUE(DeleteFileW(u"\\d\\f"));
    EXPECT_FALSE(std::filesystem::exists(root() / "d" / "f"));
    EXPECT_TRUE(std::filesystem::exists(root() / "d" / "g"));
    EXPECT_FALSE(DeleteFileW(u"\\d\\f"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(DeleteFileW(u"\\no\\f"));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
}

DWORD moved(const std::u16string& from, const std::u16string& to, bool replace)
{
    return platform::file::moveFile(from, to, replace);
}

TEST_F(FileTest, MoveTakesTheFileWholeAndReplacesOnlyWhatMayGo)
{
    const auto card = addFolder(u"Card", true, 1000);
    const auto used = [] { return platform::file::usedBytes(u"Card").value_or(0); };
    const auto put = [](const std::u16string& path, const std::string& bytes) {
        const HANDLE file = open(path, GENERIC_WRITE, CREATE_NEW);
        EXPECT_EQ(write(file, bytes), bytes.size());
        EXPECT_TRUE(CloseHandle(file));
    };
    put(u"\\Card\\new", "new");
    put(u"\\Card\\old", "older");
    EXPECT_TRUE(CreateDirectoryW(u"\\Card\\d", nullptr));
    EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\old", false), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\d", true), ERROR_ACCESS_DENIED);
    EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\no\\f", true), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(moved(u"\\Card\\new", u"\\new", true), ERROR_NOT_SAME_DEVICE);
    EXPECT_EQ(moved(u"\\Card\\d", u"\\Card\\e", true), ERROR_ACCESS_DENIED);
    EXPECT_EQ(moved(u"\\Card\\none", u"\\Card\\old", true), ERROR_FILE_NOT_FOUND);
    for (const std::u16string name : {u"\\Card\\new", u"\\Card\\old"}) {
        const HANDLE held = open(name, GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\old", true), ERROR_SHARING_VIOLATION);
        EXPECT_TRUE(CloseHandle(held));
    }
    EXPECT_EQ(readAll(u"\\Card\\old"), "older");
    EXPECT_EQ(used(), 8U);
    ::chmod((card / "old").c_str(), 0600);
    EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\old", true), 0U);
    EXPECT_EQ(std::filesystem::status(card / "old").permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(moved(u"\\Card\\old", u"\\Card\\d\\f", false), 0U);
    EXPECT_EQ(readAll(u"\\Card\\d\\f"), "new");
    EXPECT_EQ(openError(u"\\Card\\old", GENERIC_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(used(), 3U);
}

TEST_F(FileTest, MoveReplacesNeitherAReadOnlyFileNorALink)
{
    hostWrite(root() / "new", "new");
    hostWrite(root() / "kept", "kept");
    ::chmod((root() / "kept").c_str(), 0444);
    std::filesystem::create_symlink("kept", root() / "link");
    EXPECT_EQ(moved(u"\\new", u"\\kept", true), ERROR_ACCESS_DENIED);
    EXPECT_NE(moved(u"\\new", u"\\link", true), 0U);
    EXPECT_EQ(hostRead(root() / "kept"), "kept");
    EXPECT_TRUE(std::filesystem::is_symlink(root() / "link"));
}

TEST_F(FileTest, NewFileAtAnOldPathHasAnotherIdentity)
{
    const auto identity = [] {
        WIN32_FIND_DATAW found = {};
        EXPECT_TRUE(FindClose(FindFirstFileW(u"\\f", &found)));
        const HANDLE file = open(u"\\f", 0, OPEN_EXISTING);
        BY_HANDLE_FILE_INFORMATION information = {};
        EXPECT_TRUE(GetFileInformationByHandle(file, &information));
        EXPECT_EQ(information.dwOID, found.dwOID);
        CloseHandle(file);
        return found.dwOID;
    };
    hostWrite(root() / "f", "one");
    const DWORD first = identity();
    hostWrite(root() / "f", "changed");
    EXPECT_EQ(identity(), first);
    hostWrite(root() / "new", "two");
    std::filesystem::rename(root() / "new", root() / "f");
    EXPECT_NE(identity(), first);
}

TEST_F(FileTest, OnlyAnEmptyFolderOfTheDeviceIsRemoved)
{
    addFolder(u"Card", true);
    std::filesystem::create_directories(root() / "full" / "empty");
    hostWrite(root() / "file", "");
    std::filesystem::create_directory_symlink(root() / "full", root() / "link");
    const std::pair<const WCHAR*, DWORD> refused[] = {
        {u"\\full", ERROR_DIR_NOT_EMPTY},  {u"\\file", ERROR_PATH_NOT_FOUND}, {u"\\none", ERROR_FILE_NOT_FOUND},
        {u"\\link", ERROR_FILE_NOT_FOUND}, {u"\\Card", ERROR_ACCESS_DENIED},  {u"\\", ERROR_ACCESS_DENIED}};
    for (const auto& [path, error] : refused) {
        EXPECT_FALSE(RemoveDirectoryW(path));
        EXPECT_EQ(GetLastError(), error);
    }
    EXPECT_TRUE(RemoveDirectoryW(u"\\full\\empty"));
    EXPECT_TRUE(RemoveDirectoryW(u"\\full"));
    EXPECT_FALSE(std::filesystem::exists(root() / "full"));
}

}  // namespace
