// The calls of ce/text.h, case folding and wildcards.
#include "text/case_folding.h"
#include "text/wildcard.h"

#include "ce/text.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

namespace {

using platform::text::Case;
using platform::text::foldCase;
using platform::text::matchesWildcards;

template <class... Arguments>
std::u16string formatted(const WCHAR* format, const Arguments&... arguments)
{
    WCHAR out[128];
    const int length = wsprintfW(out, format, arguments...);
    EXPECT_EQ(out[length], 0);
    return {out, static_cast<std::size_t>(length)};
}

TEST(FormatTest, NumbersShowTheBitsThatWerePassedWithTheirZerosAndWidth)
{
    EXPECT_EQ(formatted(u"%d %d", std::numeric_limits<LONG>::min(), 0), u"-2147483648 0");
    EXPECT_EQ(formatted(u"%d %u", DWORD{0xFFFFFFFF}, DWORD{0xFFFFFFFF}), u"-1 4294967295");
    EXPECT_EQ(formatted(u"%u %x", -1, -1), u"4294967295 ffffffff");
    EXPECT_EQ(formatted(u"%d %u", WORD{65535}, SHORT{-1}), u"65535 4294967295");
    EXPECT_EQ(formatted(u"%d %u", std::numeric_limits<std::int64_t>::min(), ~std::uint64_t{0}),
              u"-9223372036854775808 18446744073709551615");
    EXPECT_EQ(formatted(u"QLBX%04d.QLT|%08x|%02d", 7, 112, 123), u"QLBX0007.QLT|00000070|123");
    EXPECT_EQ(formatted(u"[%5d][%05d][%5s]", -42, -42, u"abc"), u"[  -42][-0042][  abc]");
}

TEST(FormatTest, ConversionWithoutItsArgumentReadsNothing)
{
    EXPECT_EQ(formatted(u"a%db"), u"ab");
    EXPECT_EQ(formatted(u"%s|%d|%d", 5, u"text", 6), u"||6");
    EXPECT_EQ(formatted(u"%s", static_cast<const WCHAR*>(nullptr)), u"(null)");
    EXPECT_EQ(formatted(u"100%% %q %"), u"100% q ");
    EXPECT_EQ(formatted(u"%5"), u"");
}

TEST(FormatTest, TextIsCutAtTheCapacityAndAtAWholeCharacter)
{
    WCHAR out[] = u"##########";
    EXPECT_EQ(wnsprintfW(out, 5, u"%s", u"abcdef"), 4);
    EXPECT_EQ(std::u16string(out, 10), std::u16string(u"abcd\0#####", 10));
    EXPECT_EQ(wnsprintfW(out, 4, u"ab%s", u"\xD83D\xDE00"), 2);
    EXPECT_EQ(wnsprintfW(out, 5, u"ab%s", u"\xD83D\xDE00"), 4);
    EXPECT_EQ(wnsprintfW(out, 4, u"%99999999999999999999d", 1), 3);
    EXPECT_EQ(std::u16string(out), u"   ");
    EXPECT_EQ(wnsprintfW(out, 1, u"abc"), 0);
    EXPECT_EQ(out[0], 0);
    out[0] = u'#';
    EXPECT_EQ(wnsprintfW(out, 0, u"abc"), 0);
    EXPECT_EQ(out[0], u'#');
}

TEST(CopyTest, CopiesStayInTheirBuffers)
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

TEST(ComparisonTest, LstrcmpRespectsCaseLstrcmpiIgnoresItAndAPrefixComesFirst)
{
    EXPECT_EQ(lstrcmpW(u"Names", u"Names"), 0);
    EXPECT_NE(lstrcmpW(u"Names", u"names"), 0);
    EXPECT_LT(lstrcmpW(u"a", u"ab"), 0);
    EXPECT_GT(lstrcmpW(u"\xFFFF", u"\x0001"), 0);
    EXPECT_EQ(lstrcmpiW(u"\\WINDOWS\\ÄŽΩЖ.TXT", u"\\windows\\äžωж.txt"), 0);
    EXPECT_LT(lstrcmpiW(u"QLT", u"qltx"), 0);
    EXPECT_GT(lstrcmpiW(u"b", u"A"), 0);
}

TEST(ComparisonTest, CapitalsOfEachScriptFoldToSmallLettersAndFoldingTwiceChangesNothingMore)
{
    // Letters without case, and those with a dotted or dotless i, stay as they are.
    const std::pair<std::u16string, std::u16string> cases[] = {
        {u"AZ[@`az09", u"az[@`az09"},
        {u"ÀÖ×ØÞß÷ÿŸ", u"àö×øþß÷ÿÿ"},
        {u"ĀāĲĳŁłŇňŊŋŽžſĸŉ", u"āāĳĳłłňňŋŋžžsĸŉ"},
        {u"ΑΡΣΫΆΈΌΏςΪ", u"αρσϋάέόώσϊ"},
        {u"ЀЏАЯЁҐѠӀӁӎӏԮ", u"ѐџаяёґѡӏӂӎӏԯ"},
        {u"ԱՖẠỸẞＡＺ", u"աֆạỹßａｚ"},
        {u"İı日本\xD83D\xDE00\xFFFF\xF75C", u"İı日本\xD83D\xDE00\xFFFF\xF75C"},
    };
    for (const auto& [text, folded] : cases) {
        for (std::size_t i = 0; i < text.size(); ++i)
            EXPECT_EQ(foldCase(text[i]), folded[i]) << testing::PrintToString(text.substr(i, 1));
    }
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const char16_t once = foldCase(static_cast<char16_t>(unit));
        ASSERT_EQ(foldCase(once), once) << unit;
    }
}

