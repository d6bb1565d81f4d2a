// Selects, expands, collapses and deletes items, and notifies the parent window. While the parent handles a
// notification, it can change the tree. For example, it can delete the item or move the selection. So each step looks
// up the window and the items again, and stops if they don't exist any more.
#include "tree_control.h"
#include "window/notify.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace platform::window {

namespace {

// Locks coreMutex and looks up a tree. Converts to false if the tree doesn't exist any more.
class SCOPED_CAPABILITY Look {
public:
    explicit Look(HWND handle) ACQUIRE(coreMutex) : window_(findWindow(handle)), tree_(findTree(handle)) {}
    Look(const Look&) = delete;
    Look& operator=(const Look&) = delete;
    ~Look() RELEASE() {}

    explicit operator bool() const { return tree_ != nullptr; }
    TreeViewState* operator->() const { return tree_; }
    TreeViewState& state() const { return *tree_; }
    TreeItems& items() const { return tree_->items; }
    Window& window() const { return *window_; }
    void announce() const REQUIRES(coreMutex) { announceTree(*window_, *tree_); }

private:
    Lock lock_{coreMutex};
    Window* window_;
    TreeViewState* tree_;
};

// The description of an item in notifications, without the item's text.
TVITEMW recordOf(const TreeViewState& tree, HTREEITEM handle)
{
    TVITEMW record = {};
    const ItemIndex index = tree.items.find(handle);
    if (index == 0)
        return record;
    const Item& item = tree.items[index];
    record.mask = TVIF_HANDLE | TVIF_STATE | TVIF_PARAM;
    record.hItem = handle;
    record.state = (handle == tree.selected ? TVIS_SELECTED : 0) | (item.expanded ? TVIS_EXPANDED : 0) |
                   (item.expandedOnce ? TVIS_EXPANDEDONCE : 0);
    record.stateMask = TVIS_SELECTED | TVIS_EXPANDED | TVIS_EXPANDEDONCE;
    record.lParam = item.parameter;
    return record;
}

LRESULT notify(HWND tree, UINT code, NMTREEVIEWW& change)
{
    change.hdr.code = code;
    return notifyParent(tree, change.hdr);
}

void markUpdated(TreeViewState& tree, HTREEITEM handle)
{
    if (const ItemIndex index = tree.items.find(handle); index != 0)
        tree.log.updated(tree.items, index);
}

}  // namespace

bool selectTreeItem(HWND handle, HTREEITEM item, UINT cause, Refusal refusal)
{
    NMTREEVIEWW change = {};
    change.action = cause;
    {
        const Look tree(handle);
        if (!tree || (item && !tree.items().find(item)))
            return false;
        if (tree->selected == item)
            return true;
        change.itemOld = recordOf(tree.state(), tree->selected);
        change.itemNew = recordOf(tree.state(), item);
    }
    if (notify(handle, TVN_SELCHANGINGW, change) != 0 && refusal == Refusal::Possible)
        return false;
    {
        const Look tree(handle);
        if (!tree || (item && !tree.items().find(item)))
            return false;
        const HTREEITEM before = std::exchange(tree->selected, item);
        if (item)
            bringIntoView(tree.window(), tree.state(), tree.items().find(item));
        markUpdated(tree.state(), before);
        markUpdated(tree.state(), item);
        tree->log.show(item);
        tree.announce();
        change.itemOld = recordOf(tree.state(), before);
        change.itemNew = recordOf(tree.state(), item);
    }
    notify(handle, TVN_SELCHANGEDW, change);
    return true;
}

