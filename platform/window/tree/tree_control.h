// tree_control.h - what a tree view holds, and the functions that its sources share. tree_control.cpp answers messages,
// tree_input.cpp handles clicks and keys, tree_changes.cpp moves the selection, expands, collapses, deletes and
// notifies the parent, and tree_rows.cpp computes positions.
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
    HTREEITEM top = nullptr;  // the item in the first row in view; null or dead: the first item
    HIMAGELIST images = nullptr;
    TypeAhead typed;
};

// Null for a window that isn't a tree view.
inline TreeViewState* findTree(HWND tree) REQUIRES(coreMutex)
{
    return findState<TreeViewState>(tree, WindowKind::TreeView);
}

// Reports Change::Tree. To be called after each change that the display shows.
void announceTree(const Window& window, TreeViewState& tree) REQUIRES(coreMutex);

// Positions (tree_rows.cpp).
int rowsInView(const Window& window) REQUIRES(coreMutex);
// Scrolls the item into view.
void bringIntoView(const Window& window, TreeViewState& tree, ItemIndex index) REQUIRES(coreMutex);
// Scrolls the item into view and gives a screen point in that part of it. Index 0: a point below the rows.
POINT pointOn(const Window& window, TreeViewState& tree, ItemIndex index, TreePart part) REQUIRES(coreMutex);
// The item at hit.pt, in client coordinates. Fills in flags and hItem.
ItemIndex hitTest(const Window& window, const TreeViewState& tree, TVHITTESTINFO& hit) REQUIRES(coreMutex);

// ---- Called in the name of the owner thread (tree_changes.cpp). They notify the parent, which may destroy the tree or
// the item.

enum class Refusal { Possible, Ignored };

// Selects the item, or nothing for null. False if the parent refused or the item is dead. If the item is selected
// already the result is true and the parent isn't notified.
bool selectTreeItem(HWND tree, HTREEITEM item, UINT cause, Refusal refusal) EXCLUDES(coreMutex);
// TVM_EXPAND. Notifies the parent only if the item was never expanded.
LRESULT foldByProgram(HWND tree, HTREEITEM item, WPARAM action) EXCLUDES(coreMutex);
// Always notifies the parent. `action` is TVE_EXPAND, TVE_COLLAPSE or TVE_TOGGLE. An item without a
// button stays as it is.
void foldByUser(HWND tree, HTREEITEM item, WPARAM action) EXCLUDES(coreMutex);
BOOL deleteTreeItem(HWND tree, HTREEITEM item) EXCLUDES(coreMutex);

// Collapses what is expanded and expands it again, so that the parent lists it anew (tree_relist.cpp). The selection
// goes to the nearest item with a button at or above the selected one, since the parent may act on any other.
void relistTree(HWND tree) EXCLUDES(coreMutex);

// Handles WM_KEYDOWN, WM_CHAR, InputClick, InputDoubleClick and InputRelist (tree_input.cpp).
LRESULT takeTreeInput(HWND tree, UINT message, WPARAM wParam, LPARAM lParam) EXCLUDES(coreMutex);

}  // namespace platform::window
