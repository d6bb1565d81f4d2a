#include "tree_reading.h"

#include "window/display.h"

#include "text/host_name.h"

#include <algorithm>

namespace platform::headless {

using window::TreeItemState;
using window::WindowKind;
using window::WindowState;

HWND findTree(HWND top)
{
    for (const HWND child : window::childrenOf(top)) {
        WindowState state;
        if (window::readWindow(child, state) && state.kind == WindowKind::TreeView && state.visible)
            return child;
    }
    return nullptr;
}

std::optional<TreeItemState> findTreeItem(HWND tree, std::u16string_view path)
{
    std::optional<TreeItemState> found;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find(u'\\', begin), path.size());
        const std::u16string_view name = path.substr(begin, end - begin);
        if (found && !found->expanded)
            return std::nullopt;
        const std::vector<HTREEITEM> items = window::treeItemsBelow(tree, found ? found->item : nullptr);
        found.reset();
        for (TreeItemState& state : window::readTreeItems(tree, items)) {
            if (state.text == name) {
                found = std::move(state);
                break;
            }
        }
        if (!found)
            return std::nullopt;
        begin = end + 1;
    }
    return found;
}

namespace {

void addLines(HWND tree, HTREEITEM parent, std::vector<std::u16string>& lines)
{
    for (const TreeItemState& state : window::readTreeItems(tree, window::treeItemsBelow(tree, parent))) {
        const std::u16string indent(static_cast<std::size_t>(state.level) * 2, u' ');
        lines.push_back(indent + state.text + u" [" + text::fromUtf8(std::to_string(state.image)) + u"]");
        if (state.expanded)
            addLines(tree, state.item, lines);
    }
}

}  // namespace

std::vector<std::u16string> linesOfTree(HWND tree)
{
    std::vector<std::u16string> lines;
    addLines(tree, nullptr, lines);
    return lines;
}

}  // namespace platform::headless
