#include "engine/options.h"
#include "set/set_state.h"
#include "tree/tree_events.h"
#include "tree_fixture.h"
#include "window/display.h"

#include "ce/command_bands.h"
#include "ce/file.h"

#include <algorithm>

namespace {

class TreeListingTest : public TreeTest {
protected:
    // The names of a level, sorted; what the filter is asked for.
    std::string names(const std::string& path)
    {
        clickButton(path);
        std::vector<std::string> found;
        std::string text = listed(path) + " ";
        clickButton(path);
        for (std::size_t at = 0; at < text.size(); at = text.find(' ', at) + 1)
            found.push_back(text.substr(at, text.find(':', at) - at));
        std::ranges::sort(found);
        std::string sorted;
        for (const std::string& each : found)
            sorted += (sorted.empty() ? "" : " ") + each;
        return sorted;
    }
};

TEST_F(TreeListingTest, FoldersStandAboveFilesWithAButtonForWhatTheyHold)
{
    makeFolder("empty");
    write("full/x");
    write("file");
    open("Files");
    EXPECT_TRUE(listed("Files").ends_with(" file:6"));
    EXPECT_FALSE(hasButton("Files\\empty"));
    EXPECT_TRUE(hasButton("Files\\full"));
    EXPECT_FALSE(hasButton("Files\\file"));
}

TEST_F(TreeListingTest, WaitCursorStandsWhileALevelIsListedAndNoLonger)
{
    struct CursorCounter final : platform::window::Display {
        CursorCounter() { platform::window::setDisplay(this); }
        ~CursorCounter() override { platform::window::setDisplay(nullptr); }
        void changed(HWND, platform::window::Change change) override
        {
            changes += change == platform::window::Change::Cursor ? 1 : 0;
        }
        void textChanged(HWND, std::u16string_view) override {}
        int changes = 0;
    };
    makeFolder("A");
    CursorCounter cursor;
    open("Files");
    EXPECT_EQ(cursor.changes, 2);  // it came and went
    EXPECT_FALSE(platform::window::showsWaitCursor());
    clickButton("Files");
    click("Files");
    EXPECT_EQ(cursor.changes, 2);
}

TEST_F(TreeListingTest, FolderShowsAMarkOfWhateverBeginsLikeIt)
{
    write("A/B/x");
    write("A/Bc.txt");
    open("Files\\A");
    click("Files\\A\\Bc.txt");
    clickButton("Files\\A");
    open("Files\\A");
    EXPECT_EQ(listed("Files\\A"), "B:10 Bc.txt:7");
    EXPECT_EQ(count("Files\\A\\B"), 1);
}

TEST_F(TreeListingTest, RomFilesAreShownAndNeverMarked)
{
    write("rom");
    setAttributes("rom", FILE_ATTRIBUTE_INROM);
    open("Files");
    EXPECT_EQ(listed("Files"), "rom:8");
    click("Files\\rom");
    click("Files\\rom");
    EXPECT_EQ(listed("Files"), "rom:8");
    EXPECT_EQ(count("Files\\rom"), 0);
    EXPECT_EQ(markedFiles(), "");
    clickButton("Files");
    gOptions.showRomFiles = 0;  // from elsewhere
    open("Files");
    EXPECT_EQ(listed("Files"), "");
}

TEST_F(TreeListingTest, ExtensionFilterListsFoldersWithSomethingToShow)
{
    write("a.txt");
    write("b.TXT");
    write("c.doc");
    write("only/d.doc");
    write("deep/sub/e.bin");
    makeFolder("named.txt");
    useFilter(u"txt,h");
    EXPECT_EQ(names("Files"), "a.txt b.TXT deep named.txt named.txt only");
    clickButton("Files");
    EXPECT_FALSE(hasButton("Files\\only"));
    EXPECT_TRUE(hasButton("Files\\deep"));
    clickButton("Files");
    gOptions.extensions[0] = 0;  // an empty list: folders alone
    EXPECT_EQ(names("Files"), "deep named.txt only");
}

TEST_F(TreeListingTest, AttributesAndDateHideFilesAndNoFolders)
{
    write("old");
    write("exact");
    write("new");
    write("system");
    write("F/x");
    setAttributes("system", 4);
    setAttributes("F", 4);
    setTime("old", 1000);
    setTime("exact", 2000);
    setTime("new", 3000);
    setTime("system", 3000);
    setTime("F/x", 1000);
    gOptions.hiddenAttributes = 4;
    gOptions.hideByAttribute = 1;
    EXPECT_EQ(names("Files"), "F exact new old");
    gOptions.hideByAttribute = 0;
    useDate(2000);
    EXPECT_EQ(names("Files"), "F exact new system");
    clickButton("Files");
    EXPECT_TRUE(hasButton("Files\\F"));  // though all below is hidden
    open("Files\\F");
    EXPECT_EQ(listed("Files\\F"), "");
}

TEST_F(TreeListingTest, DifficultNamesAreShownAndMarked)
{
    const std::vector<std::string> difficult = {"\xFF\xFE", std::string(255, 'x'), "\u05D0\u05D1", "\U0001F600", "   "};
    for (const std::string& name : difficult)
        write(name);
    open("Files");
    for (const std::string& name : difficult)
        click("Files\\" + name);
    for (const std::string& name : difficult)
        EXPECT_EQ(image("Files\\" + name), 7) << name;
    EXPECT_EQ(gFileList->Count(), difficult.size());
    WCHAR path[MAX_PATH];
    DWORD bytes = 0;
    for (BOOL more = gFileList->First(path, &bytes); more; more = gFileList->Next(path, &bytes))
        EXPECT_NE(GetFileAttributesW(path), INVALID_FILE_ATTRIBUTES);
}

TEST_F(TreeListingTest, PathTooLongForTheListsIsLeftAlone)
{
    const std::string folder(150, 'f');
    write(folder + "/" + std::string(107, 'x'));  // 259 characters, with the backslashes
    write(folder + "/" + std::string(108, 'y'));
    open("Files\\" + folder);
    EXPECT_EQ(listed("Files\\" + folder), std::string(107, 'x') + ":6");
    click("Files\\" + folder + "\\" + std::string(107, 'x'));
    EXPECT_EQ(gFileList->Count(), 1U);
}

TEST_F(TreeListingTest, TreeFollowsTheBandsAboveIt)
{
    NMHDR header = {};
    header.code = RBN_HEIGHTCHANGE;
    SetWindowPos(window_, nullptr, 0, 0, 500, 200, SWP_NOMOVE | SWP_NOZORDER);
    TreeNotify(window_, 0, reinterpret_cast<LPARAM>(&header));
    RECT place = {};
    GetWindowRect(gTreeView, &place);
    POINT corner = {place.left, place.top};
    ScreenToClient(window_, &corner);
    EXPECT_EQ(corner.x, 1);
    EXPECT_EQ(corner.y, 1);  // there are no bands
    EXPECT_EQ(place.right - place.left, 500);
    EXPECT_EQ(corner.y + place.bottom - place.top, 200);
}

}  // namespace
