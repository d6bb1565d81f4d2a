// second_start_test.cpp - a second start finds the window of the first start, and no other.
#include "start/second_start.h"
#include "window/display.h"

#include "ce/window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <string>
#include <thread>

namespace {

using namespace platform;

LRESULT procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_DESTROY)
        PostQuitMessage(0);
    return DefWindowProcW(window, message, wParam, lParam);
}

class SecondStartTest : public testing::Test, public window::Display {
protected:
    void SetUp() override
    {
        std::string pattern = testing::TempDir() + "quillbox-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
        device_ = folder_ / "device";
        std::filesystem::create_directory(device_);
        setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
        window::setDisplay(this);
    }
    void TearDown() override
    {
        window::setDisplay(nullptr);
        std::filesystem::remove_all(folder_);
    }

    void changed(HWND, window::Change change) override
    {
        if (change == window::Change::Foreground && waits_.exchange(false))
            front_.set_value();
    }
    void textChanged(HWND, std::u16string_view) override {}

    // The next time that a window comes to the front.
    std::future<void> nextFront()
    {
        front_ = {};
        waits_ = true;
        return front_.get_future();
    }

    std::filesystem::path folder_;
    std::filesystem::path device_;

private:
    std::promise<void> front_;
    std::atomic<bool> waits_ = false;
};

// A program with one window, on a thread of its own as the host runs it.
class SmallProgram {
public:
    SmallProgram()
    {
        std::promise<HWND> made;
        thread_ = std::thread([&made] {
            WNDCLASSW windowClass{};
            windowClass.lpfnWndProc = procedure;
            windowClass.lpszClassName = u"SecondStartTest";
            RegisterClassW(&windowClass);
            made.set_value(CreateWindowExW(0, u"SecondStartTest", u"The first", WS_VISIBLE, 0, 0, 9, 9, nullptr,
                                           nullptr, nullptr, nullptr));
            MSG message{};
            while (GetMessageW(&message, nullptr, 0, 0) > 0)
                DispatchMessageW(&message);
        });
        window_ = made.get_future().get();
    }
    ~SmallProgram()
    {
        PostMessageW(window_, WM_CLOSE, 0, 0);
        thread_.join();
    }

private:
    std::thread thread_;
    HWND window_ = nullptr;
};

TEST_F(SecondStartTest, WindowOfTheSameDeviceComesToTheFront)
{
    EXPECT_FALSE(display::bringFirstStartToFront(device_));
    const auto first = display::answerSecondStarts(device_);
    ASSERT_NE(first, nullptr);
    // The first start answers even before its window exists.
    EXPECT_TRUE(display::bringFirstStartToFront(device_));

    const SmallProgram program;
    const auto front = nextFront();
    EXPECT_TRUE(display::bringFirstStartToFront(device_ / ".." / "device" / "."));
    EXPECT_EQ(front.wait_for(std::chrono::seconds(60)), std::future_status::ready);

    std::filesystem::create_directory(folder_ / "other");
    EXPECT_FALSE(display::bringFirstStartToFront(folder_ / "other"));
}

TEST_F(SecondStartTest, SocketOfAKilledProcessIsReplacedAndRemovedAtTheEnd)
{
    const auto count = [this] {
        const std::filesystem::directory_iterator entries(folder_);
        return std::count_if(begin(entries), end(entries), [](const auto& entry) { return entry.is_socket(); });
    };
    {
        const auto first = display::answerSecondStarts(device_);
        EXPECT_EQ(count(), 1);
        // As after a kill: the socket still exists when the next owner starts.
        const auto second = display::answerSecondStarts(device_);
        EXPECT_NE(second, nullptr);
        EXPECT_TRUE(display::bringFirstStartToFront(device_));
    }
    EXPECT_EQ(count(), 0);
    EXPECT_FALSE(display::bringFirstStartToFront(device_));
}

TEST_F(SecondStartTest, FolderThatOthersMayWriteToIsNotTrusted)
{
    std::filesystem::permissions(folder_, std::filesystem::perms::all);
    const auto first = display::answerSecondStarts(device_);
    const std::filesystem::directory_iterator entries(folder_);
    EXPECT_TRUE(std::none_of(begin(entries), end(entries), [](const auto& entry) { return entry.is_socket(); }));
}

}  // namespace
