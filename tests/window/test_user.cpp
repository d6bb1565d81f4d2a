#include "test_user.h"

#include "resource/resource_file.h"

#include <cstring>
#include <utility>

namespace platform::window::test {

void TestUser::changed(HWND window, Change change)
{
    const std::lock_guard lock(mutex_);
    if (change == Change::Focus)
        focusChanges_.insert(window);
    ++changes_;
    came_.notify_all();
}

std::set<HWND> TestUser::takeFocusChanges()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(focusChanges_, {});
}

void TestUser::textChanged(HWND window, std::u16string_view)
{
    ++texts;
    changed(window, Change::Text);
}

void TestUser::waitUntil(const std::function<bool()>& condition)
{
    for (;;) {
        long seen = 0;
        {
            const std::lock_guard lock(mutex_);
            seen = changes_;
        }
        if (condition())
            return;
        std::unique_lock lock(mutex_);
        came_.wait(lock, [&] { return changes_ != seen; });
    }
}

HWND TestUser::window(const std::u16string& title)
{
    HWND found = nullptr;
    waitUntil([&] {
        for (const HWND top : topLevelWindows()) {
            WindowState state;
            if (readWindow(top, state) && state.text == title && state.visible && takesInput(top)) {
                found = top;
                return true;
            }
        }
        return false;
    });
    return found;
}

void TestUser::click(HWND window, long row)
{
    waitUntil([&] { return takesInput(window) && postClick(window, row); });
}

void TestUser::key(HWND window, WORD virtualKey, bool shift, bool control, bool alt)
{
    waitUntil([&] { return takesInput(window) && postKey(window, virtualKey, shift, control, alt); });
}

void TestUser::type(HWND window, const std::u16string& text)
{
    waitUntil([&] { return takesInput(window) && postText(window, text); });
}

WindowThread::WindowThread(std::function<HWND()> make)
{
    std::promise<HWND> made;
    std::future<HWND> window = made.get_future();
    thread_ = std::thread([&made, make = std::move(make)] {
        const HWND own = make();
        made.set_value(own);
        MSG message;
        while (GetMessageW(&message, own, 0, 0) > 0)
            DispatchMessageW(&message);
    });
    window_ = window.get();
}

void WindowThread::join()
{
    if (!thread_.joinable())
        return;
    PostMessageW(window_, WM_CLOSE, 0, 0);
    thread_.join();
}

const WCHAR* windowClass(const WCHAR* name, WNDPROC procedure)
{
    WNDCLASSW added = {};
    added.lpfnWndProc = procedure;
    added.lpszClassName = name;
    RegisterClassW(&added);
    return name;
}

HWND makeWindow(const WCHAR* className, HWND owner)
{
    return CreateWindowExW(0, className, className, WS_VISIBLE, 0, 0, 300, 200, owner, nullptr, nullptr, nullptr);
}

WindowState stateOf(HWND window)
{
    WindowState state;
    (void)readWindow(window, state);
    return state;
}

std::u16string textOf(HWND window)
{
    return stateOf(window).text;
}

namespace {

class Bytes {
public:
    void word(unsigned value)
    {
        bytes_.push_back(static_cast<std::byte>(value & 0xFF));
        bytes_.push_back(static_cast<std::byte>(value >> 8 & 0xFF));
    }
    void dword(DWORD value)
    {
        word(value & 0xFFFF);
        word(value >> 16);
    }
    void text(const std::u16string& text)
    {
        for (const char16_t unit : text)
            word(unit);
        word(0);
    }
    void align()
    {
        while (bytes_.size() % 4 != 0)
            bytes_.push_back(std::byte{0});
    }
    void append(const std::vector<std::byte>& more) { bytes_.insert(bytes_.end(), more.begin(), more.end()); }
    std::vector<std::byte> take() { return std::move(bytes_); }

private:
    std::vector<std::byte> bytes_;
};

void place(Bytes& out, unsigned y, unsigned height)
{
    out.word(7);
    out.word(y);
    out.word(100);
    out.word(height);
}

}  // namespace

std::vector<std::byte> templateBytes(const std::u16string& title, const std::vector<TestControl>& controls,
                                     bool extended, DWORD style, DWORD exStyle)
{
    Bytes out;
    if (extended) {
        out.word(1);
        out.word(0xFFFF);
        out.dword(0);
        out.dword(exStyle);
        out.dword(style);
    } else {
        out.dword(style);
        out.dword(exStyle);
    }
    out.word(static_cast<unsigned>(controls.size()));
    place(out, 0, 118);
    out.word(0);
    out.word(0);
    out.text(title);
    if (style & DS_SETFONT) {
        out.word(8);
        if (extended)
            out.dword(0x01000000);
        out.text(u"MS Sans Serif");
    }
    unsigned y = 7;
    for (const TestControl& control : controls) {
        out.align();
        if (extended) {
            out.dword(0);
            out.dword(0);
        }
        out.dword(WS_CHILD | WS_VISIBLE | control.style);
        if (!extended)
            out.dword(0);
        place(out, y, 10);
        y += 11;
        if (extended)
            out.dword(static_cast<DWORD>(control.id));
        else
            out.word(static_cast<unsigned>(control.id));
        if (control.className == u"Static") {
            out.word(0xFFFF);
            out.word(0x82);
        } else {
            out.text(control.className);
        }
        out.text(control.text);
        out.word(0);
    }
    return out.take();
}

const void* addResource(WORD type, WORD name, const std::vector<std::byte>& bytes)
{
    // Resources stay for the life of the process, the earlier files as well.
    static std::vector<std::byte> entries = [] {
        Bytes first;
        first.dword(0);
        first.dword(32);
        first.dword(0x0000FFFF);
        first.dword(0x0000FFFF);
        for (int field = 0; field < 4; ++field)
            first.dword(0);
        return first.take();
    }();
    static std::vector<std::unique_ptr<std::vector<std::byte>>> files;
    Bytes entry;
    entry.dword(static_cast<DWORD>(bytes.size()));
    entry.dword(32);
    entry.dword(0xFFFF | static_cast<DWORD>(type) << 16);
    entry.dword(0xFFFF | static_cast<DWORD>(name) << 16);
    for (int field = 0; field < 4; ++field)
        entry.dword(0);
    entry.append(bytes);
    entry.align();
    const std::size_t at = entries.size() + 32;
    const std::vector<std::byte> added = entry.take();
    entries.insert(entries.end(), added.begin(), added.end());
    files.push_back(std::make_unique<std::vector<std::byte>>(entries));
    resource::setResources(*files.back());
    return files.back()->data() + at;
}

const void* makeTemplate(const std::u16string& title, const std::vector<TestControl>& controls, DWORD style)
{
    static WORD name = 1000;
    return addResource(5, name++, templateBytes(title, controls, true, style));
}

}  // namespace platform::window::test
