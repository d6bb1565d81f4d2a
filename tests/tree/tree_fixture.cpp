// tree_fixture.cpp - see tree_fixture.h.

#include "tree_fixture.h"

#include "engine/options.h"
#include "options_store.h"
#include "set/set_state.h"
#include "tree/tree_events.h"
#include "window/input.h"

#include "text/host_name.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

using namespace platform::window;

namespace fs = std::filesystem;

namespace {

LRESULT windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NOTIFY)
        return TreeNotify(window, wParam, lParam);
    return DefWindowProcW(window, message, wParam, lParam);
}

std::string asHost(const std::u16string& text)
{
    const auto name = platform::text::toHostName(text);
    return name ? *name : "?";
}

void send(HTREEITEM item, TreePart part)
{
    SendMessageW(gTreeView, InputClick, reinterpret_cast<WPARAM>(item), static_cast<LPARAM>(part));
}

}  // namespace

TreeTest::TreeTest()
{
    const char* given = std::getenv("TMPDIR");
    std::string pattern = std::string(given ? given : fs::exists("/dev/shm") ? "/dev/shm" : "/tmp") + "/tree.XXXXXX";
    folder_ = mkdtemp(pattern.data());
    platform::device::OpenResult opened = platform::device::openDevice(folder_, {}, false);
    EXPECT_TRUE(opened.device) << opened.error.sentence;
    device_ = std::move(opened.device);

    SetDefaultOptions();
    RenewLists();
    gRegistryMarked = 0;
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = windowProcedure;
    windowClass.lpszClassName = u"TreeOfTheTests";
    RegisterClassW(&windowClass);
    window_ = CreateWindowExW(0, u"TreeOfTheTests", u"", 0, 0, 0, 400, 300, nullptr, nullptr, nullptr, nullptr);
    gTreeView = CreateWindowExW(0, u"SysTreeView32", u"", WS_CHILD | WS_VISIBLE, 0, 0, 400, 300, window_, nullptr,
                                nullptr, nullptr);
    EXPECT_TRUE(CreateTreeImages() && InsertRootItems(gTreeView));
}

TreeTest::~TreeTest()
{
    DestroyWindow(window_);
    gTreeView = nullptr;
    RenewLists();
    device_.reset();
    fs::remove_all(folder_);
}

void TreeTest::write(const std::string& name) const
{
    const fs::path path = folder_ / "object-store" / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "content";
}

void TreeTest::makeFolder(const std::string& name) const
{
    fs::create_directories(folder_ / "object-store" / name);
}

void TreeTest::setAttributes(const std::string& name, DWORD attributes) const
{
    char text[16];
    const int length = std::snprintf(text, sizeof text, "0x%x", attributes);
    const fs::path path = folder_ / "object-store" / name;
    ASSERT_EQ(setxattr(path.c_str(), "user.DOSATTRIB", text, static_cast<std::size_t>(length), 0), 0);
}

void TreeTest::setTime(const std::string& name, std::int64_t seconds) const
{
    const timespec times[] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (folder_ / "object-store" / name).c_str(), times, 0), 0);
}

HTREEITEM TreeTest::item(const std::string& path)
{
    std::stringstream parts(path);
    std::string part;
    HTREEITEM found = nullptr;
    while (std::getline(parts, part, '\\')) {
        HTREEITEM next = nullptr;
        for (const TreeItemState& state : readTreeItems(gTreeView, treeItemsBelow(gTreeView, found))) {
            if (asHost(state.text) == part) {
                next = state.item;
                break;
            }
        }
        if (!next)
            return nullptr;
        found = next;
    }
    return found;
}

namespace {

TreeItemState stateOf(HTREEITEM item)
{
    TreeItemState state;
    state.image = -1;
    (void)readTreeItem(gTreeView, item, state);
    return state;
}

}  // namespace

void TreeTest::click(const std::string& path)
{
    clickOn(path, TreePart::Label);
}

void TreeTest::clickButton(const std::string& path)
{
    clickOn(path, TreePart::Button);
}

void TreeTest::clickOn(const std::string& path, TreePart part)
{
    ASSERT_NE(item(path), nullptr) << path;
    send(item(path), part);
}

void TreeTest::press(WORD key)
{
    SendMessageW(gTreeView, WM_KEYDOWN, key, 0);
}

void TreeTest::open(const std::string& path)
{
    for (std::size_t end = 0; end != std::string::npos;) {
        end = path.find('\\', end + 1);
        const std::string folder = path.substr(0, end);
        if (!stateOf(item(folder)).expanded)
            clickButton(folder);
    }
}

int TreeTest::image(const std::string& path)
{
    return stateOf(item(path)).image;
}

int TreeTest::count(const std::string& path)
{
    ::TreeItem found;
    return ReadTreeItem(item(path), found, false) ? MarkCountOf(found.parameter) : -1;
}

void TreeTest::setCount(const std::string& path, WORD count)
{
    ::TreeItem found;
    ASSERT_TRUE(ReadTreeItem(item(path), found, false)) << path;
    SetMark(found, TreeCodeOf(found.parameter), count);
    WriteTreeItem(found);
}

bool TreeTest::hasButton(const std::string& path)
{
    return stateOf(item(path)).hasButton;
}

std::string TreeTest::selected()
{
    return asHost(stateOf(NextTreeItem(TVGN_CARET, nullptr)).text);
}

std::string TreeTest::listed(const std::string& path)
{
    std::string children;
    for (const TreeItemState& state : readTreeItems(gTreeView, treeItemsBelow(gTreeView, item(path))))
        children += (children.empty() ? "" : " ") + asHost(state.text) + ":" + std::to_string(state.image);
    return children;
}

std::string TreeTest::markedFiles()
{
    std::multiset<std::string> names;
    WCHAR name[MAX_PATH] = {};
    DWORD bytes = 0;
    for (BOOL more = gFileList->First(name, &bytes); more; more = gFileList->Next(name, &bytes)) {
        const std::u16string text(name);
        std::string host;
        for (std::size_t at = 0; at < text.size(); at = std::min(text.find(u'\\', at + 1), text.size()))
            host += "\\" + asHost(text.substr(at + 1, std::min(text.find(u'\\', at + 1), text.size()) - at - 1));
        names.insert(host);
    }
    std::string all;
    for (const std::string& each : names)
        all += (all.empty() ? "" : " ") + each;
    return all;
}

void TreeTest::useFilter(const std::u16string& extensions)
{
    gOptions.extensionFilterOn = 1;
    for (std::size_t i = 0; i < extensions.size(); i++)
        gOptions.extensions[i] = extensions[i] == u',' ? u'\0' : extensions[i];
}

void TreeTest::useDate(std::int64_t seconds)
{
    constexpr std::int64_t TicksASecond = 10'000'000;
    constexpr std::int64_t SecondsTo1970 = 11'644'473'600;
    const std::int64_t ticks = (seconds + SecondsTo1970) * TicksASecond;
    gOptions.newerThanOn = 1;
    gOptions.newerThan = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}
