#include "tree_control.h"

#include <algorithm>

namespace platform::window {

namespace {

// An expanded item. It is identified by its text, because its handle becomes invalid when the program lists the item
// again.
struct Branch {
    std::u16string text;
    std::vector<Branch> expanded;
};

std::vector<Branch> expandedBelow(const TreeItems& items, ItemIndex parent)
{
    std::vector<Branch> branches;
    for (ItemIndex at = items[parent].firstChild; at != 0; at = items[at].next) {
        if (items[at].expanded)
            branches.push_back({items[at].text, expandedBelow(items, at)});
    }
    return branches;
}

// Returns the texts of the selected item and its ancestors, from the top item down. If the selected item has no button,
// the path ends at the nearest ancestor with a button.
std::vector<std::u16string> pathToKeep(const TreeItems& items, ItemIndex selected)
{
    while (selected != 0 && !items[selected].hasButton())
        selected = items[selected].parent;
    std::vector<std::u16string> path;
    for (; selected != 0; selected = items[selected].parent)
        path.insert(path.begin(), items[selected].text);
    return path;
}

// Returns the child that has that text and a button, or null if there is none. Each call locks the mutex and unlocks it
// again, because the mutex must be unlocked while the parent handles notifications between two calls.
HTREEITEM childWith(HWND handle, HTREEITEM parent, const std::u16string& text)
{
    const Lock lock(coreMutex);
    const TreeViewState* tree = findTree(handle);
    const ItemIndex above = tree ? tree->items.find(parent) : 0;
    if (!tree || (parent && above == 0))
        return nullptr;
    ItemIndex at = tree->items[above].firstChild;
    while (at != 0 && !(tree->items[at].hasButton() && tree->items[at].text == text))
        at = tree->items[at].next;
    return tree->items.handleOf(at);
}

void expand(HWND handle, HTREEITEM parent, const std::vector<Branch>& branches)
{
    for (const Branch& branch : branches) {
        const HTREEITEM item = childWith(handle, parent, branch.text);
        if (!item)
            continue;
        if (!parent)
            foldByUser(handle, item, TVE_COLLAPSE);
        foldByUser(handle, item, TVE_EXPAND);
        expand(handle, item, branch.expanded);
    }
}

}  // namespace

void relistTree(HWND handle)
{
    std::vector<Branch> before;
    std::vector<std::u16string> path;
    {
        const Lock lock(coreMutex);
        const TreeViewState* tree = findTree(handle);
        if (!tree)
            return;
        before = expandedBelow(tree->items, 0);
        path = pathToKeep(tree->items, tree->items.find(tree->selected));
    }
    expand(handle, nullptr, before);
    HTREEITEM selected = nullptr;
    for (const std::u16string& text : path) {
        const HTREEITEM below = childWith(handle, selected, text);
        if (!below)
            break;
        selected = below;
    }
    if (selected)
        selectTreeItem(handle, selected, TVC_UNKNOWN, Refusal::Possible);
}

}  // namespace platform::window
