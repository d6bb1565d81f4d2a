// Where a MarkCount that something was taken from is below zero: each operation has a limit of its own.
#include "set/set_state.h"
#include "tree/marking.h"
#include "tree/tree_events.h"
#include "tree_fixture.h"

#include "ce/store.h"

namespace {

class MarkCountTest : public TreeTest {
protected:
    // "10 65530": the image and the count.
    static std::string look(const std::string& path)
    {
        return std::to_string(image(path)) + " " + std::to_string(count(path));
    }
};

TEST_F(MarkCountTest, FileThatLosesItsMarkTakesOneFromEachFolder)
{
    write("A/B/f");
    open("Files\\A\\B");
    click("Files\\A\\B\\f");
    setCount("Files\\A\\B\\f", 65531);
    setCount("Files\\A\\B", 65531);
    setCount("Files\\A", 65532);
    click("Files\\A\\B\\f");
    EXPECT_EQ(look("Files\\A\\B\\f"), "7 65530");
    EXPECT_EQ(look("Files\\A\\B"), "10 65530");
    EXPECT_EQ(look("Files\\A"), "9 0");

    setCount("Files\\A\\B", 65535);
    click("Files\\A\\B\\f");  // and going up it comes round to 0, marked all the same
    EXPECT_EQ(look("Files\\A\\B"), "10 0");
    EXPECT_EQ(look("Files\\A\\B\\f"), "7 65531");
    setCount("Files\\A\\B\\f", 65532);
    click("Files\\A\\B\\f");
    EXPECT_EQ(look("Files\\A\\B\\f"), "6 0");
}

TEST_F(MarkCountTest, DatabaseThatLosesItsMark)
{
    ASSERT_NE(CeCreateDatabase(u"Tasks", 0, 0, nullptr), 0U);
    open("Databases");
    click("Databases\\Tasks");
    for (const auto& [before, after] : {std::pair<WORD, std::string>{65531, "12 65530"}, {65532, "11 0"}}) {
        setCount("Databases\\Tasks", before);
        click("Databases\\Tasks");
        EXPECT_EQ(look("Databases\\Tasks"), after);
        click("Databases\\Tasks");
    }
}

TEST_F(MarkCountTest, RefreshClearsWhatIsBelowZero)
{
    write("A/f");
    write("A/g");
    open("Files\\A");
    setCount("Files\\A\\f", 65530);
    setCount("Files\\A\\g", 65531);
    RefreshMarks(item("Files\\A"));
    EXPECT_EQ(look("Files\\A\\f"), "7 65530");
    EXPECT_EQ(look("Files\\A\\g"), "6 0");
    setCount("Files\\A", 65531);
    setCount("Files\\A\\g", 65531);
    RefreshMarks(item("Files\\A"));
    EXPECT_EQ(look("Files\\A"), "9 0");
    EXPECT_EQ(look("Files\\A\\g"), "6 0");
}

TEST_F(MarkCountTest, UnmarkedFolderTakesFromWhatIsListedBelowAndClearsWhatStandsAbove)
{
    for (const char* name : {"P/Q/A/f", "P/Q/A/g", "P/Q/A/M/x", "P/Q/A/N/x"})
        write(name);
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
    EXPECT_EQ(look("Files\\P\\Q\\A\\f"), "7 65280");
    EXPECT_EQ(look("Files\\P\\Q\\A\\g"), "6 0");
    EXPECT_EQ(look("Files\\P\\Q\\A\\M"), "10 65280");
    EXPECT_EQ(look("Files\\P\\Q\\A\\N"), "9 0");
    EXPECT_EQ(look("Files\\P\\Q\\A"), "9 0");
    EXPECT_EQ(look("Files\\P\\Q"), "10 65520");
    EXPECT_EQ(look("Files\\P"), "9 0");
    EXPECT_EQ(look("Files"), "2 0");
}

TEST_F(MarkCountTest, MarkedFolderThatComesRoundToZeroKeepsItsTick)
{
    write("A/B/f");
    open("Files\\A");
    click("Files\\A\\B");
    setCount("Files\\A\\B", 65535);
    setCount("Files\\A", 65535);
    MarkFolder(1);
    EXPECT_EQ(look("Files\\A\\B"), "10 0");
    EXPECT_EQ(look("Files\\A"), "10 0");
    MarkFolder(1);
    EXPECT_EQ(look("Files\\A"), "10 1");
    EXPECT_EQ(markedFiles(), "\\A\\B\\f");
}

}  // namespace
