// search_test.cpp - listings.
#include "file_fixture.h"

#include <cerrno>

namespace {

using Names = std::set<std::u16string>;

TEST_F(FileTest, CardIsListedOnceAndHidesAnEntryOfItsName)
{
    const auto card = addFolder(u"Card", true);
    hostWrite(root() / "Card" / "hidden", "");
    hostWrite(root() / "file", "");
    hostWrite(card / "shown", "");
    std::filesystem::create_directory(card / "Card");
    EXPECT_EQ(list(u"\\*"), (Names{u"Card", u"file"}));
    EXPECT_EQ(list(u"*"), (Names{u"Card", u"file"}));
    EXPECT_EQ(list(u"\\Card\\*"), (Names{u"Card", u"shown"}));
    EXPECT_EQ(list(u"\\c*"), (Names{u"Card"}));
    WIN32_FIND_DATAW found = {};
    EXPECT_TRUE(FindClose(FindFirstFileW(u"\\card", &found)));
    EXPECT_EQ(found.dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY);
    EXPECT_EQ(found.nFileSizeLow, 0U);
    EXPECT_TRUE(FindClose(FindFirstFileW(u"\\Card\\card", &found)));
    EXPECT_EQ(found.dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY);
}

TEST_F(FileTest, SearchThatFindsNothingReportsWhy)
{
    std::filesystem::create_directory(root() / "empty");
    hostWrite(root() / "file", "");
    const std::pair<std::u16string, DWORD> cases[] = {
        {u"\\empty\\*", ERROR_FILE_NOT_FOUND},
        {u"\\*.zip", ERROR_FILE_NOT_FOUND},
        {u"\\missing\\*", ERROR_PATH_NOT_FOUND},
        {u"\\file\\*", ERROR_PATH_NOT_FOUND},
        {u"\\empty\\", ERROR_INVALID_NAME},
        {u"\\..", ERROR_INVALID_NAME},
        {u"\\..\\*", ERROR_INVALID_NAME},
        {u"\\e*\\*", ERROR_INVALID_NAME},
        {u"\\" + std::u16string(259, u'*'), ERROR_FILENAME_EXCED_RANGE},
    };
    WIN32_FIND_DATAW found = {};
    for (const auto& [pattern, error] : cases)
        EXPECT_EQ(errorOf(FindFirstFileW(pattern.c_str(), &found) != INVALID_HANDLE_VALUE), error);
}

TEST_F(FileTest, SearchForFoldersLeavesOutFilesAndMakesNoHostCallsForThem)
{
    const auto foldersIn = [](const std::u16string& pattern) {
        Names names;
        WIN32_FIND_DATAW found = {};
        const HANDLE search =
            FindFirstFileExW(pattern.c_str(), FindExInfoStandard, &found, FindExSearchLimitToDirectories, nullptr, 0);
        for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &found))
            names.insert(found.cFileName);
        FindClose(search);
        return names;
    };
    addFolder(u"Card", true);
    std::filesystem::create_directory(root() / "d");
    const auto callsOfAll = [&] { return hostCallsOf([&] { EXPECT_EQ(foldersIn(u"\\*"), (Names{u"Card", u"d"})); }); };
    const auto calls = callsOfAll();
    for (int i = 0; i < 50; ++i)
        hostWrite(root() / std::to_string(i), "");
    EXPECT_EQ(callsOfAll(), calls);
    EXPECT_EQ(foldersIn(u"\\4*"), Names{});
    WIN32_FIND_DATAW found = {};
    EXPECT_EQ(FindFirstFileExW(u"\\*", FindExInfoStandard, &found, FindExSearchNameMatch, nullptr, 1),
              INVALID_HANDLE_VALUE);
}

TEST_F(FileTest, IsNothingAtIsTrueOnlyIfThereIsCertainlyNeitherFileNorFolder)
{
    hostWrite(root() / "file", "");
    std::filesystem::create_symlink("file", root() / "link");
    addFolder(u"Card", true);
    for (const WCHAR* path : {u"\\missing", u"\\missing\\a", u"\\file\\a", u"\\Card\\a"})
        EXPECT_EQ(hostCallsOf([&] { EXPECT_TRUE(IsNothingAt(path)); }), 1U);
    for (const WCHAR* path : {u"\\file", u"\\", u"\\Card", u"\\link", u"\\a*"})
        EXPECT_FALSE(IsNothingAt(path));
    hostCallsOf([] { EXPECT_FALSE(IsNothingAt(u"\\missing")); }, {.nthCall = 1, .error = EACCES});
}

TEST_F(FileTest, LargeFolderIsListedCompletelyWhileItsFilesAreDeleted)
{
    for (int i = 0; i < 3000; ++i)
        hostWrite(root() / ("file number " + std::to_string(i)), "");
    std::size_t count = 0;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(u"\\*.*", &found);
    do {
        ++count;
        EXPECT_GT(found.ftLastWriteTime.dwHighDateTime, 0x01D00000U);  // after 2014
        EXPECT_TRUE(DeleteFileW(found.cFileName));                     // must not disturb the search
    } while (FindNextFileW(search, &found));
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    FindClose(search);
    EXPECT_EQ(count, 3000U);
    EXPECT_TRUE(std::filesystem::is_empty(root()));
}

}  // namespace
