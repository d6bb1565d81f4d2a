#include "tree_fixture.h"

#include "engine/options.h"
#include "options_store.h"
#include "set/set_state.h"
#include "tree/tree_events.h"
#include "window/input.h"

#include "text/host_name.h"

#include <sys/xattr.h>

#include <algorithm>
#include <chrono>
#include <set>

using namespace platform::window;

using platform::text::toUtf8;

namespace fs = std::filesystem;

namespace {

LRESULT windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NOTIFY)
        return TreeNotify(window, wParam, lParam);
    return DefWindowProcW(window, message, wParam, lParam);
}

TreeItemState stateOf(HTREEITEM item)
{
    TreeItemState state;
    (void)readTreeItem(gTreeView, item, state);
    return state;
}

std::vector<TreeItemState> rowsBelow(HTREEITEM item)
{
    return readTreeItems(gTreeView, treeItemsBelow(gTreeView, item));
}

std::string joined(const auto& parts)
{
    std::string all;
    for (const std::string& part : parts)
        all += (all.empty() ? "" : " ") + part;
    return all;
}

}  // namespace

TreeTest::TreeTest() : HostFolder(memoryFolder())
{
    platform::device::OpenResult opened = platform::device::openDevice(at("device"), {}, false);
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
}

void TreeTest::write(std::initializer_list<const char*> names) const
{
    for (const char* name : names) {
        const fs::path path = at("device/object-store") / name;
        if (path.has_filename())
            hostWrite(path, "content");
        else
            fs::create_directories(path);
    }
}

void TreeTest::setAttributes(const std::string& name, const std::string& attributes) const
{
    const fs::path path = at("device/object-store") / name;
    ASSERT_EQ(setxattr(path.c_str(), "user.DOSATTRIB", attributes.data(), attributes.size(), 0), 0);
}

void TreeTest::setTime(const std::string& name, std::int64_t seconds) const
{
    const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
    fs::last_write_time(at("device/object-store") / name, std::chrono::file_clock::from_sys(time));
}

HTREEITEM TreeTest::item(const std::string& path)
{
    std::stringstream parts(path);
    std::string part;
    HTREEITEM found = nullptr;
    while (std::getline(parts, part, '\\')) {
        const std::vector<TreeItemState> children = rowsBelow(found);
        const auto next =
            std::ranges::find(children, part, [](const TreeItemState& child) { return toUtf8(child.text); });
        if (next == children.end())
            return nullptr;
        found = next->item;
    }
    return found;
}

void TreeTest::click(const std::string& path, TreePart part)
{
    HTREEITEM clicked = item(path);
    ASSERT_NE(clicked, nullptr) << path;
    SendMessageW(gTreeView, InputClick, reinterpret_cast<WPARAM>(clicked), static_cast<LPARAM>(part));
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

void TreeTest::setCount(const std::string& path, WORD count)
{
    ::TreeItem found;
    ASSERT_TRUE(ReadTreeItem(item(path), found, false)) << path;
    SetMark(found, TreeCodeOf(found.parameter), count);
    WriteTreeItem(found);
}

std::string TreeTest::marksFrom(HTREEITEM item)
{
    ::TreeItem found;
    if (!ReadTreeItem(item, found, false))
        return "";
    const TreeItemState state = stateOf(item);
    std::vector<std::string> all = {toUtf8(state.text) + ":" + std::to_string(state.image) + ":" +
                                    std::to_string(MarkCountOf(found.parameter))};
    std::map<std::string, HTREEITEM> children;
    for (const TreeItemState& child : rowsBelow(item))
        children.emplace(toUtf8(child.text), child.item);
    for (const auto& [name, child] : children)
        all.push_back(marksFrom(child));
    return joined(all);
}

std::vector<std::string> TreeTest::listed(const std::string& path)
{
    std::vector<std::string> names;
    for (const TreeItemState& state : rowsBelow(item(path)))
        names.push_back(toUtf8(state.text));
    return names;
}

bool TreeTest::hasButton(const std::string& path)
{
    return stateOf(item(path)).hasButton;
}

std::string TreeTest::selected()
{
    return toUtf8(stateOf(NextTreeItem(TVGN_CARET, nullptr)).text);
}

std::string TreeTest::markedFiles()
{
    std::multiset<std::string> names;
    WCHAR name[MAX_PATH] = {};
    DWORD bytes = 0;
    for (BOOL more = gFileList->First(name, &bytes); more; more = gFileList->Next(name, &bytes))
        names.insert(toUtf8(name));
    return joined(names);
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
