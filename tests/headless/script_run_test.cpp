// Scripts that drive a real program through the real window core.

#include "headless/script_run.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"
#include "small_program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace platform::headless {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Outcome {
    int code = -1;
    std::string output;
    std::string errors;
    std::string transcript;
    std::vector<std::string> diary;
};

// Ends any wait of a program at rest at once.
constexpr std::chrono::milliseconds Impatient(1);
// Longer than any host delays a program.
constexpr std::chrono::milliseconds Patient = std::chrono::minutes(5);

class ScriptRunTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(resource::setResources(quillbox::embeddedResources()));
        (void)small::diary().take();
    }

    static Outcome run(const std::string& text, std::chrono::milliseconds timeout = Patient)
    {
        std::istringstream in(text);
        std::ostringstream output;
        std::ostringstream errors;
        std::ostringstream transcript;
        ScriptOptions options;
        options.timeout = timeout;
        options.output = &output;
        options.errors = &errors;
        options.transcript = &transcript;
        Outcome outcome;
        outcome.code = runScript(small::program, in, options);
        outcome.output = output.str();
        outcome.errors = errors.str();
        outcome.transcript = transcript.str();
        outcome.diary = small::diary().take();
        return outcome;
    }
};

TEST_F(ScriptRunTest, BadScriptStartsNothing)
{
    const Outcome outcome = run("idle\nunfold \"Files\"\n");
    EXPECT_EQ(outcome.code, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("line 2: \"unfold\" is not known"));
    EXPECT_THAT(outcome.diary, IsEmpty());
    EXPECT_EQ(outcome.transcript, "");
}

TEST_F(ScriptRunTest, DialogGetsWhatTheScriptTypesAndChecks)
{
    const Outcome outcome = run("answer \"*\" yes\n"
                                "command 40003\n"
                                "wait \"Full Backup\"\n"
                                "type 1004 \"old\"\n"
                                "clear 1004\n"
                                "type 1004 \"c:\\new\"\n"
                                "key \"Enter\"\n"
                                "type 1004 \"\xE2\x82\xAC\"\n"
                                "check 1005\n"
                                "check 1005\n"
                                "check 1006\n"
                                "uncheck 1006\n"
                                "uncheck 1007\n"
                                "expect 1004 \"c:\\new\\n?\"\n"
                                "expect 1005 \"[x] All files\"\n"
                                "print 1006\n"
                                "print 1004\n"
                                "print text\n"
                                "ok\n"
                                "idle\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.diary, ElementsAre("c:\\new\r\n\xE2\x82\xAC 100", "override 6", "closed"));
    EXPECT_EQ(outcome.output, "[ ] All databases\n"
                              "c:\\new\\n\xE2\x82\xAC\n"
                              "Full Backup\\nBackupset comments\\nc:\\new\\n\xE2\x82\xAC\n");
}

TEST_F(ScriptRunTest, RowsAreSelectedByTheRulesOfTheList)
{
    const Outcome outcome = run("command 40005\n"
                                "select 1006 \"Registry\"\n"
                                "select 1006 \"File:\\a\"\n"
                                "select 1006 \"Registry\"\n"
                                "expect 1006 \"Data*\"\n"
                                "print 1006\n"
                                "ok\n"
                                "command 40007\n"
                                "ok\n"
                                "expect text \"You must*\"\n"
                                "ok\n"
                                "select 1003 \"\\Card\"\n"
                                "key \"Down\"\n"
                                "ok\n"
                                "command 40007\n"
                                "cancel\n"
                                "command 40010\n"
                                "check 1023\n"
                                "press 1024\n"
                                "ok\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.diary, ElementsAre("File:\\a", "Main device", "cancelled", "010", "closed"));
    EXPECT_EQ(outcome.output, "Database:b\nFile:\\a\nRegistry\n");
}

TEST_F(ScriptRunTest, FirstStandingAnswerThatFitsTheBoxAnswersIt)
{
    // The third box has no button "no", so the second answer doesn't fit it.
    const Outcome outcome = run("answer \"First*\" cancel\n"
                                "answer \"*question?\" no\n"
                                "answer \"Third*\" ignore\n"
                                "answer \"Third*\" abort\n"
                                "answer \"second*\" ok\n"
                                "command 40006\n"
                                "wait \"Tell\"\n"
                                "ok\n"
                                "idle\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.diary, ElementsAre("2 1 5", "closed"));

    const Outcome afterTheEnd = run("answer \"*\" retry\n"
                                    "answer \"*\" ok\n"
                                    "command 40006\n"
                                    "yes\n");
    EXPECT_EQ(afterTheEnd.code, 0);
    EXPECT_THAT(afterTheEnd.diary, ElementsAre("6 1 4", "closed"));
}

TEST_F(ScriptRunTest, WindowsThatAreOpenAtTheEndOfTheScriptAreClosed)
{
    for (const auto& [script, noted] : {std::pair{"command 40006\n", "2 1 3"}, {"command 40007\nok\n", "cancelled"}}) {
        const Outcome outcome = run(script);
        EXPECT_EQ(outcome.code, 0) << outcome.errors;
        EXPECT_THAT(outcome.diary, ElementsAre(noted, "closed"));
    }
}

TEST_F(ScriptRunTest, TimeoutDoesntCountWhileTheProgramWorks)
{
    const Outcome outcome = run("command 40009\n"
                                "command 40009\n"
                                "idle\n",
                                Impatient);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.diary, ElementsAre("worked", "worked", "closed"));
}

TEST_F(ScriptRunTest, FailureNamesTheLineAndWhatIsOnTheScreen)
{
    const struct {
        const char* script;
        const char* errors;
    } cases[] = {
        {"\npress 1005\n", "line 2: expected a button 1005 that takes input, on the screen: \"Small program\"\n"},
        {"command 40001\n",
         "line 1: expected the main window with the command 40001, on the screen: \"Small program\"\n"},
        {"command 40010\ncommand 40003\n", "line 2: expected the main window with the command 40003, on the screen: "
                                           "\"Options\": \"Maximum backup file size:\\nMB\"\n"},
        {"command 40010\ntype 1027 \"5\"\n", "line 2: expected an edit 1027 that takes input, on the screen: "
                                             "\"Options\": \"Maximum backup file size:\\nMB\"\n"},
        {"command 40010\ncheck 1025\nuncheck 1025\n", "line 3: a click doesn't uncheck 1025, on the screen: "
                                                      "\"Options\": \"Maximum backup file size:\\nMB\"\n"},
        {"command 40010\nwait \"options\"\n", "line 2: expected a window \"options\", on the screen: "
                                              "\"Options\": \"Maximum backup file size:\\nMB\"\n"},
        {"command 40007\nselect 1003 \"\\card\"\n", "line 2: expected a row \"\\card\" in a list 1003 that takes "
                                                    "input, on the screen: \"Select\": \"Info\"\n"},
        {"command 40007\nexpect 1003 \"M*x\"\n", "line 2: expected \"M*x\" in 1003, which shows \"\\Card\", "
                                                 "\"Main device\", on the screen: \"Select\": \"Info\"\n"},
        {"command 40006\nexpect text \"Second*\"\n",
         "line 2: expected the text \"Second*\", on the screen: \"Ask\": \"First question?\"\n"},
        {"command 40007\nyes\n",
         "line 2: expected a window with the button yes, on the screen: \"Select\": \"Info\"\n"},
        {"cancel\n", "line 1: expected a dialog or message box, on the screen: \"Small program\"\n"},
        {"command 40002\nidle\n", "line 2: expected the main window at rest, but the program has ended\n"},
    };
    for (const auto& [script, errors] : cases) {
        SCOPED_TRACE(script);
        const Outcome outcome = run(script, Impatient);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, errors);
        ASSERT_FALSE(outcome.diary.empty());
        EXPECT_EQ(outcome.diary.back(), "closed");
    }
}

TEST_F(ScriptRunTest, ScriptEndsAlthoughTheProgramRefusesToClose)
{
    const Outcome outcome = run("command 40011\nidle\n");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("can't be closed"));
    small::letGo();
}

