// tree_fixture.h - a real device in a temporary folder, and the tree of the window core over it, without a display.
#pragma once

#include "device/device.h"
#include "engine/options.h"
#include "host_folder.h"
#include "options_store.h"
#include "set/set_state.h"
#include "tree/tree_events.h"
#include "tree_control/tree_display.h"
#include "window/input.h"

#include "text/host_name.h"

#include "ce/tree_view.h"

#include <sys/xattr.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <set>
#include <vector>

class TreeTest : public HostFolder {
protected:
    TreeTest() : HostFolder(memoryFolder())
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
    ~TreeTest() override
    {
        DestroyWindow(window_);
        gTreeView = nullptr;
        RenewLists();
        device_.reset();
    }

    // Writes files of the object store. A name is the host path below its folder. A path that ends with a slash makes a
    // folder.
    void write(std::initializer_list<const char*> names) const
    {
        for (const char* name : names) {
            const std::filesystem::path path = at("device/object-store") / name;
            if (path.has_filename())
                hostWrite(path, "content");
            else
                std::filesystem::create_directories(path);
        }
    }
    // Sets the platform's attributes of a file, as hexadecimal text.
    void setAttributes(const std::string& name, const std::string& attributes) const
    {
        const std::filesystem::path path = at("device/object-store") / name;
        ASSERT_EQ(setxattr(path.c_str(), "user.DOSATTRIB", attributes.data(), attributes.size(), 0), 0);
    }
    // Sets the time of a file's last write, in seconds since 1970.
    void setTime(const std::string& name, std::int64_t seconds) const
    {
        const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
        std::filesystem::last_write_time(at("device/object-store") / name, std::chrono::file_clock::from_sys(time));
    }

    // Returns an item by the texts on its path: "Files\\A\\b.txt". Returns null if it isn't listed.
    static HTREEITEM item(const std::string& path)
    {
        std::stringstream parts(path);
        std::string part;
        HTREEITEM found = nullptr;
        while (std::getline(parts, part, '\\')) {
            const std::vector<TreeItemState> children = rowsBelow(found);
            const auto next = std::ranges::find(
                children, part, [](const TreeItemState& child) { return platform::text::toUtf8(child.text); });
            if (next == children.end())
                return nullptr;
            found = next->item;
        }
        return found;
    }
    // Clicks on the item's label or on another part, as the user does.
    static void click(const std::string& path, platform::window::TreePart part = platform::window::TreePart::Label)
    {
        HTREEITEM clicked = item(path);
        ASSERT_NE(clicked, nullptr) << path;
        SendMessageW(gTreeView, platform::window::InputClick, reinterpret_cast<WPARAM>(clicked),
                     static_cast<LPARAM>(part));
    }
    static void clickButton(const std::string& path) { click(path, platform::window::TreePart::Button); }
    // Expands each collapsed item on the path.
    static void open(const std::string& path)
    {
        for (std::size_t end = 0; end != std::string::npos;) {
            end = path.find('\\', end + 1);
            const std::string folder = path.substr(0, end);
            if (!stateOf(item(folder)).expanded)
                clickButton(folder);
        }
    }
    // Collapses "Files", and expands it again down to the folder.
    static void listAgain(const std::string& path = "Files")
    {
        clickButton("Files");
        open(path);
    }

    // Sets the mark count, and the image that goes with it.
    static void setCount(const std::string& path, WORD count)
    {
        ::TreeItem found;
        ASSERT_TRUE(ReadTreeItem(item(path), found, false)) << path;
        SetMark(found, TreeCodeOf(found.parameter), count);
        WriteTreeItem(found);
    }
    // Returns the item and all items listed below it, with images and mark counts: "A:9:0 b.txt:7:1". Siblings are
    // sorted by name.
    static std::string marks(const std::string& path) { return marksFrom(item(path)); }
    // Returns the names of the item's children in the tree's order.
    static std::vector<std::string> listed(const std::string& path)
    {
        std::vector<std::string> names;
        for (const TreeItemState& state : rowsBelow(item(path)))
            names.push_back(platform::text::toUtf8(state.text));
        return names;
    }
    static bool hasButton(const std::string& path) { return stateOf(item(path)).hasButton; }
    static std::string selected() { return platform::text::toUtf8(stateOf(NextTreeItem(TVGN_CARET, nullptr)).text); }
    // Returns the entries of the file list, sorted: "\\A\\b.txt \\c".
    static std::string markedFiles()
    {
        std::multiset<std::string> names;
        WCHAR name[MAX_PATH] = {};
        DWORD bytes = 0;
        for (BOOL more = gFileList->First(name, &bytes); more; more = gFileList->Next(name, &bytes))
            names.insert(platform::text::toUtf8(name));
        return joined(names);
    }

    // Shows only files with these extensions, given as "txt,doc".
    static void useFilter(const std::u16string& extensions)
    {
        gOptions.extensionFilterOn = 1;
        for (std::size_t i = 0; i < extensions.size(); i++)
            gOptions.extensions[i] = extensions[i] == u',' ? u'\0' : extensions[i];
    }
    // Hides older files. The date is given in seconds since 1970.
    static void useDate(std::int64_t seconds)
    {
        constexpr std::int64_t TicksASecond = 10'000'000;
        constexpr std::int64_t SecondsTo1970 = 11'644'473'600;
        const std::int64_t ticks = (seconds + SecondsTo1970) * TicksASecond;
        gOptions.newerThanOn = 1;
        gOptions.newerThan = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    }

    HWND window_ = nullptr;

private:
    using TreeItemState = platform::window::TreeItemState;

    static LRESULT windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message == WM_NOTIFY)
            return TreeNotify(window, wParam, lParam);
        return DefWindowProcW(window, message, wParam, lParam);
    }

    static TreeItemState stateOf(HTREEITEM item)
    {
        TreeItemState state;
        (void)platform::window::readTreeItem(gTreeView, item, state);
        return state;
    }

    static std::vector<TreeItemState> rowsBelow(HTREEITEM item)
    {
        return platform::window::readTreeItems(gTreeView, platform::window::treeItemsBelow(gTreeView, item));
    }

    static std::string joined(const auto& parts)
    {
        std::string all;
        for (const std::string& part : parts)
            all += (all.empty() ? "" : " ") + part;
        return all;
    }

    static std::string marksFrom(HTREEITEM item)
    {
        ::TreeItem found;
        if (!ReadTreeItem(item, found, false))
            return "";
        const TreeItemState state = stateOf(item);
        std::vector<std::string> all = {platform::text::toUtf8(state.text) + ":" + std::to_string(state.image) + ":" +
                                        std::to_string(MarkCountOf(found.parameter))};
        std::map<std::string, HTREEITEM> children;
        for (const TreeItemState& child : rowsBelow(item))
            children.emplace(platform::text::toUtf8(child.text), child.item);
        for (const auto& [name, child] : children)
            all.push_back(marksFrom(child));
        return joined(all);
    }

    std::unique_ptr<platform::device::Device> device_;
};
