#include "text/wildcard.h"

#include <gtest/gtest.h>

using platform::text::Case;
using platform::text::matchesWildcards;

namespace {

TEST(WildcardTest, StarMatchesAnyTextAndQuestionMarkOneCharacter)
{
    struct Row {
        const char16_t* name;
        const char16_t* pattern;
        bool matches;
    };
    const Row rows[] = {
        {u"a.txt", u"*", true},
        {u"a.txt", u"*.txt", true},
        {u"A.TXT", u"*.txt", true},
        {u"a.txtx", u"*.txt", false},
        {u".txt", u"*.txt", true},
        {u"a.b.txt", u"*.txt", true},
        {u"txt", u"*.txt", false},
        {u"abc", u"a?c", true},
        {u"ac", u"a?c", false},
        {u"abc", u"abc?", false},
        {u"abc", u"a*b*c*", true},
        {u"acb", u"a*b*c", false},
        {u"aXbXXbc", u"a*bc", true},
        {u"\xD83D\xDCC1", u"?", true},
        {u"\xD83D\xDCC1", u"??", false},
        {u"\u00C4RGER", u"\u00E4rger", true},
        {u"\u0414\u0410", u"\u0434?", true},
        {u"\u03A9", u"\u03C9", true},
        {u"abc", u"", false},
    };
    for (const Row& each : rows)
        EXPECT_EQ(matchesWildcards(each.name, each.pattern, Case::Ignored), each.matches)
            << testing::PrintToString(std::u16string(each.name)) << " "
            << testing::PrintToString(std::u16string(each.pattern));
    EXPECT_TRUE(matchesWildcards(u"a\U0001F600.txt", u"a?.txt", Case::Counts));
    EXPECT_FALSE(matchesWildcards(u"A.TXT", u"a.txt", Case::Counts));
}

TEST(WildcardTest, PatternOfManyStarsIsMatchedInBoundedTime)
{
    std::u16string pattern;
    for (int i = 0; i < 100; ++i)
        pattern += u"a*";
    EXPECT_FALSE(matchesWildcards(std::u16string(258, u'a') + u"b", pattern + u"c", Case::Ignored));
}

}  // namespace
