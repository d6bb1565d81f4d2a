#include "time/clock.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

std::u16string shortDate()
{
    WCHAR out[80];
    const int size = GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, out, 80);
    return size == 0 ? u"" : std::u16string(out, static_cast<std::size_t>(size) - 1);
}

TEST(ShortDateTest, FormatsOfLocalesKeepTheirOrderAndPadding)
{
    const std::pair<const char*, const char16_t*> formats[] = {
        {"%m/%d/%Y", u"MM/dd/yyyy"},
        {"%d.%m.%Y", u"dd.MM.yyyy"},
        {"%d/%m/%y", u"dd/MM/yy"},
        {"%Y-%m-%d", u"yyyy-MM-dd"},
        {"%e.%-m.%Y", u"d.M.yyyy"},
        {"%-d. %-m. %Y", u"d. M. yyyy"},
        {"%D", u"MM/dd/yy"},
        {"%F", u"yyyy-MM-dd"},
        {"%Y年%m月%d日", u"yyyy年MM月dd日"},
        {"%d %b %Y", u"dd MMM yyyy"},
        {"%Ey/%Om/%Od", u"yy/MM/dd"},
        {"%A %d de %B", u"dddd dd 'de' MMMM"},
        {"%%%q%", u"%"},
        {"", u""},
    };
    for (const auto& [host, picture] : formats)
        EXPECT_EQ(platform::time::pictureOfDateFormat(host), picture) << host;
}

TEST(ShortDateTest, EnvironmentDecidesAndAnUnknownLocaleCountsAsC)
{
    for (const char* name : {"C", "C.UTF-8", "xx_NOT_INSTALLED"}) {
        setenv("LC_ALL", name, 1);
        EXPECT_EQ(shortDate(), u"MM/dd/yy") << name;
    }
    unsetenv("LC_ALL");
    platform::time::setShortDateFormat(u"dd/MM/yyyy");
    EXPECT_EQ(shortDate(), u"dd/MM/yyyy");
    platform::time::setShortDateFormat({});
}

TEST(ShortDateTest, SmallBuffersAndOtherSettingsAreRefused)
{
    platform::time::setShortDateFormat(u"M/d/yy");
    WCHAR out[] = u"#######";
    const auto refusedWith = [&](LCID locale, DWORD setting, int characters) {
        SetLastError(0);
        return GetLocaleInfoW(locale, setting, out, characters) == 0 ? GetLastError() : 0;
    };
    EXPECT_EQ(GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, nullptr, 0), 7);
    EXPECT_EQ(refusedWith(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, 6), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(refusedWith(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, -1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(refusedWith(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE + 1, 8), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(refusedWith(0x407, LOCALE_SSHORTDATE, 8), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(refusedWith(LOCALE_SYSTEM_DEFAULT, 0x80000000 | LOCALE_SSHORTDATE, 8), ERROR_INVALID_FLAGS);
    EXPECT_EQ(std::u16string(out), u"#######");
    platform::time::setShortDateFormat({});
}

}  // namespace
