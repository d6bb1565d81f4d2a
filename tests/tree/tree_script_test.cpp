// The whole program without a screen: its tree and its filter as a script uses them.
#include "tree_fixture.h"

#include "headless/script_run.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"
#include "set/set_state.h"

#include "ce/winmain.h"

#include <gmock/gmock.h>

#include <sstream>
#include <utility>

namespace {

using testing::HasSubstr;

class TreeScriptTest : public TreeTest {
protected:
    TreeScriptTest() { EXPECT_TRUE(platform::resource::setResources(quillbox::embeddedResources())); }

    int run(const std::string& text, std::chrono::milliseconds timeout = std::chrono::minutes(5))
    {
        // The program makes its own.
        delete std::exchange(gFileList, nullptr);
        delete std::exchange(gDatabaseList, nullptr);
        std::istringstream script(text);
        std::ostringstream printed;
        std::ostringstream told;
        platform::headless::ScriptOptions options;
        options.timeout = timeout;
        options.output = &printed;
        options.errors = &told;
        const int code =
            platform::headless::runScript([] { return WinMain(nullptr, nullptr, nullptr, 0); }, script, options);
        output = printed.str();
        errors = told.str();
        return code;
    }

    std::string output;
    std::string errors;
};

TEST_F(TreeScriptTest, MarksWithMouseAndKeyboardAndSeesEachImage)
{
    write("Docs/a.txt");
    EXPECT_EQ(run(R"(
        expect image "Files" 2
        expand "Files"
        expand "Files"              # is expanded already
        doubleclick "Files\Docs"
        click "Files\Docs\a.txt"
        expect image "Files\Docs\a.txt" 7
        expect image "Files\Docs" 10
        expect image "Files" 3      # by the timer
        key "Down"                  # onto "Registry", which is marked by it
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
        << errors;
    EXPECT_EQ(output, "Databases [0]\nFiles [3]\n  Docs [10]\n    a.txt [7]\nRegistry [16]\n"
                      "Databases [0]\nFiles [3]\nRegistry [16]\n");
}

TEST_F(TreeScriptTest, FilterByDateHidesWhatIsOlder)
{
    write("old.txt");
    makeFolder("empty");
    EXPECT_EQ(run(R"(
        expand "Files"
        command 503
        wait "File filter"
        check 1024
        date 1024 "2400-01-01"
        ok
        expand "Files"
        print tree
    )"),
              0)
        << errors;
    EXPECT_EQ(output, "Databases [0]\nFiles [2]\n  empty [9]\nRegistry [15]\n");
}

TEST_F(TreeScriptTest, FailureSaysWhatTheTreeShows)
{
    makeFolder("empty");
    constexpr std::chrono::milliseconds Impatient(1);
    EXPECT_EQ(run("expect image \"Files\" 9\n", Impatient), 1);
    EXPECT_THAT(errors, HasSubstr("line 1: expected image 9 of \"Files\", which has 2"));
    EXPECT_EQ(run("click \"Files\\empty\"\n", Impatient), 1);  // isn't in sight
    EXPECT_THAT(errors, HasSubstr("line 1: expected the tree item \"Files\\empty\""));
    EXPECT_EQ(run("expand \"Files\"\nexpand \"Files\\empty\"\n"), 1);
    EXPECT_THAT(errors, HasSubstr("line 2: the tree item \"Files\\empty\" can't be expanded"));
    EXPECT_EQ(run("command 503\ndate 1024 \"2026-02-30\"\n"), 1);
    EXPECT_THAT(errors, HasSubstr("line 2: \"2026-02-30\" is no date"));
}

}  // namespace
