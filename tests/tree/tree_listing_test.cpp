#include "tree_fixture.h"
#include "window/display.h"

#include <gmock/gmock.h>

namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

class TreeListingTest : public TreeTest {};

TEST_F(TreeListingTest, FoldersAreListedBeforeFilesAndHaveAButtonIfTheyAreNotEmpty)
{
    write({"empty/", "full/x", "file"});
    open("Files");
    EXPECT_THAT(listed("Files"), UnorderedElementsAre("empty", "full", "file"));
    EXPECT_EQ(listed("Files").back(), "file");
    EXPECT_TRUE(hasButton("Files\\full") && !hasButton("Files\\empty") && !hasButton("Files\\file"));
}

TEST_F(TreeListingTest, WaitCursorIsShownWhileALevelIsListed)
{
    struct CursorCounter final : platform::window::Display {
        void changed(HWND, platform::window::Change change) override
        {
            changes += change == platform::window::Change::Cursor ? 1 : 0;
        }
        void textChanged(HWND, std::u16string_view) override {}
        int changes = 0;
    };
    write({"A/"});
    CursorCounter cursor;
    platform::window::setDisplay(&cursor);
    open("Files");
    EXPECT_EQ(cursor.changes, 2);  // the wait cursor was set and removed
    EXPECT_FALSE(platform::window::showsWaitCursor());
    clickButton("Files");
    EXPECT_EQ(cursor.changes, 2);
    platform::window::setDisplay(nullptr);
}

TEST_F(TreeListingTest, FolderShowsTheMarkOfAFileWhosePathBeginsWithItsOwn)
{
    write({"A/B/x", "A/Bc.txt"});
    open("Files\\A");
    click("Files\\A\\Bc.txt");
    listAgain("Files\\A");
    EXPECT_EQ(marks("Files\\A"), "A:10:1 B:10:1 Bc.txt:7:1");
}

TEST_F(TreeListingTest, RomFilesAreShownAndNeverMarked)
{
    write({"rom"});
    setAttributes("rom", "0x40");
    open("Files");
    EXPECT_EQ(marks("Files"), "Files:2:0 rom:8:0");
    click("Files\\rom");
    click("Files\\rom");
    EXPECT_EQ(marks("Files"), "Files:2:0 rom:8:0");
    EXPECT_EQ(markedFiles(), "");
    gOptions.showRomFiles = 0;  // no control of the program sets this option, but a stored record of options can
    listAgain();
    EXPECT_THAT(listed("Files"), IsEmpty());
}

TEST_F(TreeListingTest, ExtensionFilterHidesOtherFilesAndListsEveryFolder)
{
    write({"a.txt", "b.TXT", "c.doc", "only/d.doc", "deep/sub/e.bin", "named.txt/"});
    useFilter(u"txt,h");
    open("Files");
    EXPECT_THAT(listed("Files"), UnorderedElementsAre("a.txt", "b.TXT", "deep", "named.txt", "named.txt", "only"));
    EXPECT_FALSE(hasButton("Files\\only"));
    EXPECT_TRUE(hasButton("Files\\deep"));
    // Text that isn't an extension matches no files. Folders are still listed.
    for (const WCHAR* typed : {u"", u"\\", u"..\\", u"/", u".", u" ", u"only\\*"}) {
        gOptions.extensions[0] = 0;
        useFilter(typed);
        listAgain();
        EXPECT_THAT(listed("Files"), UnorderedElementsAre("deep", "named.txt", "only"));
    }
}

TEST_F(TreeListingTest, AttributesAndDateHideFilesAndNoFolders)
{
    write({"old", "exact", "new", "system", "F/x"});
    setAttributes("system", "0x4");
    setAttributes("F", "0x4");
    for (const auto& [name, seconds] : {std::pair{"old", 1000}, {"exact", 2000}, {"new", 3000}, {"system", 3000}})
        setTime(name, seconds);
    setTime("F/x", 1000);
    gOptions.hiddenAttributes = 4;
    gOptions.hideByAttribute = 1;
    open("Files");
    EXPECT_THAT(listed("Files"), UnorderedElementsAre("F", "exact", "new", "old"));
    gOptions.hideByAttribute = 0;
    useDate(2000);
    listAgain();
    EXPECT_THAT(listed("Files"), UnorderedElementsAre("F", "exact", "new", "system"));
    EXPECT_TRUE(hasButton("Files\\F"));  // although all its files are hidden
    open("Files\\F");
    EXPECT_THAT(listed("Files\\F"), IsEmpty());
}

}  // namespace
