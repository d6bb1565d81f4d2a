#include "engine/options.h"
#include "tree/marking.h"
#include "tree_fixture.h"

#include "ce/file.h"

namespace {

class FolderMarkingTest : public TreeTest {};

TEST_F(FolderMarkingTest, EverythingBelowIsMarkedListedOrNot)
{
    for (const char* name : {"A/a", "A/B/b", "A/B/C/c", "A/rom", "Ax", "other/o"})
        write(name);
    setAttributes("A/rom", FILE_ATTRIBUTE_INROM);
    open("Files\\A");
    click("Files\\A");
    EXPECT_EQ(MarkFolder(1), 1U);
    EXPECT_EQ(markedFiles(), "\\A\\B\\C\\c \\A\\B\\b \\A\\a");
    EXPECT_EQ(image("Files\\A"), 10);
    EXPECT_EQ(count("Files\\A"), 6);  // four files and two folders were looked at
    EXPECT_EQ(count("Files\\A\\B"), 1);
    EXPECT_EQ(image("Files\\A\\a"), 7);
    EXPECT_EQ(image("Files\\A\\rom"), 8);
    EXPECT_EQ(count("Files"), 0);
    MarkFolder(1);
    EXPECT_EQ(markedFiles(), "\\A\\B\\C\\c \\A\\B\\b \\A\\a");
    EXPECT_EQ(count("Files\\A"), 12);

    MarkFolder(0);
    EXPECT_EQ(markedFiles(), "");
    EXPECT_EQ(count("Files\\A"), 0);
    EXPECT_EQ(image("Files\\A"), 9);
    EXPECT_EQ(image("Files\\A\\B"), 9);
    EXPECT_EQ(image("Files\\A\\a"), 6);
    EXPECT_EQ(image("Files\\A\\rom"), 8);
}

TEST_F(FolderMarkingTest, OnlyAFolderIsMarkedThisWay)
{
    write("a");
    EXPECT_EQ(MarkFolder(1), 0U);  // nothing selected
    open("Files");
    for (const char* each : {"Files", "Databases", "Registry", "Files\\a"}) {
        click(each);
        EXPECT_EQ(MarkFolder(0), 0U) << each;
    }
    EXPECT_EQ(markedFiles(), "\\a");  // by the click
}

TEST_F(FolderMarkingTest, AncestorsKeepTheirTickUntilTheyAreListedAnew)
{
    write("A/B/b");
    write("A/a");
    open("Files\\A\\B");
    click("Files\\A\\B");
    MarkFolder(1);
    EXPECT_EQ(count("Files\\A"), 1);
    MarkFolder(0);
    EXPECT_EQ(count("Files\\A"), 1);
    EXPECT_EQ(image("Files\\A"), 10);
    clickButton("Files");
    open("Files");
    EXPECT_EQ(image("Files\\A"), 9);
}

TEST_F(FolderMarkingTest, EmptyFolderShowsATickThatNoListHolds)
{
    makeFolder("A/empty");
    open("Files\\A");
    click("Files\\A\\empty");
    MarkFolder(1);
    EXPECT_EQ(image("Files\\A\\empty"), 10);
    EXPECT_EQ(image("Files\\A"), 10);
    EXPECT_EQ(count("Files\\A"), 0);
    EXPECT_EQ(markedFiles(), "");
    clickButton("Files");
    open("Files");
    EXPECT_EQ(image("Files\\A"), 9);
}

TEST_F(FolderMarkingTest, ListedChildrenLoseWhatTheyNeverHad)
{
    for (const char* name : {"A/B/x", "A/B/y", "A/B/z", "A/a"})
        write(name);
    open("Files\\A\\B");
    click("Files\\A\\B\\x");
    click("Files\\A");
    MarkFolder(0);  // B stood at 1 and loses 3, a stood at 0
    EXPECT_EQ(listed("Files\\A"), "B:9 a:6");
    EXPECT_EQ(count("Files\\A\\B"), 0);
    EXPECT_EQ(count("Files\\A\\a"), 0);
}

TEST_F(FolderMarkingTest, FilterByAttributeHoldsAndThatByExtensionOnlyCounts)
{
    for (const char* name : {"A/a.txt", "A/b.doc", "A/s.txt", "A/B/c.doc"})
        write(name);
    setAttributes("A/s.txt", 4);
    gOptions.hiddenAttributes = 4;
    useFilter(u"txt");
    open("Files");
    click("Files\\A");
    MarkFolder(1);
    EXPECT_EQ(markedFiles(), "\\A\\B\\c.doc \\A\\a.txt \\A\\b.doc \\A\\s.txt");
    EXPECT_EQ(count("Files\\A"), 5 + 2);
    gOptions.hideByAttribute = 1;
    MarkFolder(0);  // what is hidden keeps its mark
    EXPECT_EQ(markedFiles(), "\\A\\s.txt");
    MarkFolder(1);
    EXPECT_EQ(markedFiles(), "\\A\\B\\c.doc \\A\\a.txt \\A\\b.doc \\A\\s.txt");
}

TEST_F(FolderMarkingTest, FilterByDateHoldsAndAFileThatCannotBeOpenedIsOlderThanAnyDate)
{
    for (const char* name : {"A/B/old", "A/B/new", "A/open"})
        write(name);
    setTime("A/B/old", 1000);
    setTime("A/B/new", 2000);
    HANDLE user = CreateFileW(u"\\A\\open", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(user, INVALID_HANDLE_VALUE);
    gOptions.newerThanOn = 1;
    gOptions.newerThan = {1, 0};
    open("Files\\A");
    EXPECT_EQ(listed("Files\\A"), "B:9");
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