TEST_F(ScriptRunTest, EndOfTheScriptAnswersEachQuestionOfALongRun)
{
    const Outcome outcome = run("command 40012\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.diary, ElementsAre("refused 300", "closed"));
}

TEST_F(ScriptRunTest, TranscriptHasEveryWindowTextAndAnswerInOrder)
{
    const Outcome outcome = run("command 40003\n"
                                "  ok  # go\n"
                                "expect text \"Override\\n\\a file\"\n"
                                "expect 1002 \"File: \\a \"\"b\"\".txt\"\n"  // of the window below the question
                                "print 1029\n"
                                "answer \"Override*\" no # never\n"
                                "idle\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "Backuped: 1\n");
    EXPECT_THAT(outcome.diary, ElementsAre("000", "override 7", "closed"));
    EXPECT_EQ(outcome.transcript, "window main \"Small program\"\n"
                                  "line 1 command 40003\n"
                                  "window dialog \"Full Backup\" text \"Backupset comments\"\n"
                                  "line 2 ok\n"
                                  "gone dialog \"Full Backup\"\n"
                                  "window progress \"Backuping Files\" text \"Backuping Files\"\n"
                                  "text \"Backuping Files\" 1002 \"File: \\a \"\"b\"\".txt\"\n"
                                  "text \"Backuping Files\" 1029 \"Backuped: 1\"\n"
                                  "window message \"Info?\" text \"Override\\n\\a file\" buttons yes,no default no\n"
                                  "line 3 expect text \"Override\\n\\a file\"\n"
                                  "line 4 expect 1002 \"File: \\a \"\"b\"\".txt\"\n"
                                  "line 5 print 1029\n"
                                  "line 6 answer \"Override*\" no\n"
                                  "answer no line 6 to \"Info?\" \"Override\\n\\a file\"\n"
                                  "gone message \"Info?\"\n"
                                  "text \"Backuping Files\" 1029 \"Backuped: 2\"\n"
                                  "gone progress \"Backuping Files\"\n"
                                  "line 7 idle\n"
                                  "gone main \"Small program\"\n");
}

}  // namespace
}  // namespace platform::headless
