// entries_test.cpp - attributes of entries, moved files, and the identity of a file.
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

    using namespace std::string_literals;
    const std::pair<std::string, DWORD> cases[] = {
        {"0x26", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE},
        {"0x22\0"s, FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE},
        {"0x2040", FILE_ATTRIBUTE_INROM | FILE_ATTRIBUTE_ROMMODULE},
        {"0x110", FILE_ATTRIBUTE_NORMAL},  // the attribute turns a file into neither a folder nor a card
        {"22", FILE_ATTRIBUTE_NORMAL},
        {"0x", FILE_ATTRIBUTE_NORMAL},
        {"0x2G", FILE_ATTRIBUTE_NORMAL},
        {"0x22 ", FILE_ATTRIBUTE_NORMAL},
        {"0x100000020", FILE_ATTRIBUTE_NORMAL},
        {"\0\0\3\0\3\0\0\0\x22\0\0\0"s, FILE_ATTRIBUTE_NORMAL},
        {std::string(500, '0'), FILE_ATTRIBUTE_NORMAL},
    };
    for (const auto& [text, attributes] : cases) {
        hostMark(root() / "plain", text);
        EXPECT_EQ(GetFileAttributesW(u"\\plain"), attributes) << text;
    }
}

TEST_F(FileTest, OnlyTheFolderOfACardHasTheAttributeOfACard)
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
    EXPECT_EQ(errorOf(GetFileAttributesW(u"\\Card\\f\\") != INVALID_FILE_ATTRIBUTES), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(errorOf(GetFileAttributesW(u"\\Card\\\\") != INVALID_FILE_ATTRIBUTES), ERROR_INVALID_NAME);
}

DWORD moved(const std::u16string& from, const std::u16string& to, bool replace)
{
    return platform::file::moveFile(from, to, replace);
}

TEST_F(FileTest, MoveKeepsTheContentAndReplacesOnlyAFileThatMayBeReplaced)
{
    const auto card = addFolder(u"Card", true, 1000);
    const auto used = [] { return platform::file::usedBytes(u"Card").value_or(0); };
    make(u"\\Card\\new", "new");
    make(u"\\Card\\old", "older");
    EXPECT_TRUE(CreateDirectoryW(u"\\Card\\d", nullptr));
    std::filesystem::create_symlink("old", card / "link");
    EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\old", false), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\d", true), ERROR_ACCESS_DENIED);
    EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\no\\f", true), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(moved(u"\\Card\\new", u"\\new", true), ERROR_NOT_SAME_DEVICE);
    EXPECT_NE(moved(u"\\Card\\new", u"\\Card\\link", true), 0U);
    EXPECT_EQ(moved(u"\\Card\\d", u"\\Card\\e", true), ERROR_ACCESS_DENIED);
    EXPECT_EQ(moved(u"\\Card\\none", u"\\Card\\old", true), ERROR_FILE_NOT_FOUND);
    for (const std::u16string name : {u"\\Card\\new", u"\\Card\\old"}) {
        const HANDLE held = open(name, GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\old", true), ERROR_SHARING_VIOLATION);
        EXPECT_TRUE(CloseHandle(held));
    }
    ::chmod((card / "old").c_str(), 0444);
    EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\old", true), ERROR_ACCESS_DENIED) << "a read-only file";
    EXPECT_EQ(readAll(u"\\Card\\old"), "older");
    EXPECT_TRUE(std::filesystem::is_symlink(card / "link"));
    EXPECT_EQ(used(), 8U);
    ::chmod((card / "old").c_str(), 0600);
    EXPECT_EQ(moved(u"\\Card\\new", u"\\Card\\old", true), 0U);
    EXPECT_EQ(std::filesystem::status(card / "old").permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(moved(u"\\Card\\old", u"\\Card\\d\\f", false), 0U);
    EXPECT_EQ(readAll(u"\\Card\\d\\f"), "new");
    EXPECT_EQ(openError(u"\\Card\\old", GENERIC_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(used(), 3U);
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
        return std::pair(found.dwOID, information.nFileIndexLow);
    };
    hostWrite(root() / "f", "one");
    const auto first = identity();
    hostWrite(root() / "f", "changed");
    EXPECT_EQ(identity(), first);
    hostWrite(root() / "new", "two");
    std::filesystem::rename(root() / "new", root() / "f");
    EXPECT_NE(identity().first, first.first);
    EXPECT_NE(identity().second, first.second);
}

}  // namespace
