#include "text/case_folding.h"

#include <gtest/gtest.h>

namespace platform::text {
namespace {

std::u16string folded(std::u16string text)
{
    for (char16_t& character : text)
        character = foldCase(character);
    return text;
}

TEST(CaseFoldingTest, CapitalsOfEachScriptFoldToTheirSmallLetters)
{
    EXPECT_EQ(folded(u"AZ[@`az09"), u"az[@`az09");
    EXPECT_EQ(folded(u"ÀÖ×ØÞß÷ÿŸ"), u"àö×øþß÷ÿÿ");
    EXPECT_EQ(folded(u"ĀāĲĳŁłŇňŊŋŽžſĸŉ"), u"āāĳĳłłňňŋŋžžsĸŉ");
    EXPECT_EQ(folded(u"ΑΡΣΫΆΈΌΏςΪ"), u"αρσϋάέόώσϊ");
    EXPECT_EQ(folded(u"ЀЏАЯЁҐѠӀӁӎӏԮ"), u"ѐџаяёґѡӏӂӎӏԯ");
    EXPECT_EQ(folded(u"ԱՖẠỸẞＡＺ"), u"աֆạỹßａｚ");
    // Letters without case, and those with a dotted or dotless i, stay as they are.
    EXPECT_EQ(folded(u"İı日本\xD83D\xDE00\xFFFF\xF75C"), u"İı日本\xD83D\xDE00\xFFFF\xF75C");
}

TEST(CaseFoldingTest, FoldingTwiceChangesNothingMore)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const char16_t once = foldCase(static_cast<char16_t>(unit));
        ASSERT_EQ(foldCase(once), once) << unit;
    }
}

TEST(CaseFoldingTest, ComparisonIgnoresCaseAndPutsAPrefixFirst)
{
    EXPECT_EQ(compareWithoutCase(u"Übung", u"üBUNG"), 0);
    EXPECT_LT(compareWithoutCase(u"note", u"NOTES"), 0);
    EXPECT_GT(compareWithoutCase(u"NOTES", u"note"), 0);
    EXPECT_GT(compareWithoutCase(u"Zebra", u"apple"), 0);
    EXPECT_EQ(compareWithoutCase(u"", u""), 0);
}

}  // namespace
}  // namespace platform::text
