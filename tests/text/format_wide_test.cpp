#include "ce/text.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

template <class... Arguments>
std::u16string formatted(const WCHAR* format, const Arguments&... arguments)
{
    WCHAR out[128];
    const int length = wsprintfW(out, format, arguments...);
    EXPECT_EQ(out[length], 0);
    return {out, static_cast<std::size_t>(length)};
}

TEST(FormatWideTest, NumbersShowTheBitsThatWerePassed)
{
    EXPECT_EQ(formatted(u"Backuped: %d", 260), u"Backuped: 260");
    EXPECT_EQ(formatted(u"%d %i", std::numeric_limits<LONG>::min(), 0), u"-2147483648 0");
    EXPECT_EQ(formatted(u"%d %u", DWORD{0xFFFFFFFF}, DWORD{0xFFFFFFFF}), u"-1 4294967295");
    EXPECT_EQ(formatted(u"%u %x", -1, -1), u"4294967295 ffffffff");
    EXPECT_EQ(formatted(u"%d %u", WORD{65535}, SHORT{-1}), u"65535 4294967295");
    EXPECT_EQ(formatted(u"%hd %hu %hx", 0x1FFFF, 0x1FFFF, 0x1FFFF), u"-1 65535 ffff");
    EXPECT_EQ(formatted(u"%ld %lu", 70000, 70000U), u"70000 70000");
    EXPECT_EQ(formatted(u"%d %u", std::numeric_limits<std::int64_t>::min(), ~std::uint64_t{0}),
              u"-9223372036854775808 18446744073709551615");
}

TEST(FormatWideTest, FlagsWidthAndPrecisionLayOutNumbers)
{
    EXPECT_EQ(formatted(u"LOG(%02d:%02d:%02d)", 9, 7, 3), u"LOG(09:07:03)");
    EXPECT_EQ(formatted(u"QLBX%04d.QLT|%08x|%08X", 7, 112, 0xABCDEF), u"QLBX0007.QLT|00000070|00ABCDEF");
    EXPECT_EQ(formatted(u"[%5d][%-5d][%05d][%-05d]", -42, -42, -42, -42), u"[  -42][-42  ][-0042][-42  ]");
    EXPECT_EQ(formatted(u"[%.3d][%6.3d][%06.3d][%.0d]", 7, -7, 7, 0), u"[007][  -007][   007][]");
    EXPECT_EQ(formatted(u"[%#x][%#X][%#x][%#08x]", 255, 255, 0, 255), u"[0xff][0XFF][0][0x0000ff]");
}

TEST(FormatWideTest, TextsAndCharactersOfBothWidths)
{
    EXPECT_EQ(formatted(u"%s|%S|%ls|%hs", u"wïde", "na\xC3\xAFve", u"w", "n"), u"wïde|naïve|w|n");
    EXPECT_EQ(formatted(u"[%5s][%-5s][%.2s][%5.1s]", u"abc", u"abc", u"abc", u"abc"), u"[  abc][abc  ][ab][    a]");
    EXPECT_EQ(formatted(u"%c%C%c|", u'é', 'x', 0), u"éx|");
    EXPECT_EQ(formatted(u"%s %S", static_cast<const WCHAR*>(nullptr), static_cast<const char*>(nullptr)),
              u"(null) (null)");
    EXPECT_EQ(formatted(u"[%.1s][%.3S]", u"\xD83D\xDE00", "ab\xF0\x9F\x98\x80"), u"[][ab]");
    const WCHAR unterminated[] = {u'a', u'b'};
    EXPECT_EQ(formatted(u"%.2s", unterminated), u"ab");
}

TEST(FormatWideTest, ConversionWithoutItsArgumentReadsNothing)
{
    EXPECT_EQ(formatted(u"a%db"), u"ab");
    EXPECT_EQ(formatted(u"%s|%d|%S|%d", 5, u"text", u"wide", 6), u"|||6");
    EXPECT_EQ(formatted(u"100%% %q %"), u"100% q ");
    EXPECT_EQ(formatted(u"%5"), u"");
}

TEST(FormatWideTest, TextIsCutAtTheCapacityAndAtAWholeCharacter)
{
    WCHAR out[] = u"##########";
    EXPECT_EQ(wnsprintfW(out, 5, u"%s", u"abcdef"), 4);
    EXPECT_EQ(std::u16string(out, 10), std::u16string(u"abcd\0#####", 10));
    EXPECT_EQ(wnsprintfW(out, 4, u"ab%s", u"\xD83D\xDE00"), 2);
    EXPECT_EQ(std::u16string(out), u"ab");
    EXPECT_EQ(wnsprintfW(out, 5, u"ab%s", u"\xD83D\xDE00"), 4);
    EXPECT_EQ(wnsprintfW(out, 4, u"%99999999999999999999d", 1), 3);
    EXPECT_EQ(std::u16string(out), u"   ");
    EXPECT_EQ(wnsprintfW(out, 4, u"%.99999999999999999999d", 1), 3);
    EXPECT_EQ(wnsprintfW(out, 1, u"abc"), 0);
    EXPECT_EQ(out[0], 0);
    out[0] = u'#';
    EXPECT_EQ(wnsprintfW(out, 0, u"abc"), 0);
    EXPECT_EQ(out[0], u'#');
}

}  // namespace
