#include "text/host_name.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

namespace platform::text {
namespace {

TEST(HostNameTest, EachByteHasItsCharacterAndComesBack)
{
    std::set<std::u16string> seen;
    for (unsigned byte = 1; byte < 256; ++byte) {
        if (byte == '/' || byte == '.')
            continue;
        SCOPED_TRACE(byte);
        const std::string host(1, static_cast<char>(byte));
        const std::u16string device = toDeviceName(host);
        ASSERT_EQ(device.size(), 1U);
        const bool plain = byte < 0x80 && std::string("\\*?\"<>|").find(host) == std::string::npos;
        EXPECT_EQ(device[0], plain ? byte : 0xF700 + byte);
        EXPECT_TRUE(seen.insert(device).second);
        EXPECT_EQ(toHostName(device), host);
    }
}

TEST(HostNameTest, ValidTextKeepsItsCharactersAndAnEscapeIsNotReadAsItsByte)
{
    EXPECT_EQ(toDeviceName("Grüße 日本 \xF0\x9F\x98\x80.txt"), u"Grüße 日本 \xD83D\xDE00.txt");
    EXPECT_EQ(toHostName(u"Grüße 日本 \xD83D\xDE00.txt"), "Grüße 日本 \xF0\x9F\x98\x80.txt");
    EXPECT_EQ(toDeviceName("a\xEE\x80\x80"), u"a\xE000");                // private use, but no escape
    EXPECT_EQ(toDeviceName("x\xEF\x9D\x9Cy"), u"x\xF7EF\xF79D\xF79Cy");  // the escape of a backslash
    EXPECT_EQ(toDeviceName("a\xE2\x82x"), u"a\xF7E2\xF782x");
    EXPECT_EQ(toDeviceName("\xEF\xBF\xBF"), u"\xFFFF");            // the last of the basic plane
    EXPECT_EQ(toDeviceName("\xF0\x90\x81\x9C"), u"\xD800\xDC5C");  // the low byte of the second unit is a backslash
}

TEST(HostNameTest, NameThatIsReservedInvalidAmbiguousOrTooLongIsRefused)
{
    const auto expectRefused = [](const char* what, const std::vector<std::u16string>& names) {
        for (const std::u16string& name : names)
            EXPECT_EQ(toHostName(name), std::nullopt) << what << " " << testing::PrintToString(name);
    };
    expectRefused("reserved name", {u"", u".", u".."});
    expectRefused("reserved character", {u"a/b", u"a\\b", u"a*", u"a?", u"a\"", u"<", u">", u"|", {u'a', 0, u'b'}});
    expectRefused("escape of a slash or NUL", {u"\xF72F", {u'a', 0xF72F, u'b'}, u"\xF700"});
    expectRefused("escape of a point", {u"\xF72E", u"\xF72E\xF72E", u".\xF72E", u"\xF72E.", u"\xF72E.x"});
    expectRefused("escape of a letter or a whole character", {u"\xF741", u"\xF7C3\xF7A9"});
    expectRefused("lone surrogate", {u"\xD83D", u"a\xDE00z", u"\xDE00\xD83D"});
    expectRefused("more than 255 bytes", {std::u16string(256, u'a'), std::u16string(128, u'é')});
    EXPECT_TRUE(toHostName(std::u16string(255, u'a')));
    EXPECT_EQ(toHostName(u"..."), "...");
    EXPECT_EQ(toHostName(u"\xF7EF\xF79C"), "\xEF\x9C");  // incomplete UTF-8
}

TEST(HostNameTest, RandomHostNamesComeBackAndRandomDeviceNamesHaveAtMostOneHostName)
{
    std::mt19937 random(20261124);
    // Bytes and code units of difficult combinations are drawn more often than others.
    const std::string bytes =
        "a.\\?\xEF\x9C\x9D\x9F\x80\xBF\xC3\xA9\xE2\xF0\xED\xFF"  // next line: overlong and out-of-range forms
        "\xC0\xAF\xE0\xA0\xF4\x90\xF5";
    const std::u16string units = u"a.\xF72E\xF72F\xF700\xF7EF\xF79C\xF780\xF7C3\xF7A9\xD83D\xDE00";
    for (int round = 0; round < 40000; ++round) {
        std::string host;
        for (auto length = 1 + random() % 12; length > 0; --length) {
            const auto drawn = random() % 3 == 0 ? static_cast<char>(random()) : bytes[random() % bytes.size()];
            host.push_back(drawn == 0 || drawn == '/' ? 'x' : drawn);
        }
        if (host != "." && host != "..") {
            ASSERT_EQ(toHostName(toDeviceName(host)), host) << testing::PrintToString(host);
        }
        std::u16string device;
        for (auto length = 1 + random() % 6; length > 0; --length)
            device.push_back(units[random() % units.size()]);
        if (const auto name = toHostName(device)) {
            ASSERT_EQ(toDeviceName(*name), device) << testing::PrintToString(device);
            ASSERT_EQ(name->find_first_of(std::string("/\0", 2)), std::string::npos);
            ASSERT_TRUE(*name != "." && *name != "..");
        }
    }
}

TEST(HostNameTest, ShownNameHasThePlainCharactersAndDiffersFromOtherNames)
{
    EXPECT_EQ(toShown(toDeviceName("What? \"a*b\" <1|2>.txt")), u"What? \"a*b\" <1|2>.txt");
    // A backslash within a name is shown differently from one between names.
    EXPECT_EQ(toShown(u"\\" + toDeviceName("a\\b") + u"\\c"), u"\\a\u2216b\\c");
    EXPECT_EQ(toShown(toDeviceName("caf\xE9")), u"caf\uFFFDE9");
    EXPECT_NE(toShown(toDeviceName("caf\xE9")), toShown(toDeviceName("caf\xE8")));
    EXPECT_EQ(toShown(u"Grüße \xD83D\xDE00 \xE000"), u"Grüße \xD83D\xDE00 \xE000");
    // Names on the host never give these escapes, but a set can contain them. They aren't shown as a separator, a point
    // or a letter.
    EXPECT_EQ(toShown(u"\xF72F\xF72E\xF741\xF700"), u"\xF72F\xF72E\xF741\xF700");
}

TEST(HostNameTest, PlainTextReplacesWhatIsInvalid)
{
    EXPECT_EQ(toUtf8(u"a\xD83Dz\xD83D\xDE00\xDE00"), "a\xEF\xBF\xBDz\xF0\x9F\x98\x80\xEF\xBF\xBD");
    EXPECT_EQ(fromUtf8("a\xC3\xA9\xFFz\xE2\x82"), u"aé\xFFFDz\xFFFD\xFFFD");
    EXPECT_EQ(toUtf8(u"\xF75C"), "\xEF\x9D\x9C");
}

}  // namespace
}  // namespace platform::text
