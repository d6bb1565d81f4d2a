// How lines of a script become actions, and the errors for lines that aren't actions.

#include "pattern.h"
#include "script.h"

#include "ce/dialog.h"

#include <gtest/gtest.h>

#include <sstream>

namespace platform::headless {
namespace {

Script parse(const std::string& text)
{
    std::istringstream in(text);
    return parseScript(in);
}

TEST(ScriptTest, EachKindOfLineBecomesItsAction)
{
    const Script script = parse("\xEF\xBB\xBF# a backup\r\n"
                                "\n"
                                "command 40003   # the menu\r\n"
                                "\twait \"Full Backup\"\n"
                                "type 1004 \"say \"\"hi\"\" # \\n \xC3\xA4\"#end\n"
                                "answer \"Override*\" no\n"
                                "key \"Ctrl+Shift+x\"\n"
                                "expect text \"No*\"\n"
                                "expect 1002 \"text\"\n"
                                "print text\n"
                                "print 1006\n"
                                "ok");
    ASSERT_EQ(script.error, "");
    ASSERT_EQ(script.actions.size(), 10u);
    const auto at = [&](std::size_t i) { return script.actions[i]; };
    EXPECT_EQ(at(0).verb, Verb::Command);
    EXPECT_EQ(at(0).id, 40003);
    EXPECT_EQ(at(0).line, 3);
    EXPECT_EQ(at(0).words, "command 40003");
    EXPECT_EQ(at(1).text, u"Full Backup");
    EXPECT_EQ(at(2).verb, Verb::Type);
    EXPECT_EQ(at(2).text, u"say \"hi\" # \\n \u00E4");
    EXPECT_EQ(at(3).answer, IDNO);
    EXPECT_EQ(at(3).text, u"Override*");
    EXPECT_EQ(at(4).key.virtualKey, u'X');
    EXPECT_TRUE(at(4).key.control && at(4).key.shift && !at(4).key.alt);
    EXPECT_EQ(at(5).verb, Verb::ExpectText);
    EXPECT_EQ(at(6).verb, Verb::Expect);
    EXPECT_EQ(at(7).verb, Verb::PrintText);
    EXPECT_EQ(at(8).verb, Verb::Print);
    EXPECT_EQ(at(9).verb, Verb::Ok);
    EXPECT_EQ(at(9).line, 12);
}

TEST(ScriptTest, LineThatIsNoActionIsRefusedWithItsNumberAndReason)
{
    const std::pair<const char*, const char*> refused[] = {
        {"expand Files", "\"Files\" has to stand in double quotes"},
        {"expect image \"Files\"", "it should look like: expect image"},
        {"expect image \"Files\" -1", "\"-1\" is no image"},
        {"print trees", "\"trees\" is no id"},
        {"date \"2026-11-24\"", "it should look like: date"},
        {"Ok", "\"Ok\" is not known"},
        {"\"ok\"", "\"ok\" is not known"},
        {"ok 1", "it should look like: ok"},
        {"wait", "it should look like: wait \"Select\""},
        {"wait Select", "\"Select\" has to stand in double quotes"},
        {"type 1004 \"open", "a text has no closing quote"},
        {"type 1004 \"a\"b", "after a text's closing quote comes a blank"},
        {"press 0", "\"0\" is no id"},
        {"press 65535", "\"65535\" is no id"},
        {"press 99999999999999999999", "is no id"},
        {"press 10x", "\"10x\" is no id"},
        {"press \"10\"", "\"10\" is no id"},
        {"answer \"*\" maybe", "\"maybe\" is no answer"},
        {"key \"Ctrl+\"", "the key \"Ctrl+\" is not known"},
        {"key \"down\"", "the key \"down\" is not known"},
    };
    for (const auto& [line, reason] : refused) {
        const Script script = parse("idle\n" + std::string(line) + "\nok\n");
        EXPECT_TRUE(script.error.starts_with("line 2: ")) << line << ": " << script.error;
        EXPECT_NE(script.error.find(reason), std::string::npos) << line << ": " << script.error;
    }
}

TEST(PatternTest, TextOfSeveralLinesIsMatchedAsOneLine)
{
    EXPECT_EQ(onOneLine(u"a\r\nb\nc\rd"), u"a\\nb\\nc\\nd");
    EXPECT_TRUE(matches(u"a\\n*", onOneLine(u"a\r\nb")));
    EXPECT_FALSE(matches(u"A*", u"ab"));
}

}  // namespace
}  // namespace platform::headless
