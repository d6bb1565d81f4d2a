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
    EXPECT_EQ(formatted(u"%d %d", std::numeric_limits<LONG>::min(), 0), u"-2147483648 0");
    EXPECT_EQ(formatted(u"%d %u", DWORD{0xFFFFFFFF}, DWORD{0xFFFFFFFF}), u"-1 4294967295");
    EXPECT_EQ(formatted(u"%u %x", -1, -1), u"4294967295 ffffffff");
    EXPECT_EQ(formatted(u"%d %u", WORD{65535}, SHORT{-1}), u"65535 4294967295");
    EXPECT_EQ(formatted(u"%d %u", std::numeric_limits<std::int64_t>::min(), ~std::uint64_t{0}),
              u"-9223372036854775808 18446744073709551615");
}

TEST(FormatWideTest, ZerosAndWidthPadNumbersAndTexts)
{
    EXPECT_EQ(formatted(u"LOG(%02d:%02d:%02d)", 9, 7, 123), u"LOG(09:07:123)");
    EXPECT_EQ(formatted(u"QLBX%04d.QLT|%08x", 7, 112), u"QLBX0007.QLT|00000070");
    EXPECT_EQ(formatted(u"[%5d][%05d][%5s]", -42, -42, u"abc"), u"[  -42][-0042][  abc]");
}

TEST(FormatWideTest, ConversionWithoutItsArgumentReadsNothing)
{
    EXPECT_EQ(formatted(u"a%db"), u"ab");
    EXPECT_EQ(formatted(u"%s|%d|%d", 5, u"text", 6), u"||6");
    EXPECT_EQ(formatted(u"%s", static_cast<const WCHAR*>(nullptr)), u"(null)");
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
    EXPECT_EQ(wnsprintfW(out, 1, u"abc"), 0);
    EXPECT_EQ(out[0], 0);
    out[0] = u'#';
    EXPECT_EQ(wnsprintfW(out, 0, u"abc"), 0);
    EXPECT_EQ(out[0], u'#');
}

}  // namespace
