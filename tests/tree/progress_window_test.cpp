// The progress window from the program's own template. The test's thread acts as the run that drives the window.
#include "engine/questions.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"
#include "window/display.h"

#include "ce/dialog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>

namespace {

using namespace platform::window;

constexpr int BarId = 1001;
constexpr int MessageId = 1002;
constexpr int CountId = 1029;

// Counts the moves of the bar, and waits for the end of the window.
class ProgressWindowTest : public testing::Test, public Display {
protected:
    ProgressWindowTest()
    {
        EXPECT_TRUE(platform::resource::setResources(quillbox::embeddedResources()));
        gMainWindow = nullptr;  // an earlier test may have left the handle of its main window
        setDisplay(this);
    }
    ~ProgressWindowTest() override { setDisplay(nullptr); }

    void changed(HWND window, Change change) override
    {
        moves += change == Change::Progress ? 1 : 0;
        if (change == Change::Destroyed && window == progress)
            gone.set_value();
    }
    void textChanged(HWND, std::u16string_view) override {}

    void open(DWORD range, DWORD step)
    {
        progress = ProgressOpen(u"Title", u"Message", range, step);
        ASSERT_NE(progress, nullptr);
    }
    [[nodiscard]] WindowState control(int id) const
    {
        WindowState state;
        EXPECT_TRUE(readWindow(GetDlgItem(progress, id), state)) << id;
        return state;
    }
    bool hasGone() { return gone.get_future().wait_for(std::chrono::minutes(1)) == std::future_status::ready; }

    std::atomic<HWND> progress = nullptr;
    std::atomic<int> moves = 0;
    std::promise<void> gone;
};

TEST_F(ProgressWindowTest, BarMovesByItsStepAndStartsOverAfterItsTop)
{
    open(1000, 400);
    EXPECT_EQ(control(MessageId).text, u"Message");
    EXPECT_EQ(control(CountId).text, u"");
    EXPECT_EQ(control(BarId).progressHigh, 1000);
    for (const int expected : {400, 800, 0, 400}) {
        EXPECT_EQ(ProgressStep(progress, 7), 1U);  // the number has no effect
        EXPECT_EQ(control(BarId).progressPosition, expected);
    }
    ProgressSetMessage(progress, u"File: \\a");
    EXPECT_EQ(control(MessageId).text, u"File: \\a");
    ProgressSetCount(progress, u"Backuped: 1");
    EXPECT_EQ(control(CountId).text, u"Backuped: 1");

    EXPECT_EQ(ProgressClose(progress), 1U);
    EXPECT_TRUE(hasGone());
    EXPECT_EQ(ProgressStep(progress, 0), 1U);  // the window is gone
    EXPECT_EQ(ProgressAnimate(progress), 1U);
}

TEST_F(ProgressWindowTest, AnimatedBarRunsToItsTopBeforeTheWindowCloses)
{
    open(1500, 10);
    ProgressStep(progress, 0);
    moves = 0;
    EXPECT_EQ(ProgressAnimate(progress), 1U);
    EXPECT_TRUE(hasGone());
    EXPECT_EQ(moves, (1500 - 10) / 10);
}

}  // namespace
