#include "command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using platform::device::CommandLine;
using platform::device::parseCommandLine;
using platform::device::ParsedCommandLine;
using testing::HasSubstr;

ParsedCommandLine parse(std::vector<const char*> words)
{
    words.insert(words.begin(), "quillbox");
    return parseCommandLine(static_cast<int>(words.size()), words.data());
}

CommandLine accepted(const std::vector<const char*>& words)
{
    const ParsedCommandLine parsed = parse(words);
    EXPECT_EQ(parsed.message, "");
    EXPECT_EQ(parsed.exitCode, 0);
    return parsed.options.value_or(CommandLine{});
}

std::string refused(const std::vector<const char*>& words)
{
    const ParsedCommandLine parsed = parse(words);
    EXPECT_FALSE(parsed.options);
    EXPECT_EQ(parsed.exitCode, 2);
    EXPECT_NE(parsed.message, "");
    return parsed.message;
}

TEST(CommandLineTest, NothingGivenMeansTheDefaultDeviceAndAWindow)
{
    const CommandLine options = accepted({});
    EXPECT_EQ(options.device, platform::device::defaultDeviceFolder().value());
    EXPECT_TRUE(options.extras.empty());
    EXPECT_FALSE(options.script);
    EXPECT_FALSE(options.transcript);
    EXPECT_EQ(options.timeout, std::chrono::seconds(60));
}

TEST(CommandLineTest, CardsAndFoldersKeepTheirPathsWhateverTheyHold)
{
    const CommandLine options =
        accepted({"--device", "/my, device", "--card", "Stick=/media/a,b=c,capacity=1000", "--card=Full=/x,capacity=0",
                  "--folder", "Docs=/home/[me],capacity=5", "--card", "Odd=/a,capacity=x/b,capacity=7", "--card",
                  "Max=/m,capacity=9223372036854775807", "--card", "P=/p"});
    EXPECT_EQ(options.device, "/my, device");
    ASSERT_EQ(options.extras.size(), 6U);
    const auto find = [&](const std::string& name) {
        for (const auto& extra : options.extras)
            if (extra.name == name)
                return extra;
        return platform::device::ExtraFolder{};
    };
    EXPECT_EQ(find("Stick").folder, "/media/a,b=c");
    EXPECT_EQ(find("Stick").capacity, 1000U);
    EXPECT_TRUE(find("Stick").card);
    EXPECT_EQ(find("Full").capacity, 0U);
    EXPECT_EQ(find("Docs").folder, "/home/[me],capacity=5");  // a folder has no capacity: it is part of the path
    EXPECT_FALSE(find("Docs").card);
    EXPECT_EQ(find("Odd").folder, "/a,capacity=x/b");
    EXPECT_EQ(find("Max").capacity, 9223372036854775807U);
    EXPECT_FALSE(find("P").capacity);
}

TEST(CommandLineTest, CardsThatMakeNoSenseAreRefusedBeforeAnythingIsOpened)
{
    for (const char* card : {"Stick", "=/x", "Stick=", "", "S=,capacity=5"})
        EXPECT_NE(refused({"--card", card}), "") << card;
    for (const char* capacity : {"S=/x,capacity=", "S=/x,capacity=5k", "S=/x,capacity=-1", "S=/x,capacity= 5",
                                 "S=/x,capacity=9223372036854775808", "S=/x,capacity=99999999999999999999"})
        EXPECT_THAT(refused({"--card", capacity}), HasSubstr("not a number of bytes")) << capacity;
    EXPECT_THAT(refused({"--card", "A=/x", "--folder", "A=/y"}), HasSubstr("\"A\" is given twice"));
    EXPECT_THAT(refused({"--card", "A=/x", "--card", "A=/x"}), HasSubstr("\"A\" is given twice"));
    EXPECT_EQ(accepted({"--card", "A=/x", "--card", "a=/y"}).extras.size(), 2U);  // case counts
}

TEST(CommandLineTest, ScriptOptionsBelongToAScript)
{
    const CommandLine options = accepted({"--script", "-", "--timeout", "0", "--transcript", "-"});
    EXPECT_EQ(options.script, "-");
    EXPECT_EQ(options.transcript, "-");
    EXPECT_EQ(options.timeout.count(), 0);
    EXPECT_EQ(accepted({"--script", "s", "--timeout", "0.25"}).timeout.count(), 250);
    (void)refused({"--timeout", "5"});
    (void)refused({"--transcript", "t"});
    for (const char* timeout : {"-1", "soon", "nan", "inf", "1e300", ""})
        EXPECT_NE(refused({"--script", "s", "--timeout", timeout}), "") << timeout;
}

TEST(CommandLineTest, UnknownWordsAreBadUsageAndHelpIsNot)
{
    const std::vector<const char*> lines[] = {{"--frobnicate"},
                                              {"backup"},
                                              {"--card", "A=/x", "B=/y"},
                                              {"--device"},
                                              {"--device", ""},
                                              {"--script", "a", "--script", "b"},
                                              {"--device", "a", "--device", "b"}};
    for (const auto& line : lines)
        EXPECT_NE(refused(line), "") << testing::PrintToString(line);
    for (const char* option : {"--help", "--version"}) {
        const ParsedCommandLine parsed = parse({option});
        EXPECT_FALSE(parsed.options);
        EXPECT_EQ(parsed.exitCode, 0);
        EXPECT_THAT(parsed.message, HasSubstr("quillbox"));
    }
}

}  // namespace
