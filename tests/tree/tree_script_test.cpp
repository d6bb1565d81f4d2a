// The whole program without a screen: a script uses its tree.
#include "tree_fixture.h"

#include "headless/script_run.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"
#include "time/clock.h"

#include "ce/winmain.h"

#include <gmock/gmock.h>

#include <regex>
#include <utility>

namespace {

using testing::HasSubstr;

class TreeScriptTest : public TreeTest {
protected:
    TreeScriptTest() { EXPECT_TRUE(platform::resource::setResources(quillbox::embeddedResources())); }

    int run(const std::string& text, std::chrono::milliseconds timeout = std::chrono::minutes(5))
    {
        // The program makes its own lists.
        delete std::exchange(gFileList, nullptr);
        delete std::exchange(gDatabaseList, nullptr);
        std::istringstream script(text);
        output.str("");
        errors.str("");
        transcript.str("");
        platform::headless::ScriptOptions options;
        options.timeout = timeout;
        options.output = &output;
        options.errors = &errors;
        options.transcript = &transcript;
        return platform::headless::runScript([] { return WinMain(nullptr, nullptr, nullptr, 0); }, script, options);
    }

    std::ostringstream output;
    std::ostringstream errors;
    std::ostringstream transcript;
};

TEST_F(TreeScriptTest, ScriptMarksWithMouseAndKeyboardAndSeesTheImageOfEachItem)
{
    write({"Docs/a.txt"});
    EXPECT_EQ(run(R"(
        expect image "Files" 2
        expand "Files"
        expand "Files"              # is expanded already
        doubleclick "Files\Docs"
        click "Files\Docs\a.txt"
        expect image "Files\Docs\a.txt" 7
        expect image "Files\Docs" 10
        expect image "Files" 3      # by the timer
        key "Down"                  # selects "Registry" and so marks it
        print tree
        key "Up"                    # unmarks the file
        expect image "Files\Docs\a.txt" 6
        click "Files\Docs"
        command 500
        expect image "Files\Docs\a.txt" 7
        collapse "Files\Docs"
        key "+"
        collapse "Files"
        print tree
    )"),
              0)
        << errors.str();
    EXPECT_EQ(output.str(), "Databases [0]\nFiles [3]\n  Docs [10]\n    a.txt [7]\nRegistry [16]\n"
                            "Databases [0]\nFiles [3]\nRegistry [16]\n");
}

TEST_F(TreeScriptTest, DialogGetsWhatTheScriptTypesChecksAndSelects)
{
    write({"a", "b"});
    EXPECT_EQ(run(R"(
        command 40003
        wait "Full Backup"
        type 1004 "old"
        clear 1004
        type 1004 "c:\new"
        key "Enter"
        type 1004 "€"
        check 1005
        check 1005
        check 1006
        uncheck 1006
        uncheck 1007
        expect 1004 "c:\new\n?"
        expect 1005 "[x] All files"
        print 1006
        print 1004
        print text
        ok
        ok
        expect text "You must*"
        ok
        select 1003 "Main device"
        ok
        idle
        command 40007
        select 1003 "\QUILBOX\QLBX0001.QLT"
        ok
        print 1004
        select 1006 "File:\a"
        select 1006 "File:\b"
        select 1006 "File:\a"
        expect 1006 "File:\b*"
        print 1006
        ok
        expect text "File:\b exists*"
        no
        idle
    )"),
              0)
        << errors.str();
    EXPECT_THAT(output.str(), testing::MatchesRegex("\\[ \\] All databases\n"
                                                    "c:.new.n\u20AC\n"
                                                    "Full Backup.nBackupset comments.nc:.new.n\u20AC\n"
                                                    "Backup date:.*.nComments:.nc:.new.n\u20AC\n"
                                                    "File:.a\nFile:.b\n"));
}

// Each progress window is destroyed on a thread of its own. So the position of its last line in the transcript varies.
const std::regex EndOfProgress("gone progress.*\n");

TEST_F(TreeScriptTest, TranscriptHasEveryWindowTextAndAnswerInOrder)
{
    platform::time::stopClockAt({2026, 3, 0, 5, 10, 20, 30, 0});
    write({"a"});
    EXPECT_EQ(run(R"(command 40003
        check 1005
        type 1004 "say ""hi"""  # a comment
        ok
        select 1003 "Main device"
        ok
        idle
        answer "File:*" no
        command 40006
        select 1003 "\QUILBOX\QLBX0001.QLT"
        ok
        ok
        idle
    )"),
              0)
        << errors.str();
    platform::time::resumeClock();
    EXPECT_EQ(std::regex_replace(transcript.str(), EndOfProgress, ""), R"(window main "KORV Quillbox"
line 1 command 40003
window dialog "Full Backup" text "Backupset comments"
line 2 check 1005
line 3 type 1004 "say ""hi"""
line 4 ok
gone dialog "Full Backup"
window progress "Construct File List" text "Computing list to backup"
window dialog "Select" text "Select your storage"
line 5 select 1003 "Main device"
line 6 ok
gone dialog "Select"
window progress "Backuping Files" text "Backuping Files"
text "Backuping Files" 1002 "File: \a"
text "Backuping Files" 1029 "Backuped: 0"
line 7 idle
line 8 answer "File:*" no
line 9 command 40006
window dialog "Select" text "Select backup file"
line 10 select 1003 "\QUILBOX\QLBX0001.QLT"
line 11 ok
gone dialog "Select"
window dialog "Full Restore" text "Backupset comments\nBackup date:03/05/2026 (10:20)\nComments:\nsay ""hi"""
line 12 ok
gone dialog "Full Restore"
window progress "Restoring Files" text "Restoring Files"
text "Restoring Files" 1002 "File: \a"
window message "Warning" text "File:\a exists replace ?" buttons yes,no default no
answer no line 8 to "Warning" "File:\a exists replace ?"
gone message "Warning"
line 13 idle
gone main "KORV Quillbox"
)");
}

TEST_F(TreeScriptTest, FailureSaysWhatTheScriptExpectedAndWhatIsShown)
{
    write({"empty/"});
    const std::pair<const char*, const char*> cases[] = {
        {"expect image \"Files\" 9\n", "line 1: expected image 9 of \"Files\", which has 2"},
        {"click \"Files\\empty\"\n", "line 1: expected the tree item \"Files\\empty\""},  // "Files" is collapsed
        {"expand \"Files\"\nexpand \"Files\\empty\"\n", "line 2: the tree item \"Files\\empty\" can't be expanded"},
        {"command 503\ndate 1024 \"2026-02-30\"\n", "line 2: \"2026-02-30\" is no date"},
        {"\npress 1005\n", "line 2: expected a button 1005 that takes input, on the screen: \"KORV Quillbox\"\n"},
        {"command 40001\n", "line 1: expected the main window with the command 40001, on the screen: "},
        {"command 40011\ncommand 40003\n", "line 2: expected the main window with the command 40003, on the screen: "
                                           "\"Options\": \"Maximum backup file size:\\n4\\nMB\"\n"},
        {"command 40011\ntype 1002 \"5\"\n", "line 2: expected an edit 1002 that takes input"},
        {"command 40011\ncheck 1025\nuncheck 1025\n", "line 3: a click doesn't uncheck 1025"},
        {"command 40011\nwait \"options\"\n", "line 2: expected a window \"options\""},
        {"command 40011\nselect 1003 \"\\card\"\n",
         "line 2: expected a row \"\\card\" in a list 1003 that takes input"},
        {"command 40011\nexpect 1026 \"M*x\"\n",
         "line 2: expected \"M*x\" in 1026, which shows \"[ ] Generate log file\""},
        {"command 40011\nexpect text \"Second*\"\n",
         "line 2: expected the text \"Second*\", on the screen: \"Options\""},
        {"command 40011\nyes\n", "line 2: expected a window with the button yes, on the screen: \"Options\""},
        {"cancel\n", "line 1: expected a dialog or message box, on the screen: \"KORV Quillbox\"\n"},
        {"command 40002\nidle\n", "line 2: expected the main window at rest, but the program has ended\n"},
    };
    constexpr std::chrono::milliseconds Impatient(1);
    for (const auto& [script, error] : cases) {
        EXPECT_EQ(run(script, Impatient), 1);
        EXPECT_THAT(errors.str(), HasSubstr(error));
    }
}

}  // namespace
