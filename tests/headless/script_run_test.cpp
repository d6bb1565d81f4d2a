// Tests of scripts that run on a small program of this test: how a script ends, how it waits, and how it answers
// questions. The tests in tests/tree run scripts on the real program.
#include "headless/script_run.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"

#include "text/host_name.h"

#include "ce/command_bands.h"
#include "ce/dialog.h"
#include "ce/window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <thread>

namespace platform::headless {
namespace {

using testing::HasSubstr;

// Commands of the test's own small program.
constexpr WORD AskThree = 40006;
constexpr WORD Work = 40009;
constexpr WORD StayOpen = 40011;
constexpr WORD AskMuch = 40007;
constexpr UINT LetGo = WM_APP;

std::string gNotes;  // the answers that the program got, and its other actions
std::atomic<HWND> gStubborn;
std::atomic<bool> gRuns;

void onCommand(HWND window, WORD id)
{
    const auto ask = [window](const WCHAR* question, const WCHAR* title, UINT type) {
        gNotes += std::to_string(MessageBoxW(window, question, title, type)) + " ";
    };
    if (id == AskThree) {
        ask(u"First question?", u"Ask", MB_YESNOCANCEL);
        ask(u"Second, no question", u"Tell", MB_OK);
        ask(u"Third question?", u"Ask", MB_ABORTRETRYIGNORE);
    } else if (id == AskMuch) {
        for (int file = 0; file < 300; ++file)
            ask(text::fromUtf8("file " + std::to_string(file)).c_str(), u"Replace?", MB_YESNO | MB_DEFBUTTON2);
    } else if (id == Work) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        gNotes += "worked ";
    } else if (id == StayOpen) {
        gStubborn = window;
    }
}

LRESULT mainProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_COMMAND)
        onCommand(window, LOWORD(wParam));
    else if (message == LetGo)
        DestroyWindow(window);
    else if (message == WM_DESTROY)
        PostQuitMessage(0);
    else if (message == WM_CLOSE && gStubborn)
        MessageBoxW(window, u"Stay?", u"Ask", MB_YESNOCANCEL);
    else
        return DefWindowProcW(window, message, wParam, lParam);
    return 0;
}

int program()
{
    gRuns = true;
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = mainProcedure;
    windowClass.lpszClassName = u"Small";
    RegisterClassW(&windowClass);
    const HWND window =
        CreateWindowExW(0, u"Small", u"Small program", WS_VISIBLE, 0, 0, 300, 200, nullptr, nullptr, nullptr, nullptr);
    const HWND bands = CommandBands_Create(nullptr, window, 1, RBS_BANDBORDERS, nullptr);
    REBARBANDINFOW band = {};
    band.cbSize = sizeof band;
    CommandBands_AddBands(bands, nullptr, 1, &band);
    CommandBar_InsertMenubar(CommandBands_GetCommandBar(bands, 0), nullptr, 104, 0);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    gRuns = false;
    gRuns.notify_all();
    return 0;
}

class ScriptRunTest : public testing::Test {
protected:
    ScriptRunTest()
    {
        EXPECT_TRUE(resource::setResources(quillbox::embeddedResources()));
        gNotes.clear();
    }

    // Returns the exit code. The default timeout is longer than any delay of the program by the host.
    int run(const std::string& text, std::chrono::milliseconds timeout = std::chrono::minutes(5))
    {
        std::istringstream script(text);
        std::ostringstream output;
        ScriptOptions options;
        options.timeout = timeout;
        options.output = &output;
        options.errors = &errors;
        return runScript(program, script, options);
    }

    std::ostringstream errors;
};

TEST_F(ScriptRunTest, FirstStandingAnswerThatFitsTheBoxAnswersIt)
{
    // The third box has no button "no", so the second answer doesn't fit it.
    EXPECT_EQ(run("answer \"First*\" cancel\n"
                  "answer \"*question?\" no\n"
                  "answer \"Third*\" ignore\n"
                  "answer \"Third*\" abort\n"
                  "answer \"second*\" ok\n"
                  "command 40006\n"
                  "wait \"Tell\"\n"
                  "ok\n"
                  "idle\n"),
              0)
        << errors.str();
    EXPECT_EQ(gNotes, "2 1 5 ");
}

TEST_F(ScriptRunTest, QuestionsThatAreOpenOrAskedAfterTheEndOfTheScriptAreAnswered)
{
    EXPECT_EQ(run("answer \"*\" retry\nanswer \"*\" ok\ncommand 40006\nyes\n"), 0);
    EXPECT_EQ(run("command 40006\n"), 0);
    EXPECT_EQ(gNotes, "6 1 4 2 1 3 ");
    gNotes.clear();
    EXPECT_EQ(run("command 40007\n"), 0);
    EXPECT_EQ(gNotes.size(), 300 * std::string("7 ").size());
    EXPECT_EQ(gNotes.find_first_not_of("7 "), std::string::npos);
}

TEST_F(ScriptRunTest, TimeoutDoesntCountWhileTheProgramWorks)
{
    EXPECT_EQ(run("command 40009\ncommand 40009\nidle\n", std::chrono::milliseconds(1)), 0) << errors.str();
    EXPECT_EQ(gNotes, "worked worked ");
}

TEST_F(ScriptRunTest, ScriptEndsAlthoughTheProgramRefusesToClose)
{
    EXPECT_EQ(run("command 40011\nidle\n"), 1);
    EXPECT_THAT(errors.str(), HasSubstr("can't be closed"));
    PostMessageW(gStubborn.exchange(nullptr), LetGo, 0, 0);
    gRuns.wait(true);
}

}  // namespace
}  // namespace platform::headless
