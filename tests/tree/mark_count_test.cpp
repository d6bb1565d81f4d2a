// A mark count wraps at 65,536. Each operation has its own limit, above which it treats a count as negative.
#include "set/set_state.h"
#include "tree/marking.h"
#include "tree/tree_events.h"
#include "tree_fixture.h"

#include "ce/store.h"

namespace {

class MarkCountTest : public TreeTest {};

TEST_F(MarkCountTest, FileThatLosesItsMarkTakesOneFromEachFolder)
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
    click("Files\\A\\B\\f");  // counting up, it wraps to 0 and still shows its tick
    EXPECT_EQ(marks("Files\\A\\B"), "B:10:0 f:7:65531");
    setCount("Files\\A\\B\\f", 65532);
    click("Files\\A\\B\\f");
    EXPECT_EQ(marks("Files\\A\\B\\f"), "f:6:0");
}

TEST_F(MarkCountTest, DatabaseThatLosesItsMarkIsClearedBelowZero)
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

TEST_F(MarkCountTest, RefreshClearsWhatIsBelowZero)
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

TEST_F(MarkCountTest, UnmarkedFolderTakesFromItsListedChildrenAndClearsTheFoldersAbove)
{
    write({"P/Q/A/f", "P/Q/A/g", "P/Q/A/M/x", "P/Q/A/N/x"});
    open("Files\\P\\Q\\A");
    click("Files\\P\\Q\\A");
    setCount("Files\\P\\Q\\A\\f", 65281);
    setCount("Files\\P\\Q\\A\\g", 65282);
    setCount("Files\\P\\Q\\A\\M", 65281);  // collapsed, so it counts as one
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
