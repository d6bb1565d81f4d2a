// The whole program without a screen: its tree as a script uses it.
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
        output.str("");
        errors.str("");
        platform::headless::ScriptOptions options;
        options.timeout = timeout;
        options.output = &output;
        options.errors = &errors;
        return platform::headless::runScript([] { return WinMain(nullptr, nullptr, nullptr, 0); }, script, options);
    }

    std::ostringstream output;
    std::ostringstream errors;
};

TEST_F(TreeScriptTest, MarksWithMouseAndKeyboardAndSeesEachImage)
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

TEST_F(TreeScriptTest, FailureSaysWhatTheTreeShows)
{
    write({"empty/"});
    const struct {
        const char* script;
        const char* error;
    } cases[] = {
        {"expect image \"Files\" 9\n", "line 1: expected image 9 of \"Files\", which has 2"},
        {"click \"Files\\empty\"\n", "line 1: expected the tree item \"Files\\empty\""},  // "Files" is collapsed
        {"expand \"Files\"\nexpand \"Files\\empty\"\n", "line 2: the tree item \"Files\\empty\" can't be expanded"},
        {"command 503\ndate 1024 \"2026-02-30\"\n", "line 2: \"2026-02-30\" is no date"},
    };
    constexpr std::chrono::milliseconds Impatient(1);
    for (const auto& [script, error] : cases) {
        EXPECT_EQ(run(script, Impatient), 1);
        EXPECT_THAT(errors.str(), HasSubstr(error));
    }
}

}  // namespace
