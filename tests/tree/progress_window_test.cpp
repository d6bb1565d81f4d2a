// The progress window on the template that the program has, while this thread is the run that drives it.
#include "engine/questions.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"
#include "window/display.h"

#include "ce/dialog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace {

using namespace platform::window;

// Counts the bar's moves and waits for the window's end.
class ProgressWindowTest : public testing::Test, public Display {
protected:
    ProgressWindowTest()
    {
        EXPECT_TRUE(platform::resource::setResources(quillbox::embeddedResources()));
        gMainWindow = nullptr;  // another test's program may have left its own, which is gone
        setDisplay(this);
    }
    ~ProgressWindowTest() override { setDisplay(nullptr); }

    void changed(HWND window, Change change) override
    {
        const std::lock_guard lock(mutex_);
        if (change == Change::Progress)
            moves_++;
        gone_ = gone_ || (change == Change::Destroyed && window == progress);
        came_.notify_all();
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
    [[nodiscard]] int position() const { return control(1001).progressPosition; }
    int takeMoves()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(moves_, 0);
    }
    bool hasGone()
    {
        std::unique_lock lock(mutex_);
        return came_.wait_for(lock, std::chrono::minutes(1), [this] { return gone_; });
    }

    HWND progress = nullptr;

private:
    std::mutex mutex_;
    std::condition_variable came_;
    int moves_ = 0;
    bool gone_ = false;
};

TEST_F(ProgressWindowTest, BarMovesByItsStepAndStartsOverBehindItsTop)
{
    open(1000, 400);
    WindowState dialog;
    ASSERT_TRUE(readWindow(progress, dialog));
    EXPECT_EQ(dialog.text, u"Title");
    EXPECT_EQ(control(1002).text, u"Message");
    EXPECT_EQ(control(1029).text, u"");
    EXPECT_EQ(control(1001).progressLow, 0);
    EXPECT_EQ(control(1001).progressHigh, 1000);
    EXPECT_EQ(position(), 0);
    for (const int expected : {400, 800, 0, 400}) {
        EXPECT_EQ(ProgressStep(progress, 7), 1U);  // the number means nothing
        EXPECT_EQ(position(), expected);
    }
    ProgressSetMessage(progress, u"File: \\a");
    ProgressSetCount(progress, u"Backuped: 1");
    EXPECT_EQ(control(1002).text, u"File: \\a");
    EXPECT_EQ(control(1029).text, u"Backuped: 1");
    ProgressSetCount(progress, u"");
    EXPECT_EQ(control(1029).text, u"");

    EXPECT_EQ(ProgressClose(progress), 1U);
    EXPECT_TRUE(hasGone());
    EXPECT_EQ(ProgressStep(progress, 0), 1U);  // to a window that is gone
    EXPECT_EQ(ProgressAnimate(progress), 1U);
}

TEST_F(ProgressWindowTest, AnimatedBarRunsToItsTopBeforeTheWindowGoes)
{
    open(1500, 10);
    for (int i = 0; i < 3; i++)
        ProgressStep(progress, 0);
    EXPECT_EQ(position(), 30);
    takeMoves();
    EXPECT_EQ(ProgressAnimate(progress), 1U);
    EXPECT_TRUE(hasGone());
    EXPECT_EQ(takeMoves(), (1500 - 30) / 10);
}

}  // namespace
