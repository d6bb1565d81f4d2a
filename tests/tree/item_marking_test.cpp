#include "tree/marking.h"
#include "tree_fixture.h"

#include "ce/store.h"

#include <gmock/gmock.h>

namespace {

using platform::window::TreePart;
using testing::ElementsAre;
using testing::IsEmpty;

class ItemMarkingTest : public TreeTest {};

TEST_F(ItemMarkingTest, OneClickIsOneToggleWhateverIsSelected)
{
    write({"a", "ab"});
    open("Files");
    click("Files\\ab");
    EXPECT_EQ(marks("Files"), "Files:2:0 a:6:0 ab:7:1");
    click("Files\\a");
    EXPECT_EQ(markedFiles(), "\\a \\ab");
    click("Files\\ab");  // it was marked but not selected
    click("Files\\a");
    click("Files\\a");  // it was already selected
    EXPECT_EQ(markedFiles(), "\\a");
    EXPECT_EQ(marks("Files"), "Files:2:0 a:7:1 ab:6:0");

    UpdateRootImages();
    EXPECT_EQ(marks("Files"), "Files:3:0 a:7:1 ab:6:0");
    click("Files");
    click("Files\\a");
    UpdateRootImages();
    EXPECT_EQ(marks("Files"), "Files:2:0 a:6:0 ab:6:0");
}

TEST_F(ItemMarkingTest, ClickOnTheIconTogglesAnItemAndAClickBesideIconAndLabelOnlyIfItIsSelected)
{
    write({"a", "F/b"});
    open("Files\\F");
    click("Files\\a", TreePart::Icon);
    click("Files\\F\\b", TreePart::Icon);
    EXPECT_EQ(markedFiles(), "\\F\\b \\a");
    for (const TreePart part : {TreePart::Right, TreePart::Indent}) {
        click("Files\\a", part);  // b stays selected
        EXPECT_EQ(selected(), "b");
        EXPECT_EQ(markedFiles(), "\\F\\b \\a");
        click("Files\\F\\b", part);
        EXPECT_EQ(markedFiles(), "\\a");
        click("Files\\F\\b", part);
    }
    clickButton("Files\\F");  // the collapse selects F
    EXPECT_EQ(selected(), "F");
    EXPECT_EQ(markedFiles(), "\\F\\b \\a");
}

TEST_F(ItemMarkingTest, FoldersAboveCountMarkedFilesAndCountOneAfterTheyAreListedAgain)
{
    write({"A/B/one", "A/B/two"});
    open("Files\\A\\B");
    click("Files\\A\\B\\one");
    click("Files\\A\\B\\two");
    EXPECT_EQ(marks("Files"), "Files:2:0 A:10:2 B:10:2 one:7:1 two:7:1");
    click("Files\\A\\B\\one");
    EXPECT_EQ(marks("Files\\A"), "A:10:1 B:10:1 one:6:0 two:7:1");
    click("Files\\A\\B\\two");
    EXPECT_EQ(marks("Files\\A"), "A:9:0 B:9:0 one:6:0 two:6:0");

    click("Files\\A\\B\\one");
    click("Files\\A\\B\\two");
    listAgain("Files\\A\\B");  // a folder that is listed again counts 1, whatever the number of marks below it
    EXPECT_EQ(marks("Files\\A"), "A:10:1 B:10:1 one:7:1 two:7:1");
    click("Files\\A\\B\\one");
    EXPECT_EQ(marks("Files\\A"), "A:9:0 B:9:0 one:6:0 two:7:1");
    click("Files\\A\\B\\two");  // a count never goes below zero
    EXPECT_EQ(marks("Files\\A"), "A:9:0 B:9:0 one:6:0 two:6:0");
    EXPECT_EQ(markedFiles(), "");
}

TEST_F(ItemMarkingTest, CollapsingKeepsMarksAndTogglesNothing)
{
    write({"A/a", "A/b"});
    open("Files\\A");
    click("Files\\A\\b");
    clickButton("Files\\A");  // its files leave the tree, including the selected one
    EXPECT_EQ(markedFiles(), "\\A\\b");
    EXPECT_EQ(selected(), "A");
    EXPECT_EQ(marks("Files\\A"), "A:10:1");
    EXPECT_TRUE(hasButton("Files\\A"));
    open("Files\\A");
    EXPECT_EQ(marks("Files\\A"), "A:10:1 a:6:0 b:7:1");
    click("Files\\A\\b");
    click("Files\\A\\b");

    ResetFilesRoot();
    EXPECT_THAT(listed("Files"), IsEmpty());
    EXPECT_EQ(markedFiles(), "\\A\\b");
    EXPECT_EQ(selected(), "Files");
    RenewLists();  // as a run does
    open("Files\\A");
    EXPECT_EQ(marks("Files"), "Files:2:0 A:9:0 a:6:0 b:6:0");
    ResetFilesRoot();
    clickButton("Files");
    EXPECT_EQ(marks("Files"), "Files:2:0 A:9:0");
}

TEST_F(ItemMarkingTest, DatabasesAndTheRegistryAreMarkedInTheirOwnLists)
{
    for (const WCHAR* name : {u"Tasks", u"appointments", u"\\hidden", u"Contacts"})
        ASSERT_NE(CeCreateDatabase(name, 0, 0, nullptr), 0U);
    clickButton("Databases");
    EXPECT_THAT(listed("Databases"), ElementsAre("appointments", "Contacts", "Tasks"));
    click("Databases\\Contacts");
    click("Databases\\Tasks");
    UpdateRootImages();
    EXPECT_EQ(marks("Databases"), "Databases:1:0 Contacts:12:1 Tasks:12:1 appointments:11:0");
    RenewLists();
    click("Databases\\Contacts");  // its image still shows the old mark, but the click adds it to the new list
    EXPECT_EQ(marks("Databases\\Contacts"), "Contacts:12:2");
    EXPECT_EQ(gDatabaseList->Count(), 1U);
    click("Databases\\Contacts");
    EXPECT_EQ(marks("Databases\\Contacts"), "Contacts:12:1");
    clickButton("Databases");
    clickButton("Databases");
    EXPECT_EQ(marks("Databases"), "Databases:1:0 Contacts:11:0 Tasks:11:0 appointments:11:0");

    for (const DWORD marked : {1U, 0U}) {
        click("Registry");
        EXPECT_EQ(gRegistryMarked, marked);
        EXPECT_EQ(marks("Registry"), marked ? "Registry:16:1" : "Registry:15:0");
    }
}

// A mark count wraps at 65,536. Each operation treats counts above a limit of its own as negative.
using MarkCountTest = TreeTest;

TEST_F(MarkCountTest, FileThatLosesItsMarkSubtractsOneFromTheCountOfEachFolderAbove)
{
    write({"A/B/f"});
    open("Files\\A\\B");
    click("Files\\A\\B\\f");
    setCount("Files\\A\\B\\f", 65531);
    setCount("Files\\A\\B", 65531);
    setCount("Files\\A", 65532);
    click("Files\\A\\B\\f");
    EXPECT_EQ(marks("Files\\A"), "A:9:0 B:10:65530 f:7:65530");

    setCount("Files\\A\\B", 65535);
    click("Files\\A\\B\\f");  // the count of B wraps up to 0, but B still shows its tick
    EXPECT_EQ(marks("Files\\A\\B"), "B:10:0 f:7:65531");
    setCount("Files\\A\\B\\f", 65532);
    click("Files\\A\\B\\f");
    EXPECT_EQ(marks("Files\\A\\B\\f"), "f:6:0");
}

TEST_F(MarkCountTest, DatabaseThatLosesItsMarkIsClearedIfItsCountIsBelowZero)
{
    ASSERT_NE(CeCreateDatabase(u"Tasks", 0, 0, nullptr), 0U);
    open("Databases");
    click("Databases\\Tasks");
    for (const auto& [before, after] : {std::pair<WORD, std::string>{65531, "Tasks:12:65530"}, {65532, "Tasks:11:0"}}) {
        setCount("Databases\\Tasks", before);
        click("Databases\\Tasks");
        EXPECT_EQ(marks("Databases\\Tasks"), after);
        click("Databases\\Tasks");
    }
}

TEST_F(MarkCountTest, RefreshClearsItemsWhoseCountIsBelowZero)
{
    write({"A/f", "A/g"});
    open("Files\\A");
    setCount("Files\\A\\f", 65530);
    setCount("Files\\A\\g", 65531);
    RefreshMarks(item("Files\\A"));
    EXPECT_EQ(marks("Files\\A"), "A:9:0 f:7:65530 g:6:0");
    setCount("Files\\A", 65531);
    setCount("Files\\A\\g", 65531);
    RefreshMarks(item("Files\\A"));
    EXPECT_EQ(marks("Files\\A"), "A:9:0 f:7:65530 g:6:0");
}

TEST_F(MarkCountTest, UnmarkingAFolderSubtractsFromListedChildrenAndClearsFoldersAboveThatAreBelowZero)
{
    write({"P/Q/A/f", "P/Q/A/g", "P/Q/A/M/x", "P/Q/A/N/x"});
    open("Files\\P\\Q\\A");
    click("Files\\P\\Q\\A");
    setCount("Files\\P\\Q\\A\\f", 65281);
    setCount("Files\\P\\Q\\A\\g", 65282);
    setCount("Files\\P\\Q\\A\\M", 65281);  // M is collapsed, so its content counts as one
    setCount("Files\\P\\Q\\A\\N", 65282);
    setCount("Files\\P\\Q\\A", 5);
    setCount("Files\\P\\Q", 65520);
    setCount("Files\\P", 65521);
    MarkFolder(0);
    EXPECT_EQ(marks("Files"), "Files:2:0 P:9:0 Q:10:65520 A:9:0 M:10:65280 N:9:0 f:7:65280 g:6:0");
}

TEST_F(MarkCountTest, MarkedFolderWhoseCountWrapsToZeroKeepsItsTick)
{
    write({"A/B/f"});
    open("Files\\A");
    click("Files\\A\\B");
    setCount("Files\\A\\B", 65535);
    setCount("Files\\A", 65535);
    MarkFolder(1);
    EXPECT_EQ(marks("Files\\A"), "A:10:0 B:10:0");
    MarkFolder(1);
    EXPECT_EQ(marks("Files\\A"), "A:10:1 B:10:1");
    EXPECT_EQ(markedFiles(), "\\A\\B\\f");
}

}  // namespace
