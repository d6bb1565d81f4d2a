#include "command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using platform::device::CommandLine;
using platform::device::ParsedCommandLine;
using testing::HasSubstr;
using Words = std::vector<const char*>;

ParsedCommandLine parse(Words words)
{
    words.insert(words.begin(), "quillbox");
    return platform::device::parseCommandLine(static_cast<int>(words.size()), words.data());
}

CommandLine accepted(const Words& words)
{
    const ParsedCommandLine parsed = parse(words);
    EXPECT_EQ(parsed.message, "");
    EXPECT_EQ(parsed.exitCode, 0);
    return parsed.options.value_or(CommandLine{});
}

TEST(CommandLineTest, OptionsThatAreNotGivenHaveTheirDefaults)
{
    const CommandLine defaults = accepted({});
    EXPECT_EQ(defaults.device, platform::device::defaultDeviceFolder().value());
    EXPECT_TRUE(defaults.extras.empty() && !defaults.script && !defaults.transcript);
    EXPECT_EQ(accepted({"--script", "s"}).timeout, std::chrono::seconds(60));
    EXPECT_EQ(accepted({"--script", "s", "--timeout", "0"}).timeout.count(), 0);
    EXPECT_EQ(accepted({}).mediaFolders, platform::device::usualMediaFolders());
    EXPECT_TRUE(accepted({"--script", "s"}).mediaFolders.empty() && accepted({"--media", ""}).mediaFolders.empty());
    EXPECT_EQ(accepted({"--script", "s", "--media", "/m"}).mediaFolders, std::vector<std::filesystem::path>{"/m"});
    EXPECT_EQ(accepted({"/a/QLBX0001.QLT"}).set, "/a/QLBX0001.QLT");
    const CommandLine options =
        accepted({"--device", "/my, device", "--script", "-", "--timeout=0.25", "--transcript=t"});
    EXPECT_EQ(options.device, "/my, device");
    EXPECT_EQ(options.script, "-");
    EXPECT_EQ(options.transcript, "t");
    EXPECT_EQ(options.timeout.count(), 250);
}

TEST(CommandLineTest, PathOfACardOrFolderIsKeptWhateverCharactersItHas)
{
    const std::tuple<const char*, const char*, const char*, std::optional<std::uint64_t>> extras[] = {
        {"--card", "X=/p", "/p", {}},
        {"--card", "X=/media/a,b=c,capacity=1000", "/media/a,b=c", 1000},
        {"--card", "X=/x,capacity=0", "/x", 0},
        {"--card", "X=/a,capacity=x/b,capacity=7", "/a,capacity=x/b", 7},
        {"--card", "X=/m,capacity=9223372036854775807", "/m", 9223372036854775807U},
        {"--folder", "X=/home/[me],capacity=5", "/home/[me],capacity=5", {}},  // a folder has no capacity
    };
    for (const auto& [option, word, folder, capacity] : extras) {
        SCOPED_TRACE(word);
        const auto found = accepted({option, word}).extras;
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found[0].name, "X");
        EXPECT_EQ(found[0].folder, folder);
        EXPECT_EQ(found[0].capacity, capacity);
        EXPECT_EQ(found[0].card, option == std::string("--card"));
    }
    EXPECT_EQ(accepted({"--card", "A=/x", "--card", "a=/y"}).extras.size(), 2U) << "case counts";
}

TEST(CommandLineTest, WordsThatMakeNoSenseAreBadUsage)
{
    const auto refused = [](const Words& words, const char* message) {
        SCOPED_TRACE(testing::PrintToString(words));
        const ParsedCommandLine parsed = parse(words);
        EXPECT_FALSE(parsed.options);
        EXPECT_EQ(parsed.exitCode, 2);
        EXPECT_NE(parsed.message, "");
        EXPECT_THAT(parsed.message, HasSubstr(message));
    };
    for (const char* word : {"--frobnicate", "backup", "--device"})
        refused({word}, "");
    for (const char* option : {"--device", "--script"})
        refused({option, "a", option, "b"}, "");
    for (const char* option : {"--timeout", "--transcript"})
        refused({option, "5"}, "");  // both need a script
    refused({"--device", ""}, "");
    refused({"a.QLT", "b.QLT"}, "");
    refused({"--script", "s", "a.QLT"}, "");
    refused({"--card", "A=/x", "B=/y"}, "");
    for (const char* option : {"--card", "--folder"})
        refused({"--card", "A=/x", option, "A=/x"}, "\"A\" is given twice");
    for (const char* timeout : {"-1", "soon", "nan", "inf", "1e300", ""})
        refused({"--script", "s", "--timeout", timeout}, "");
    for (const char* card : {"Stick", "=/x", "Stick=", "", "S=,capacity=5"})
        refused({"--card", card}, "");
    for (const char* card : {"S=/x,capacity=", "S=/x,capacity=5k", "S=/x,capacity=-1", "S=/x,capacity= 5",
                             "S=/x,capacity=9223372036854775808", "S=/x,capacity=99999999999999999999"})
        refused({"--card", card}, "not a number of bytes");
}

}  // namespace
