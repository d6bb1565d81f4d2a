#include "ce/text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(CodePageTest, TextIsConvertedIntoABufferOfTheSizeAskedForAndIntoNoSmallerOne)
{
    struct Case {
        std::u16string text;
        int characters;
        std::string bytes;
    };
    const Case cases[] = {
        {u"aé\u20AC\xD83D\xDE00", -1, std::string("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\0", 11)},
        {u"ab\u20AC", 3, "ab\xE2\x82\xAC"},
        // Lone surrogates. The count divides the pair at the end.
        {u"\xD83D-\xDE00\xD83D\xDE00", 4, "\xEF\xBF\xBD-\xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    for (const Case& each : cases) {
        const std::string& bytes = each.bytes;
        SCOPED_TRACE(bytes);
        const auto convert = [&](char* out, std::size_t size) {
            return WideCharToMultiByte(CP_UTF8, 0, each.text.c_str(), each.characters, out, static_cast<int>(size),
                                       nullptr, nullptr);
        };
        EXPECT_EQ(convert(nullptr, 0), static_cast<int>(bytes.size()));
        std::string out(bytes.size() + 1, '#');
        EXPECT_EQ(convert(out.data(), bytes.size()), static_cast<int>(bytes.size()));
        EXPECT_EQ(out, bytes + '#');
        out.assign(out.size(), '#');
        SetLastError(0);
        EXPECT_EQ(convert(out.data(), bytes.size() - 1), 0);
        EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
        EXPECT_EQ(out.substr(bytes.size() - 1), "##");
    }
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"é", 1, nullptr, 0, nullptr, nullptr), 2);
    EXPECT_EQ(GetACP(), CP_UTF8);
}

TEST(CodePageTest, InvalidArgumentsAreRefused)
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
