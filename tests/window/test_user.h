// test_user.h - a scripted user, threads with windows, and dialog templates for tests.
#pragma once

#include "window/display.h"

#include "ce/controls.h"
#include "ce/dialog.h"
#include "ce/window.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace platform::window::test {

// A display that shows nothing. A test can wait until it would have shown a certain state.
class TestUser : public Display {
public:
    TestUser() { setDisplay(this); }
    TestUser(const TestUser&) = delete;
    TestUser& operator=(const TestUser&) = delete;
    ~TestUser() override { setDisplay(nullptr); }

    void changed(HWND window, Change change) override;
    void textChanged(HWND window, std::u16string_view) override { changed(window, Change::Text); }

    // Returns when the condition holds. Checks the condition after each change.
    void waitUntil(const std::function<bool()>& condition);
    // Waits until the visible top-level window of that title takes input, and returns it.
    HWND window(const std::u16string& title);
    // Each of these functions posts its input as soon as the window's thread takes input.
    void click(HWND window, long row = -1)
    {
        waitUntil([&] { return takesInput(window) && postClick(window, row); });
    }
    void key(HWND window, WORD virtualKey, bool shift = false, bool control = false, bool alt = false)
    {
        waitUntil([&] { return takesInput(window) && postKey(window, virtualKey, shift, control, alt); });
    }
    void type(HWND window, const std::u16string& text)
    {
        waitUntil([&] { return takesInput(window) && postText(window, text); });
    }

    // Returns the windows that got or lost the focus since the last call.
    std::set<HWND> takeFocusChanges()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(focusChanges_, {});
    }

private:
    std::mutex mutex_;
    std::set<HWND> focusChanges_;
    std::condition_variable came_;
    long changes_ = 0;
};

// A thread that makes a window and serves messages until the window is destroyed.
class WindowThread {
public:
    // `make` runs on the new thread and returns the window.
    explicit WindowThread(std::function<HWND()> make);
    WindowThread(const WindowThread&) = delete;
    WindowThread& operator=(const WindowThread&) = delete;
    ~WindowThread() { join(); }

    [[nodiscard]] HWND window() const { return window_; }
    void join();

private:
    HWND window_ = nullptr;
    std::thread thread_;
};

// Registers a class of that name with the procedure, unless the class exists. Returns the name.
inline const WCHAR* windowClass(const WCHAR* name, WNDPROC procedure)
{
    WNDCLASSW added = {};
    added.lpfnWndProc = procedure;
    added.lpszClassName = name;
    RegisterClassW(&added);
    return name;
}

inline HWND makeWindow(const WCHAR* className, HWND owner = nullptr)
{
    return CreateWindowExW(0, className, className, WS_VISIBLE, 0, 0, 300, 200, owner, nullptr, nullptr, nullptr);
}

// Calls SendMessageW with a pointer.
inline LRESULT send(HWND window, UINT message, WPARAM wParam = 0, const void* lParam = nullptr)
{
    return SendMessageW(window, message, wParam, reinterpret_cast<LPARAM>(lParam));
}

[[nodiscard]] inline WindowState stateOf(HWND window)
{
    WindowState state;
    (void)readWindow(window, state);
    return state;
}

[[nodiscard]] inline std::u16string textOf(HWND window)
{
    return stateOf(window).text;
}

struct TestControl {
    std::u16string className;
    std::u16string text;
    int id = 0;
    DWORD style = 0;
};

// Returns a template in the extended or the plain format. Each control is below the previous one.
[[nodiscard]] std::u16string templateWords(const std::u16string& title, const std::vector<TestControl>& controls,
                                           bool extended, DWORD style, DWORD exStyle = WS_EX_CAPTIONOKBTN);

// Returns a template for DialogBoxIndirectParamW. It is added to the resources of the process.
[[nodiscard]] const void* makeTemplate(const std::u16string& title, const std::vector<TestControl>& controls,
                                       DWORD style = 0x80c808c0);
// Adds the words as a resource of that type and number, and returns their address.
const void* addResource(WORD type, WORD name, const std::u16string& content);

}  // namespace platform::window::test
