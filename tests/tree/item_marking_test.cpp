#include "set/set_state.h"
#include "tree/marking.h"
#include "tree/tree_events.h"
#include "tree_fixture.h"

#include "ce/store.h"

namespace {

class ItemMarkingTest : public TreeTest {};

TEST_F(ItemMarkingTest, TreeBeginsWithThreeCollapsedItems)
{
    EXPECT_EQ(listed(""), "Databases:0 Files:2 Registry:15");
    EXPECT_TRUE(hasButton("Databases") && hasButton("Files") && !hasButton("Registry"));
    EXPECT_EQ(listed("Files"), "");
    EXPECT_EQ(ToggleItem(nullptr), 1U);
    EXPECT_EQ(RefreshMarks(nullptr), 1U);
}

TEST_F(ItemMarkingTest, OneClickIsOneToggleWhateverIsSelected)
{
    write("a.txt");
    write("b.txt");
    open("Files");
    click("Files\\a.txt");
    EXPECT_EQ(image("Files\\a.txt"), 7);
    click("Files\\b.txt");
    EXPECT_EQ(markedFiles(), "\\a.txt \\b.txt");
    click("Files\\a.txt");  // marked, and not selected
    click("Files\\b.txt");
    click("Files\\b.txt");  // selected already
    EXPECT_EQ(markedFiles(), "\\b.txt");
    EXPECT_EQ(image("Files\\a.txt"), 6);
    EXPECT_EQ(count("Files"), 0);

    UpdateRootImages();
    EXPECT_EQ(image("Files"), 3);
    click("Files");
    click("Files\\b.txt");
    UpdateRootImages();
    EXPECT_EQ(image("Files"), 2);
}

TEST_F(ItemMarkingTest, PictureMarksLikeTheTextAndTheRowBesideItOnlyWhatIsSelected)
{
    using platform::window::TreePart;
    write("a");
    write("F/b");
    open("Files\\F");
    clickOn("Files\\a", TreePart::Icon);
    EXPECT_EQ(markedFiles(), "\\a");
    clickOn("Files\\F\\b", TreePart::Icon);
    clickOn("Files\\F\\b", TreePart::Icon);
    EXPECT_EQ(markedFiles(), "\\a");
    for (const TreePart part : {TreePart::Right, TreePart::Indent}) {
        clickOn("Files\\a", part);  // another one is selected, and stays so
        EXPECT_EQ(markedFiles(), "\\a");
        EXPECT_EQ(selected(), "b");
        clickOn("Files\\F\\b", part);
        EXPECT_EQ(markedFiles(), "\\F\\b \\a");
        clickOn("Files\\F\\b", part);
    }
    clickOn("Files\\F", TreePart::Button);  // takes the selection along
    EXPECT_EQ(selected(), "F");
    clickOn("Files\\F", TreePart::Button);
    EXPECT_EQ(markedFiles(), "\\a");
}

TEST_F(ItemMarkingTest, ArrowKeysToggleWhatTheyLandOn)
{
    for (const char* name : {"a", "b", "c"})
        write(name);
    open("Files");
    click("Files");
    const std::string order = listed("Files");  // the host's
    for (int i = 0; i < 3; i++)
        press(VK_DOWN);
    EXPECT_EQ(markedFiles(), "\\a \\b \\c");
    press(VK_UP);
    press(VK_UP);
    press(VK_LEFT);  // to "Files", which is not toggled
    EXPECT_EQ(markedFiles(), std::string("\\") + order.substr(order.rfind(' ') + 1, 1));
    EXPECT_EQ(selected(), "Files");
}

TEST_F(ItemMarkingTest, FoldersAboveCountTheirFiles)
{
    write("A/B/C/one");
    write("A/B/C/two");
    open("Files\\A\\B\\C");
    click("Files\\A\\B\\C\\one");
    click("Files\\A\\B\\C\\two");
    for (const char* folder : {"Files\\A", "Files\\A\\B", "Files\\A\\B\\C"}) {
        EXPECT_EQ(count(folder), 2) << folder;
        EXPECT_EQ(image(folder), 10);
    }
    click("Files\\A\\B\\C\\one");
    EXPECT_EQ(count("Files\\A"), 1);
    EXPECT_EQ(image("Files\\A"), 10);
    click("Files\\A\\B\\C\\two");
    EXPECT_EQ(count("Files\\A"), 0);
    EXPECT_EQ(image("Files\\A"), 9);
}

// Listed anew, a folder counts 1 whatever lies below; going below zero is zero.
TEST_F(ItemMarkingTest, CountNeverGoesBelowZero)
{
    write("A/one");
    write("A/two");
    open("Files\\A");
    click("Files\\A\\one");
    click("Files\\A\\two");
    clickButton("Files");
    open("Files\\A");
    EXPECT_EQ(count("Files\\A"), 1);
    click("Files\\A\\one");
    EXPECT_EQ(count("Files\\A"), 0);
    EXPECT_EQ(image("Files\\A"), 9);
    click("Files\\A\\two");
    EXPECT_EQ(count("Files\\A"), 0);
    EXPECT_EQ(image("Files\\A"), 9);
    EXPECT_EQ(markedFiles(), "");
}

TEST_F(ItemMarkingTest, CollapsingKeepsMarksAndTogglesNothing)
{
    for (const char* name : {"A/a", "A/b", "A/c"})
        write(name);
    open("Files\\A");
    click("Files\\A\\b");
    clickButton("Files\\A");  // the selected file goes with the others
    EXPECT_EQ(markedFiles(), "\\A\\b");
    EXPECT_EQ(selected(), "A");
    EXPECT_EQ(count("Files\\A"), 1);
    EXPECT_EQ(listed("Files\\A"), "");
    EXPECT_TRUE(hasButton("Files\\A"));
    open("Files\\A");
    EXPECT_EQ(image("Files\\A\\b"), 7);
    click("Files\\A\\b");
    click("Files\\A\\b");

    ResetFilesRoot();
    EXPECT_EQ(listed("Files"), "");
    EXPECT_EQ(markedFiles(), "\\A\\b");
    EXPECT_EQ(selected(), "Files");
    RenewLists();  // as a run does
    open("Files\\A");
    EXPECT_EQ(image("Files\\A\\b"), 6);
    ResetFilesRoot();
    clickButton("Files");
    EXPECT_EQ(listed("Files"), "A:9");
}

TEST_F(ItemMarkingTest, RegistryAndDatabasesAreMarkedByThemselves)
{
    for (const WCHAR* name : {u"Tasks", u"appointments", u"\\hidden", u"Contacts"})
        ASSERT_NE(CeCreateDatabase(name, 0, 0, nullptr), 0U);
    clickButton("Databases");
    EXPECT_EQ(listed("Databases"), "appointments:11 Contacts:11 Tasks:11");
    click("Databases\\Contacts");
    click("Databases\\Tasks");
    EXPECT_EQ(listed("Databases"), "appointments:11 Contacts:12 Tasks:12");
    UpdateRootImages();
    EXPECT_EQ(image("Databases"), 1);
    RenewLists();
    click("Databases\\Contacts");  // what it shows is old: it is added
    EXPECT_EQ(count("Databases\\Contacts"), 2);
    EXPECT_EQ(gDatabaseList->Count(), 1U);
    click("Databases\\Contacts");
    EXPECT_EQ(count("Databases\\Contacts"), 1);
    EXPECT_EQ(image("Databases\\Contacts"), 12);
    clickButton("Databases");
    clickButton("Databases");
    EXPECT_EQ(listed("Databases"), "appointments:11 Contacts:11 Tasks:11");

    click("Registry");
    EXPECT_EQ(image("Registry"), 16);
    EXPECT_EQ(gRegistryMarked, 1U);
    click("Registry");
    EXPECT_EQ(image("Registry"), 15);
    EXPECT_EQ(gRegistryMarked, 0U);
}

TEST_F(ItemMarkingTest, FileWhosePathBeginsAnotherIsItsOwn)
{
    write("a");
    write("ab");
    open("Files");
    click("Files\\ab");
    EXPECT_EQ(image("Files\\a"), 6);
    click("Files\\a");
    click("Files\\ab");
    EXPECT_EQ(markedFiles(), "\\a");
}

}  // namespace