namespace {

// If a descendant of the item is selected, moves the selection to the item. The item is about to collapse, and that
// would hide the descendant.
void moveSelectionTo(HWND handle, HTREEITEM item)
{
    bool below = false;
    {
        const Look tree(handle);
        if (!tree)
            return;
        const ItemIndex index = tree.items().find(item);
        const ItemIndex selected = tree.items().find(tree->selected);
        below = index != 0 && selected != index && tree.items().isWithin(selected, index);
    }
    if (below)
        selectTreeItem(handle, item, TVC_UNKNOWN, Refusal::Ignored);
}

// Expands or collapses the item, without a notification of the parent. Returns false if `expanded` is true and the item
// has no children. In that case nothing changes.
bool setExpanded(const Look& tree, ItemIndex index, bool expanded) REQUIRES(coreMutex)
{
    Item& item = tree.items()[index];
    if (expanded && item.firstChild == 0)
        return false;
    item.expanded = expanded;
    item.expandedOnce = item.expandedOnce || expanded;
    tree->log.folded(tree.items(), index);
    tree.announce();
    return true;
}

enum class Notification { Send, Omit };

// Returns true if this call expanded or collapsed the item. Returns false if the parent refused the change or has made
// it itself, if the item doesn't exist, or if an item to expand has no children.
bool fold(HWND handle, HTREEITEM item, bool expand, Notification notification)
{
    NMTREEVIEWW change = {};
    change.action = static_cast<UINT>(expand ? TVE_EXPAND : TVE_COLLAPSE);
    if (notification == Notification::Send) {
        {
            const Look tree(handle);
            if (!tree)
                return false;
            change.itemNew = recordOf(tree.state(), item);
        }
        if (notify(handle, TVN_ITEMEXPANDINGW, change) != 0)
            return false;
    }
    if (!expand)
        moveSelectionTo(handle, item);
    {
        const Look tree(handle);
        const ItemIndex index = tree ? tree.items().find(item) : 0;
        if (index == 0 || tree.items()[index].expanded == expand || !setExpanded(tree, index, expand))
            return false;
        change.itemNew = recordOf(tree.state(), item);
    }
    if (notification == Notification::Send)
        notify(handle, TVN_ITEMEXPANDEDW, change);
    return true;
}

// Returns the item and its descendants, or all items if `top` is 0. Each item comes after its own descendants.
std::vector<HTREEITEM> fromTheLeavesUp(const TreeItems& items, ItemIndex top)
{
    std::vector<HTREEITEM> handles;
    for (ItemIndex at = top == 0 ? items.nextWithin(0, 0) : top; at != 0; at = items.nextWithin(at, top))
        handles.push_back(items.handleOf(at));
    std::ranges::reverse(handles);
    return handles;
}

void remove(const Look& tree, ItemIndex index) REQUIRES(coreMutex)
{
    TreeItems& items = tree.items();
    if (items.isWithin(items.find(tree->selected), index))
        tree->selected = nullptr;
    tree->log.removing(items, index);
    const ItemIndex parent = items[index].parent;
    items.erase(index);
    if (parent != 0 && items[parent].firstChild == 0) {
        tree->log.updated(items, parent);
        if (std::exchange(items[parent].expanded, false))
            tree->log.folded(items, parent);
    }
    tree.announce();
}

// Removes the items. Before each removal, notifies the tree's parent window.
void removeAndNotify(HWND handle, const std::vector<HTREEITEM>& items)
{
    for (const HTREEITEM item : items) {
        NMTREEVIEWW change = {};
        {
            const Look tree(handle);
            if (!tree)
                return;
            if (tree.items().find(item) == 0)
                continue;
            change.itemOld = recordOf(tree.state(), item);
        }
        notify(handle, TVN_DELETEITEMW, change);
        const Look tree(handle);
        const ItemIndex index = tree ? tree.items().find(item) : 0;
        if (index != 0)
            remove(tree, index);
    }
}

void removeChildren(HWND handle, HTREEITEM item)
{
    std::vector<HTREEITEM> below;
    {
        const Look tree(handle);
        const ItemIndex index = tree ? tree.items().find(item) : 0;
        if (index == 0)
            return;
        below = fromTheLeavesUp(tree.items(), index);
        below.pop_back();
        tree.items()[index].expandedOnce = false;
    }
    removeAndNotify(handle, below);
}

}  // namespace

LRESULT foldByProgram(HWND handle, HTREEITEM item, WPARAM action)
{
    bool expanded = false;
    Notification notification = Notification::Omit;
    {
        const Look tree(handle);
        const ItemIndex index = tree ? tree.items().find(item) : 0;
        if (index == 0)
            return FALSE;
        expanded = tree.items()[index].expanded;
        notification = tree.items()[index].expandedOnce ? Notification::Omit : Notification::Send;
    }
    const WPARAM direction = action & TVE_TOGGLE;
    const bool expand = direction == TVE_EXPAND || (direction == TVE_TOGGLE && !expanded);
    if (direction == 0)
        return FALSE;
    if (expand)
        return expanded || fold(handle, item, true, notification) ? TRUE : FALSE;
    if (!expanded || !fold(handle, item, false, notification))
        return FALSE;
    if (action & TVE_COLLAPSERESET)
        removeChildren(handle, item);
    return TRUE;
}

void foldByUser(HWND handle, HTREEITEM item, WPARAM action)
{
    bool expanded = false;
    {
        const Look tree(handle);
        const ItemIndex index = tree ? tree.items().find(item) : 0;
        if (index == 0 || !tree.items()[index].hasButton())
            return;
        expanded = tree.items()[index].expanded;
    }
    const bool expand = action == TVE_TOGGLE ? !expanded : action == TVE_EXPAND;
    if (expand != expanded)
        fold(handle, item, expand, Notification::Send);
}

BOOL deleteTreeItem(HWND handle, HTREEITEM item)
{
    const bool all = !item || item == TVI_ROOT;
    HTREEITEM refuge = nullptr;
    bool selectionGoes = false;
    std::vector<HTREEITEM> going;
    {
        const Look tree(handle);
        const ItemIndex index = tree && !all ? tree.items().find(item) : 0;
        if (!tree || (!all && index == 0))
            return FALSE;
        const ItemIndex selected = tree.items().find(tree->selected);
        selectionGoes = selected != 0 && tree.items().isWithin(selected, index);
        const Item& top = tree.items()[index];
        refuge = tree.items().handleOf(top.next != 0 ? top.next : top.previous != 0 ? top.previous : top.parent);
        going = fromTheLeavesUp(tree.items(), index);
    }
    if (selectionGoes)
        selectTreeItem(handle, refuge, TVC_UNKNOWN, Refusal::Ignored);
    removeAndNotify(handle, going);
    return TRUE;
}

}  // namespace platform::window
