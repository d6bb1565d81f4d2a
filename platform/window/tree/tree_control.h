// tree_control.h - what a tree view holds, and how its files share the work: tree_control.cpp answers messages,
// tree_changes.cpp moves the selection, folds and deletes and tells the parent, tree_rows.cpp knows where on the screen
// an item stands, tree_input.cpp takes clicks and keys.
#pragma once

#include "tree_items.h"
#include "tree_log.h"
#include "window/core.h"

#include "ce/tree_view.h"

namespace platform::window {

struct TreeViewState : ClassState {
    TreeItems items;
    TreeLog log;
    bool announced = false;  // the display knows that there is something to take
    HTREEITEM selected = nullptr;
    HTREEITEM top = nullptr;  // of the rows in view; null or dead: the first item
    HIMAGELIST images = nullptr;
    std::u16string typed;  // letters typed in quick succession
    Clock::time_point typedAt;
};

// Null for a window that is no tree view.
[[nodiscard]] inline TreeViewState* findTree(HWND tree) REQUIRES(coreMutex)
{
    return findState<TreeViewState>(tree, WindowKind::TreeView);
}

// To be called after every change of what the display shows.
void announceTree(const Window& window, TreeViewState& tree) REQUIRES(coreMutex);

// Where rows stand (tree_rows.cpp).
[[nodiscard]] int rowsInView(const Window& window) REQUIRES(coreMutex);
// Brings the item's row into view.
void bringIntoView(const Window& window, TreeViewState& tree, ItemIndex index) REQUIRES(coreMutex);
// A point on the screen inside that part of the item, brought into view first. 0: below the rows.
[[nodiscard]] POINT pointOn(const Window& window, TreeViewState& tree, ItemIndex index, TreePart part)
    REQUIRES(coreMutex);
// What stands at that client point; fills flags and hItem.
ItemIndex hitTest(const Window& window, const TreeViewState& tree, TVHITTESTINFO& hit) REQUIRES(coreMutex);

// ---- Without the lock, in the owner's name (tree_changes.cpp). All handles may die while the parent is told.

enum class Refusal { Possible, Ignored };

// Null: nothing is selected from then on. False if the parent refused or the item is dead; true also if it
// is selected already, which is not told.
bool selectTreeItem(HWND tree, HTREEITEM item, UINT cause, Refusal refusal) EXCLUDES(coreMutex);
// TVM_EXPAND: the parent is told only while the item was never expanded.
LRESULT foldByProgram(HWND tree, HTREEITEM item, WPARAM action) EXCLUDES(coreMutex);
// The parent is always told. TVE_EXPAND, TVE_COLLAPSE or TVE_TOGGLE; nothing for an item without a button.
void foldByUser(HWND tree, HTREEITEM item, WPARAM action) EXCLUDES(coreMutex);
BOOL deleteTreeItem(HWND tree, HTREEITEM item) EXCLUDES(coreMutex);

// WM_KEYDOWN, WM_CHAR, a click (tree_input.cpp).
LRESULT takeTreeInput(HWND tree, UINT message, WPARAM wParam, LPARAM lParam) EXCLUDES(coreMutex);

}  // namespace platform::window