TEST(NumberTest, NumbersAreReadUpToTheFirstOtherCharacterAndLimitedToTheirRange)
{
    const std::pair<const WCHAR*, LONG> cases[] = {{u" \t\n+42 MB", 42},
                                                   {u"-7x", -7},
                                                   {u"MB", 0},
                                                   {u"", 0},
                                                   {u"- 5", 0},
                                                   {u"99999999999999999999", 2147483647},
                                                   {u"-99999999999999999999", -2147483647 - 1}};
    for (const auto& [text, number] : cases)
        EXPECT_EQ(_wtol(text), number);
}

TEST(CodePageTest, TextIsConvertedIntoABufferOfTheSizeAskedForAndIntoNoSmallerOne)
{
    const std::tuple<std::u16string, int, std::string> rows[] = {
        {u"aé\u20AC\xD83D\xDE00", -1, std::string("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\0", 11)},
        {u"ab\u20AC", 3, "ab\xE2\x82\xAC"},
        // Lone surrogates. The count of 4 splits the pair at the end.
        {u"\xD83D-\xDE00\xD83D\xDE00", 4, "\xEF\xBF\xBD-\xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    for (const auto& [text, characters, bytes] : rows) {
        SCOPED_TRACE(bytes);
        std::string out(bytes.size() + 1, '#');
        const auto convert = [&, &text = text, characters = characters](char* to, std::size_t size) {
            return WideCharToMultiByte(CP_UTF8, 0, text.c_str(), characters, to, static_cast<int>(size), nullptr,
                                       nullptr);
        };
        EXPECT_EQ(convert(nullptr, 0), static_cast<int>(bytes.size()));
        EXPECT_EQ(convert(out.data(), bytes.size() - 1), 0);
        EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
        EXPECT_EQ(out.substr(bytes.size() - 1), "##");
        EXPECT_EQ(convert(out.data(), bytes.size()), static_cast<int>(bytes.size()));
        EXPECT_EQ(out, bytes + '#');
    }
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"é", 1, nullptr, 0, nullptr, nullptr), 2);
    EXPECT_EQ(GetACP(), CP_UTF8);
}

TEST(CodePageTest, InvalidArgumentsAreRefused)
{
    BOOL used = FALSE;
    const std::tuple<DWORD, UINT, DWORD, int, int, BOOL*> rows[] = {
        {ERROR_INVALID_PARAMETER, 1252, 0, -1, 8, nullptr},    {ERROR_INVALID_PARAMETER, CP_UTF8, 0, 0, 8, nullptr},
        {ERROR_INVALID_PARAMETER, CP_UTF8, 0, -2, 8, nullptr}, {ERROR_INVALID_PARAMETER, CP_UTF8, 0, -1, -1, nullptr},
        {ERROR_INVALID_PARAMETER, CP_UTF8, 0, -1, 8, &used},   {ERROR_INVALID_FLAGS, CP_UTF8, 1, -1, 8, nullptr},
    };
    char out[8];
    for (const auto& [error, page, flags, characters, bytes, usedDefault] : rows) {
        EXPECT_EQ(WideCharToMultiByte(page, flags, u"a", characters, out, bytes, nullptr, usedDefault), 0);
        EXPECT_EQ(GetLastError(), error);
    }
}

TEST(WildcardTest, StarMatchesAnyTextAndQuestionMarkOneCharacter)
{
    const std::tuple<std::u16string, std::u16string, bool> rows[] = {
        {u"a.txt", u"*", true},          {u"A.TXT", u"*.txt", true},  {u"a.txtx", u"*.txt", false},
        {u".txt", u"*.txt", true},       {u"txt", u"*.txt", false},   {u"abc", u"a?c", true},
        {u"ac", u"a?c", false},          {u"abc", u"abc?", false},    {u"abc", u"a*b*c*", true},
        {u"acb", u"a*b*c", false},       {u"aXbXXbc", u"a*bc", true}, {u"\xD83D\xDCC1", u"?", true},
        {u"\xD83D\xDCC1", u"??", false}, {u"ÄРΩ", u"äрω", true},      {u"abc", u"", false},
    };
    for (const auto& [name, pattern, matches] : rows)
        EXPECT_EQ(matchesWildcards(name, pattern, Case::Ignored), matches)
            << testing::PrintToString(name) << " " << testing::PrintToString(pattern);
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
