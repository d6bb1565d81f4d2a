#include "ce/text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(CodePageTest, SizeAskedForIsTheSizeWritten)
{
    const WCHAR text[] = u"aé\u20AC\xD83D\xDE00";
    const int size = WideCharToMultiByte(GetACP(), 0, text, -1, nullptr, 0, nullptr, nullptr);
    EXPECT_EQ(size, 1 + 2 + 3 + 4 + 1);
    char out[12] = {'#', '#', '#', '#', '#', '#', '#', '#', '#', '#', '#', '#'};
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, text, -1, out, size, nullptr, nullptr), size);
    EXPECT_EQ(std::string(out, 12), std::string("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\0#", 12));
}

TEST(CodePageTest, BufferOneByteShortIsRefusedAndNothingIsWrittenBehindIt)
{
    char out[5] = {'#', '#', '#', '#', '#'};
    SetLastError(0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"ab\u20AC", -1, out, 4, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(out[4], '#');
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"ab\u20AC", 3, out, 5, nullptr, nullptr), 5);
}

TEST(CodePageTest, LoneSurrogatesBecomeTheReplacementCharacter)
{
    char out[16];
    const WCHAR text[] = {0xD83D, u'a', 0xDE00, 0xD83D, 0xDE00};
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, text, 4, out, 16, nullptr, nullptr), 10);
    EXPECT_EQ(std::string(out, 10), "\xEF\xBF\xBD"
                                    "a\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(CodePageTest, ImpossibleArgumentsAreRefused)
{
    char out[8];
    BOOL used = FALSE;
    const auto refused = [&](DWORD error, UINT page, DWORD flags, int characters, int bytes, BOOL* usedDefault) {
        SetLastError(0);
        return WideCharToMultiByte(page, flags, u"a", characters, out, bytes, nullptr, usedDefault) == 0 &&
               GetLastError() == error;
    };
    EXPECT_TRUE(refused(ERROR_INVALID_PARAMETER, 1252, 0, -1, 8, nullptr));
    EXPECT_TRUE(refused(ERROR_INVALID_PARAMETER, CP_UTF8, 0, 0, 8, nullptr));
    EXPECT_TRUE(refused(ERROR_INVALID_PARAMETER, CP_UTF8, 0, -2, 8, nullptr));
    EXPECT_TRUE(refused(ERROR_INVALID_PARAMETER, CP_UTF8, 0, -1, -1, nullptr));
    EXPECT_TRUE(refused(ERROR_INVALID_PARAMETER, CP_UTF8, 0, -1, 8, &used));
    EXPECT_TRUE(refused(ERROR_INVALID_FLAGS, CP_UTF8, 1, -1, 8, nullptr));
}

}  // namespace
