// search_test.cpp - listings.
#include "file_fixture.h"

#include <set>
#include <string>

namespace {

std::set<std::u16string> list(const std::u16string& pattern)
{
    std::set<std::u16string> names;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do
        EXPECT_TRUE(names.insert(found.cFileName).second) << "listed twice";
    while (FindNextFileW(search, &found));
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_TRUE(FindClose(search));
    return names;
}

using Names = std::set<std::u16string>;

TEST_F(FileTest, CardHidesAnEntryOfItsNameAndIsListedOnce)
{
    const auto card = addFolder(u"Card", true);
    std::filesystem::create_directory(root() / "Card");
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
    EXPECT_TRUE(FindClose(FindFirstFileW(u"\\Card\\card", &found)));
    EXPECT_EQ(found.dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY);
}

TEST_F(FileTest, SearchTellsWhyItFindsNothing)
{
    std::filesystem::create_directory(root() / "empty");
    hostWrite(root() / "file", "");
    WIN32_FIND_DATAW found = {};
    const auto fails = [&](const std::u16string& pattern, DWORD error) {
        return FindFirstFileW(pattern.c_str(), &found) == INVALID_HANDLE_VALUE && GetLastError() == error;
    };
    EXPECT_TRUE(fails(u"\\empty\\*", ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(fails(u"\\*.zip", ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(fails(u"\\missing\\*", ERROR_PATH_NOT_FOUND));
    EXPECT_TRUE(fails(u"\\file\\*", ERROR_PATH_NOT_FOUND));
    EXPECT_TRUE(fails(u"\\empty\\", ERROR_INVALID_NAME));
    EXPECT_TRUE(fails(u"\\..", ERROR_INVALID_NAME));
    EXPECT_TRUE(fails(u"\\..\\*", ERROR_INVALID_NAME));
    EXPECT_TRUE(fails(u"\\e*\\*", ERROR_INVALID_NAME));
    EXPECT_TRUE(fails(u"\\" + std::u16string(259, u'*'), ERROR_FILENAME_EXCED_RANGE));
}

TEST_F(FileTest, LargeFolderIsListedWholeAndTrue)
{
    std::filesystem::create_directory(root() / "d");
    for (int i = 0; i < 3000; ++i)
        hostWrite(root() / "d" / ("file number " + std::to_string(i)),
                  std::string(static_cast<std::size_t>(i % 7), 'x'));
    hostMark(root() / "d" / "file number 1234", "0x4");
    std::size_t bytes = 0;
    std::size_t marked = 0;
    std::size_t count = 0;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(u"\\d\\*.*", &found);
    do {
        ++count;
        bytes += found.nFileSizeLow;
        marked += found.dwFileAttributes == FILE_ATTRIBUTE_SYSTEM ? 1 : 0;
        EXPECT_GT(found.ftLastWriteTime.dwHighDateTime, 0x01D00000U);       // after 2014, from 1601 on
        DeleteFileW((u"\\d\\" + std::u16string(found.cFileName)).c_str());  // must not disturb the search
    } while (FindNextFileW(search, &found));
    FindClose(search);
    EXPECT_EQ(count, 3000U);
    EXPECT_EQ(bytes, 8994U);
    EXPECT_EQ(marked, 1U);
    EXPECT_TRUE(std::filesystem::is_empty(root() / "d"));
}

}  // namespace
