// tree_control.h - the data of a tree view, and functions that its source files share. tree_control.cpp answers
// messages, and tree_input.cpp handles clicks and keys. tree_changes.cpp moves the selection, expands, collapses and
// deletes items, and notifies the parent window. tree_rows.cpp computes positions.
#pragma once

#include "tree_items.h"
#include "tree_log.h"
#include "window/core.h"
#include "window/type_ahead.h"

#include "ce/tree_view.h"

namespace platform::window {

struct TreeViewState : ClassState {
    TreeItems items;
    TreeLog log;
    bool announced = false;  // Change::Tree was reported and the changes aren't taken yet
    HTREEITEM selected = nullptr;
    HTREEITEM top = nullptr;  // the item in the first row in view; if null or erased, the first item
    HIMAGELIST images = nullptr;
    TypeAhead typed;
};

// Null for a window that isn't a tree view.
inline TreeViewState* findTree(HWND tree) REQUIRES(coreMutex)
{
    return findState<TreeViewState>(tree, WindowKind::TreeView);
}

// Reports Change::Tree to the display. Does nothing if there was an earlier report and the display hasn't called
// takeTreeChanges since then (`announced` is true). Must be called after each change that the display shows.
void announceTree(const Window& window, TreeViewState& tree) REQUIRES(coreMutex);

// Positions (tree_rows.cpp).
int rowsInView(const Window& window) REQUIRES(coreMutex);
// Scrolls the item into view.
void bringIntoView(const Window& window, TreeViewState& tree, ItemIndex index) REQUIRES(coreMutex);
// Scrolls the item into view. Returns a point in that part of the item's row, in screen coordinates. If `index` is 0,
// the point is below the rows.
POINT pointOn(const Window& window, TreeViewState& tree, ItemIndex index, TreePart part) REQUIRES(coreMutex);
// Returns the item at hit.pt, which is in client coordinates, or 0 if there is none. Sets hit.flags and hit.hItem.
ItemIndex hitTest(const Window& window, const TreeViewState& tree, TVHITTESTINFO& hit) REQUIRES(coreMutex);

// ---- The following functions must be called while currentThread() is the thread that owns the tree. That is the case
// in the window procedures of that thread. Most of the functions are in tree_changes.cpp. They notify the parent
// window, which may destroy the tree or the item.

enum class Refusal { Possible, Ignored };

// Selects the item and notifies the parent with the reason `cause`, a TVC_ number. If `item` is null, no item is
// selected afterwards. Returns false if the item doesn't exist, or if `refusal` is Possible and the parent refused. If
// the item is selected already, returns true without notifying the parent.
bool selectTreeItem(HWND tree, HTREEITEM item, UINT cause, Refusal refusal) EXCLUDES(coreMutex);
// Handles TVM_EXPAND. Notifies the parent of the change only if Item::expandedOnce was false before.
LRESULT foldByProgram(HWND tree, HTREEITEM item, WPARAM action) EXCLUDES(coreMutex);
// Expands or collapses an item for the user, and notifies the parent each time. `action` is TVE_EXPAND, TVE_COLLAPSE or
// TVE_TOGGLE. Does nothing if the item has no button. Also does nothing for TVE_EXPAND if the item is expanded already,
// and for TVE_COLLAPSE if it is collapsed already.
void foldByUser(HWND tree, HTREEITEM item, WPARAM action) EXCLUDES(coreMutex);
BOOL deleteTreeItem(HWND tree, HTREEITEM item) EXCLUDES(coreMutex);

// Collapses the expanded top items and then expands the items that were visible and expanded before. So the parent
// window lists their children again (tree_relist.cpp). Then selects the item that was selected before. If that item has
// no button, selects its nearest ancestor with a button instead, because the selection of an item without a button may
// start an action in the parent window.
void relistTree(HWND tree) EXCLUDES(coreMutex);

// Handles WM_KEYDOWN, WM_CHAR, InputClick, InputDoubleClick and InputRelist (tree_input.cpp).
LRESULT takeTreeInput(HWND tree, UINT message, WPARAM wParam, LPARAM lParam) EXCLUDES(coreMutex);

}  // namespace platform::window
