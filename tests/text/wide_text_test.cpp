#include "ce/text.h"

#include <gtest/gtest.h>

namespace {

TEST(WideTextTest, CopiesStayInTheirBuffers)
{
    WCHAR out[6] = u"#####";
    EXPECT_EQ(CopyText(out, u"abcdefgh"), 5U);
    EXPECT_EQ(std::u16string(out), u"abcde");
    EXPECT_EQ(CopyText(out, 3, u"x\xD83D\xDE00"), 1U);
    EXPECT_EQ(std::u16string(out), u"x");
    EXPECT_EQ(CopyText(out, 4, u"x\xD83D\xDE00"), 3U);
    out[0] = u'#';
    EXPECT_EQ(CopyText(out, 0, u"abc"), 0U);
    EXPECT_EQ(out[0], u'#');

    WCHAR padded[5] = u"####";
    EXPECT_EQ(wcsncpy(padded, u"ab", 4), padded);
    EXPECT_EQ(std::u16string(padded, 4), std::u16string(u"ab\0\0", 4));
    wcsncpy(padded, u"wxyz", 2);
    EXPECT_EQ(std::u16string(padded, 4), std::u16string(u"wx\0\0", 4));
}

TEST(WideTextTest, ComparisonsTellCaseAndPrefixApart)
{
    EXPECT_EQ(lstrcmpW(u"Names", u"Names"), 0);
    EXPECT_NE(lstrcmpW(u"Names", u"names"), 0);
    EXPECT_LT(lstrcmpW(u"a", u"ab"), 0);
    EXPECT_GT(lstrcmpW(u"\xFFFF", u"\x0001"), 0);
    EXPECT_EQ(lstrcmpiW(u"\\WINDOWS\\ÄŽΩЖ.TXT", u"\\windows\\äžωж.txt"), 0);
    EXPECT_LT(lstrcmpiW(u"QLT", u"qltx"), 0);
    EXPECT_GT(lstrcmpiW(u"b", u"A"), 0);
}

TEST(WideTextTest, NumbersStopAtTheRestAndAtTheEndsOfTheirRange)
{
    EXPECT_EQ(_wtol(u" \t\n+42 MB"), 42);
    EXPECT_EQ(_wtol(u"-7x"), -7);
    EXPECT_EQ(_wtol(u"MB"), 0);
    EXPECT_EQ(_wtol(u""), 0);
    EXPECT_EQ(_wtol(u"- 5"), 0);
    EXPECT_EQ(_wtol(u"99999999999999999999"), 2147483647);
    EXPECT_EQ(_wtol(u"-99999999999999999999"), -2147483647 - 1);
    EXPECT_EQ(_wtol(u"-2147483648"), -2147483647 - 1);
}

}  // namespace
