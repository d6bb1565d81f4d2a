#include "tree/marking.h"
#include "tree_fixture.h"

#include "ce/file.h"

#include <gmock/gmock.h>

namespace {

class FolderMarkingTest : public TreeTest {};

TEST_F(FolderMarkingTest, EveryMarkableFileBelowAFolderIsMarkedWhetherListedOrNot)
{
    write({"A/a", "A/B/b", "A/B/C/c", "A/rom", "Ax", "other/o"});
    setAttributes("A/rom", "0x40");
    open("Files\\A");
    click("Files\\A");
    EXPECT_EQ(MarkFolder(1), 1U);
    EXPECT_EQ(markedFiles(), "\\A\\B\\C\\c \\A\\B\\b \\A\\a");
    // A counts the four files and two folders below it.
    EXPECT_EQ(marks("Files"), "Files:2:0 A:10:6 B:10:1 a:7:1 rom:8:0 Ax:6:0 other:9:0");
    MarkFolder(1);
    EXPECT_EQ(markedFiles(), "\\A\\B\\C\\c \\A\\B\\b \\A\\a");
    EXPECT_THAT(marks("Files\\A"), testing::StartsWith("A:10:12 "));

    MarkFolder(0);
    EXPECT_EQ(markedFiles(), "");
    EXPECT_EQ(marks("Files\\A"), "A:9:0 B:9:0 a:6:0 rom:8:0");
}

TEST_F(FolderMarkingTest, MarkFolderDoesNothingUnlessAFolderIsSelected)
{
    write({"a"});
    EXPECT_EQ(MarkFolder(1), 0U);  // nothing is selected
    open("Files");
    for (const char* each : {"Files", "Databases", "Registry", "Files\\a"}) {
        click(each);
        EXPECT_EQ(MarkFolder(0), 0U) << each;
    }
    EXPECT_EQ(markedFiles(), "\\a");  // marked by the click
}

TEST_F(FolderMarkingTest, FoldersAboveKeepTheirTickUntilTheyAreListedAgain)
{
    write({"A/B/b", "A/empty/"});
    open("Files\\A\\B");
    click("Files\\A\\B");
    MarkFolder(1);
    EXPECT_EQ(marks("Files\\A"), "A:10:1 B:10:1 b:7:1 empty:9:0");
    MarkFolder(0);
    EXPECT_EQ(marks("Files\\A"), "A:10:1 B:9:0 b:6:0 empty:9:0");
    listAgain("Files\\A");
    EXPECT_EQ(marks("Files\\A"), "A:9:0 B:9:0 empty:9:0");

    click("Files\\A\\empty");
    MarkFolder(1);
    EXPECT_EQ(marks("Files\\A"), "A:10:0 B:9:0 empty:10:0");
    EXPECT_EQ(markedFiles(), "");
    listAgain("Files\\A");
    EXPECT_EQ(marks("Files\\A"), "A:9:0 B:9:0 empty:9:0");
}

TEST_F(FolderMarkingTest, UnmarkingAFolderClearsListedChildrenThatCountFewerMarksThanItSubtracts)
{
    write({"A/B/x", "A/B/y", "A/B/z", "A/a"});
    open("Files\\A\\B");
    click("Files\\A\\B\\x");
    click("Files\\A");
    MarkFolder(0);  // subtracts 3 from the count 1 of B, and 1 from the count 0 of a
    EXPECT_EQ(marks("Files\\A"), "A:9:0 B:9:0 x:6:0 y:6:0 z:6:0 a:6:0");
}

TEST_F(FolderMarkingTest, UnmarkingAFolderSkipsFilesHiddenByAttributeAndMarkingIncludesOtherExtensions)
{
    write({"A/a.txt", "A/b.doc", "A/s.txt", "A/B/c.doc"});
    setAttributes("A/s.txt", "0x4");
    gOptions.hiddenAttributes = 4;
    useFilter(u"txt");
    open("Files");
    click("Files\\A");
    MarkFolder(1);
    const std::string all = "\\A\\B\\c.doc \\A\\a.txt \\A\\b.doc \\A\\s.txt";
    EXPECT_EQ(markedFiles(), all);
    EXPECT_EQ(marks("Files\\A"), "A:10:7");  // counts the five entries, and the two with the extension once more
    gOptions.hideByAttribute = 1;
    MarkFolder(0);  // hidden files keep their marks
    EXPECT_EQ(markedFiles(), "\\A\\s.txt");
    MarkFolder(1);
    EXPECT_EQ(markedFiles(), all);
}

TEST_F(FolderMarkingTest, DateHidesOlderFilesAndThoseThatCannotBeOpened)
{
    write({"A/B/old", "A/B/new", "A/open"});
    setTime("A/B/old", 1000);
    setTime("A/B/new", 2000);
    HANDLE user = CreateFileW(u"\\A\\open", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(user, INVALID_HANDLE_VALUE);
    gOptions.newerThanOn = 1;
    gOptions.newerThan = {1, 0};
    open("Files\\A");
    EXPECT_EQ(marks("Files\\A"), "A:9:0 B:9:0");
    click("Files\\A");
    MarkFolder(1);
    EXPECT_EQ(markedFiles(), "\\A\\B\\new \\A\\B\\old");
    useDate(2000);
    MarkFolder(0);
    EXPECT_EQ(markedFiles(), "\\A\\B\\old");

    gOptions.newerThanOn = 0;
    MarkFolder(1);
    EXPECT_EQ(markedFiles(), "\\A\\B\\new \\A\\B\\old \\A\\open");
    gOptions.newerThanOn = 1;
    MarkFolder(0);
    EXPECT_EQ(markedFiles(), "\\A\\B\\old \\A\\open");
    CloseHandle(user);
}

}  // namespace
