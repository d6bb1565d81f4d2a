// search_test.cpp - listings.
#include "file_fixture.h"

#include <set>
#include <string>
#include <vector>

namespace {

using Ordered = std::vector<std::u16string>;
using Names = std::set<std::u16string>;

Ordered listInOrder(const std::u16string& pattern)
{
    Ordered names;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do
        names.emplace_back(found.cFileName);
    while (FindNextFileW(search, &found));
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_TRUE(FindClose(search));
    return names;
}

Names list(const std::u16string& pattern)
{
    const Ordered listed = listInOrder(pattern);
    Names names(listed.begin(), listed.end());
    EXPECT_EQ(names.size(), listed.size()) << "listed twice";
    return names;
}

TEST_F(FileTest, NamesAreListedInTheOrderOfAReader)
{
    for (const char* name : {"b", "a10", "B", "A", "a", "ä", "Z", "a.b"})
        hostWrite(root() / name, "");
    std::filesystem::create_directory(root() / "aa");
    EXPECT_EQ(listInOrder(u"\\*"), (Ordered{u"A", u"a", u"a.b", u"a10", u"aa", u"B", u"b", u"Z", u"ä"}));
}

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
    const HANDLE search = FindFirstFileW(u"\\d\\*", &found);
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
