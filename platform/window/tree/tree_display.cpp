#include "tree_control/tree_display.h"

#include "tree_control.h"
#include "window/image_lists.h"
#include "window/input.h"

namespace platform::window {

namespace {

bool read(const TreeViewState& tree, HTREEITEM handle, TreeItemState& state)
{
    const ItemIndex index = tree.items.find(handle);
    if (index == 0)
        return false;
    const Item& item = tree.items[index];
    state.item = handle;
    state.parent = tree.items.handleOf(item.parent);
    state.text = item.text;
    state.selected = handle == tree.selected;
    state.image = state.selected ? item.selectedImage : item.image;
    state.hasButton = item.hasButton();
    state.hasChildren = item.firstChild != 0;
    state.expanded = item.expanded;
    state.level = tree.items.levelOf(index);
    return true;
}

}  // namespace

TreeChanges takeTreeChanges(HWND handle, bool fromTheStart)
{
    const Lock lock(coreMutex);
    TreeViewState* tree = findTree(handle);
    if (!tree)
        return {};
    tree->announced = false;
    if (fromTheStart)
        tree->log.startOver(tree->items);
    TreeChanges changes = tree->log.take(tree->items);
    changes.selected = tree->selected;
    return changes;
}

bool readTreeItem(HWND handle, HTREEITEM item, TreeItemState& state)
{
    const Lock lock(coreMutex);
    const TreeViewState* tree = findTree(handle);
    return tree && read(*tree, item, state);
}

std::vector<TreeItemState> readTreeItems(HWND handle, std::span<const HTREEITEM> items)
{
    const Lock lock(coreMutex);
    std::vector<TreeItemState> states;
    const TreeViewState* tree = findTree(handle);
    if (!tree)
        return states;
    states.reserve(items.size());
    for (const HTREEITEM item : items)
        if (TreeItemState state; read(*tree, item, state))
            states.push_back(std::move(state));
    return states;
}

TreePictures treePictures(HWND handle)
{
    const Lock lock(coreMutex);
    const TreeViewState* tree = findTree(handle);
    if (!tree)
        return {};
    const ImageSize size = imageSizeOf(tree->images);
    return {firstBitmapOf(tree->images), size.width, size.height};
}

std::vector<HTREEITEM> treeItemsBelow(HWND handle, HTREEITEM parent)
{
    const Lock lock(coreMutex);
    std::vector<HTREEITEM> children;
    const TreeViewState* tree = findTree(handle);
    const ItemIndex above = tree ? tree->items.find(parent) : 0;
    if (!tree || (parent && above == 0))
        return children;
    for (ItemIndex at = tree->items[above].firstChild; at != 0; at = tree->items[at].next)
        children.push_back(tree->items.handleOf(at));
    return children;
}

bool postTreeClick(HWND tree, HTREEITEM item, TreePart part)
{
    return queueInput(tree, InputClick, reinterpret_cast<WPARAM>(item), static_cast<LPARAM>(part));
}

bool postTreeDoubleClick(HWND tree, HTREEITEM item, TreePart part)
{
    return queueInput(tree, InputDoubleClick, reinterpret_cast<WPARAM>(item), static_cast<LPARAM>(part));
}

bool postTreeCommand(HWND tree, HTREEITEM item, WORD command)
{
    return queueClickAndCommand(tree, reinterpret_cast<WPARAM>(item), static_cast<LPARAM>(TreePart::Label), command);
}

bool postTreeKey(HWND tree, HTREEITEM item, WORD virtualKey)
{
    return queueClickAndKey(tree, reinterpret_cast<WPARAM>(item), static_cast<LPARAM>(TreePart::Label), virtualKey);
}

bool postTreeRelist(HWND tree)
{
    return queueInput(tree, InputRelist, 0, 0);
}

}  // namespace platform::window
