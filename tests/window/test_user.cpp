#include "test_user.h"

#include "resource/resource_file.h"

#include <list>
#include <span>

namespace platform::window::test {

void TestUser::changed(HWND window, Change change)
{
    const std::lock_guard lock(mutex_);
    if (change == Change::Focus)
        focusChanges_.insert(window);
    ++changes_;
    came_.notify_all();
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
        found = FindWindowW(nullptr, title.c_str());
        return stateOf(found).visible && takesInput(found);
    });
    return found;
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

namespace {

std::u16string words(std::initializer_list<DWORD> values)
{
    return {values.begin(), values.end()};
}

std::u16string dword(DWORD value)
{
    return words({value & 0xFFFF, value >> 16});
}

}  // namespace

std::u16string templateWords(const std::u16string& title, const std::vector<TestControl>& controls, bool extended,
                             DWORD style, DWORD exStyle)
{
    std::u16string out =
        extended ? words({1, 0xFFFF}) + dword(0) + dword(exStyle) + dword(style) : dword(style) + dword(exStyle);
    out += words({static_cast<DWORD>(controls.size()), 7, 0, 100, 118, 0, 0}) + title + u'\0';
    if (style & DS_SETFONT)
        out += words({8}) + (extended ? dword(0x01000000) : u"") + u"MS Sans Serif" + u'\0';
    DWORD y = 7;
    for (const TestControl& control : controls) {
        if (out.size() % 2 != 0)
            out += u'\0';
        const std::u16string styles = dword(WS_CHILD | WS_VISIBLE | control.style);
        const std::u16string id = dword(static_cast<DWORD>(control.id));
        out += extended ? dword(0) + dword(0) + styles : styles + dword(0);
        out += words({7, y, 100, 10}) + (extended ? id : id.substr(0, 1));
        out += control.className == u"Static" ? words({0xFFFF, 0x82}) : control.className + u'\0';
        out += control.text + words({0, 0});
        y += 11;
    }
    return out;
}

const void* addResource(WORD type, WORD name, const std::u16string& content)
{
    const auto entry = [](WORD ofType, WORD named, const std::u16string& data) {
        const std::u16string lengths = dword(static_cast<DWORD>(data.size() * 2)) + dword(32);
        const std::u16string padding(8 + data.size() % 2, u'\0');
        return lengths + words({0xFFFF, ofType, 0xFFFF, named}) + padding.substr(0, 8) + data + padding.substr(8);
    };
    // Addresses of resources must stay valid as long as the process runs. So the earlier files are kept, too.
    static std::list<std::u16string> files = {entry(0, 0, u"")};
    const std::size_t offset = files.back().size() + 16;
    files.push_back(files.back() + entry(type, name, content));
    resource::setResources(std::as_bytes(std::span(files.back())));
    return files.back().data() + offset;
}

const void* makeTemplate(const std::u16string& title, const std::vector<TestControl>& controls, DWORD style)
{
    static WORD name = 1000;
    return addResource(5, name++, templateWords(title, controls, true, style));
}

}  // namespace platform::window::test
