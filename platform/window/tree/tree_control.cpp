#include "tree_control.h"

#include "tree_control/tree_class.h"
#include "window/input.h"
#include "window/notify.h"

#include "text/utf.h"

#include <algorithm>
#include <utility>

namespace platform::window {

void announceTree(const Window& window, TreeViewState& tree)
{
    if (!std::exchange(tree.announced, true))
        announce(window, Change::Tree);
}

namespace {

HTREEITEM handleIn(LPARAM lParam)
{
    return reinterpret_cast<HTREEITEM>(lParam);
}

LRESULT answerWith(HTREEITEM item)
{
    return reinterpret_cast<LRESULT>(item);
}

bool isTop(HTREEITEM parent)
{
    return !parent || parent == TVI_ROOT;
}

// Returns the text of the record. The result is empty if the pointer is null or LPSTR_TEXTCALLBACK (-1). With
// LPSTR_TEXTCALLBACK the tree would have to ask the parent for the text on demand, which isn't supported.
std::u16string_view textOf(const TVITEMW& record)
{
    const auto address = reinterpret_cast<std::intptr_t>(record.pszText);
    return address == 0 || address == -1 ? std::u16string_view() : std::u16string_view(record.pszText);
}

void setFields(Item& item, const TVITEMW& record)
{
    if (record.mask & TVIF_IMAGE)
        item.image = record.iImage;
    if (record.mask & TVIF_SELECTEDIMAGE)
        item.selectedImage = record.iSelectedImage;
    if (record.mask & TVIF_PARAM)
        item.parameter = record.lParam;
    if (record.mask & TVIF_CHILDREN)
        item.button = record.cChildren < 0 ? Item::ButtonByChildren : record.cChildren > 0 ? 1 : 0;
    if ((record.mask & TVIF_STATE) && (record.stateMask & TVIS_EXPANDEDONCE))
        item.expandedOnce = (record.state & TVIS_EXPANDEDONCE) != 0;
}

ItemIndex insertAt(TreeItems& items, ItemIndex parent, HTREEITEM after, std::u16string_view text)
{
    if (after == TVI_SORT)
        return items.insertByText(parent, text);
    if (after == TVI_FIRST)
        return items.insertAfter(parent, 0, text);
    const ItemIndex sibling = items.find(after);
    const bool isSibling = sibling != 0 && items[sibling].parent == parent;
    return items.insertAfter(parent, isSibling ? sibling : items[parent].lastChild, text);
}

LRESULT insertItem(const Window& window, TreeViewState& tree, const TVINSERTSTRUCTW* insert) REQUIRES(coreMutex)
{
    if (!insert)
        return 0;
    const ItemIndex parent = isTop(insert->hParent) ? 0 : tree.items.find(insert->hParent);
    if (parent == 0 && !isTop(insert->hParent))
        return 0;
    const bool isFirst = tree.items[parent].firstChild == 0;
    const bool hasText = insert->item.mask & TVIF_TEXT;
    const ItemIndex index =
        insertAt(tree.items, parent, insert->hInsertAfter, hasText ? textOf(insert->item) : std::u16string_view());
    setFields(tree.items[index], insert->item);
    tree.log.inserted(tree.items, index);
    if (isFirst)
        tree.log.updated(tree.items, parent);  // the parent item may have a button now
    announceTree(window, tree);
    return answerWith(tree.items.handleOf(index));
}

// Copies as much of the text as fits, but never half of a surrogate pair.
void copyText(std::u16string_view text, WCHAR* out, int capacity)
{
    if (!out || capacity <= 0)
        return;
    const std::size_t count = text::wholeUnits(text, static_cast<std::size_t>(capacity) - 1);
    std::copy_n(text.data(), count, out);
    out[count] = 0;
}

LRESULT giveItem(TreeViewState& tree, TVITEMW* record)
{
    const ItemIndex index = record ? tree.items.find(record->hItem) : 0;
    if (index == 0)
        return FALSE;
    const Item& item = tree.items[index];
    if (record->mask & TVIF_TEXT)
        copyText(item.text, record->pszText, record->cchTextMax);
    if (record->mask & TVIF_IMAGE)
        record->iImage = item.image;
    if (record->mask & TVIF_SELECTEDIMAGE)
        record->iSelectedImage = item.selectedImage;
    if (record->mask & TVIF_PARAM)
        record->lParam = item.parameter;
    if (record->mask & TVIF_CHILDREN)
        record->cChildren = item.hasButton() ? 1 : 0;
    if (record->mask & TVIF_STATE)
        record->state = (record->hItem == tree.selected ? TVIS_SELECTED : 0) | (item.expanded ? TVIS_EXPANDED : 0) |
                        (item.expandedOnce ? TVIS_EXPANDEDONCE : 0);
    return TRUE;
}

bool looksDifferent(const Item& item, const TVITEMW& record, bool selected)
{
    return ((record.mask & TVIF_TEXT) && item.text != textOf(record)) ||
           ((record.mask & TVIF_IMAGE) && !selected && item.image != record.iImage) ||
           ((record.mask & TVIF_SELECTEDIMAGE) && selected && item.selectedImage != record.iSelectedImage) ||
           (record.mask & TVIF_CHILDREN);
}

LRESULT setItem(const Window& window, TreeViewState& tree, const TVITEMW* record) REQUIRES(coreMutex)
{
    const ItemIndex index = record ? tree.items.find(record->hItem) : 0;
    if (index == 0)
        return FALSE;
    Item& item = tree.items[index];
    if (looksDifferent(item, *record, record->hItem == tree.selected)) {
        tree.log.updated(tree.items, index);
        announceTree(window, tree);
    }
    if (record->mask & TVIF_TEXT)
        tree.items.setText(index, textOf(*record));
    setFields(item, *record);
    return TRUE;
}

ItemIndex relative(const TreeItems& items, WPARAM relation, ItemIndex index)
{
    const Item& item = items[index];
    switch (relation) {
    case TVGN_NEXT:
        return item.next;
    case TVGN_PREVIOUS:
        return item.previous;
    case TVGN_PARENT:
        return item.parent;
    case TVGN_CHILD:
        return item.firstChild;
    case TVGN_NEXTVISIBLE:
        return items.nextVisible(index);
    case TVGN_PREVIOUSVISIBLE:
        return items.previousVisible(index);
    default:
        return 0;
    }
}

LRESULT giveRelative(const TreeViewState& tree, WPARAM relation, HTREEITEM item)
{
    if (relation == TVGN_CARET)
        return answerWith(tree.selected);
    if (relation == TVGN_ROOT || (relation == TVGN_CHILD && isTop(item)))
        return answerWith(tree.items.handleOf(tree.items.firstVisible()));
    if (relation == TVGN_FIRSTVISIBLE) {
        const ItemIndex top = tree.items.nearestVisible(tree.items.find(tree.top));
        return answerWith(tree.items.handleOf(top != 0 ? top : tree.items.firstVisible()));
    }
    const ItemIndex index = tree.items.find(item);
    return index == 0 ? 0 : answerWith(tree.items.handleOf(relative(tree.items, relation, index)));
}

LRESULT setPictures(const Window& window, TreeViewState& tree, LPARAM images) REQUIRES(coreMutex)
{
    const HIMAGELIST before = std::exchange(tree.images, reinterpret_cast<HIMAGELIST>(images));
    announceTree(window, tree);
    return reinterpret_cast<LRESULT>(before);
}

LRESULT hit(const Window& window, const TreeViewState& tree, TVHITTESTINFO* info) REQUIRES(coreMutex)
{
    return info ? answerWith(tree.items.handleOf(hitTest(window, tree, *info))) : 0;
}

LRESULT answer(Window& window, TreeViewState& tree, UINT message, WPARAM wParam, LPARAM lParam) REQUIRES(coreMutex)
{
    switch (message) {
    case TVM_INSERTITEMW:
        return insertItem(window, tree, reinterpret_cast<const TVINSERTSTRUCTW*>(lParam));
    case TVM_GETITEMW:
        return giveItem(tree, reinterpret_cast<TVITEMW*>(lParam));
    case TVM_SETITEMW:
        return setItem(window, tree, reinterpret_cast<const TVITEMW*>(lParam));
    case TVM_GETNEXTITEM:
        return giveRelative(tree, wParam, handleIn(lParam));
    case TVM_GETCOUNT:
        return static_cast<LRESULT>(tree.items.count());
    case TVM_HITTEST:
        return hit(window, tree, reinterpret_cast<TVHITTESTINFO*>(lParam));
    case TVM_GETIMAGELIST:
        return wParam == TVSIL_NORMAL ? reinterpret_cast<LRESULT>(tree.images) : 0;
    case TVM_SETIMAGELIST:
        return wParam == TVSIL_NORMAL ? setPictures(window, tree, lParam) : 0;
    default:
        return 0;
    }
}

// The ancestors of an item, the top item first.
std::vector<HTREEITEM> ancestorsOf(HWND handle, HTREEITEM item)
{
    const Lock lock(coreMutex);
    std::vector<HTREEITEM> ancestors;
    const TreeViewState* tree = findTree(handle);
    const ItemIndex index = tree ? tree->items.find(item) : 0;
    for (ItemIndex at = index != 0 ? tree->items[index].parent : 0; at != 0; at = tree->items[at].parent)
        ancestors.push_back(tree->items.handleOf(at));
    std::ranges::reverse(ancestors);
    return ancestors;
}

LRESULT ensureVisible(HWND handle, HTREEITEM item)
{
    for (const HTREEITEM ancestor : ancestorsOf(handle, item))
        foldByProgram(handle, ancestor, TVE_EXPAND);
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    TreeViewState* tree = findTree(handle);
    const ItemIndex index = tree ? tree->items.find(item) : 0;
    if (index == 0)
        return FALSE;
    bringIntoView(*window, *tree, index);
    tree->log.show(item);
    announceTree(*window, *tree);
    return TRUE;
}

LRESULT selectByProgram(HWND handle, WPARAM relation, HTREEITEM item)
{
    if (relation == TVGN_FIRSTVISIBLE)
        return ensureVisible(handle, item);
    if (relation != TVGN_CARET)
        return FALSE;
    if (!selectTreeItem(handle, item, TVC_UNKNOWN, Refusal::Possible))
        return FALSE;
    if (item)
        ensureVisible(handle, item);
    return TRUE;
}

// If no item is selected, selects the first one, so that the arrow keys have an item to start from.
LRESULT takeFocus(HWND handle)
{
    HTREEITEM first = nullptr;
    {
        const Lock lock(coreMutex);
        const TreeViewState* tree = findTree(handle);
        if (tree && !tree->selected)
            first = tree->items.handleOf(tree->items.firstVisible());
    }
    if (first)
        selectTreeItem(handle, first, TVC_UNKNOWN, Refusal::Possible);
    return 0;
}

LRESULT treeProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case TVM_DELETEITEM:
        return deleteTreeItem(handle, handleIn(lParam));
    case TVM_EXPAND:
        return foldByProgram(handle, handleIn(lParam), wParam);
    case TVM_SELECTITEM:
        return selectByProgram(handle, wParam, handleIn(lParam));
    case TVM_ENSUREVISIBLE:
        return ensureVisible(handle, handleIn(lParam));
    case WM_SETFOCUS:
        return takeFocus(handle);
    case WM_GETDLGCODE:
        return WantsArrows | WantsCharacters;
    case WM_KEYDOWN:
    case WM_CHAR:
    case InputClick:
    case InputDoubleClick:
    case InputRelist:
        return takeTreeInput(handle, message, wParam, lParam);
    default:
        break;
    }
    if (message < TVM_DELETEITEM || message > TVM_SETITEMW)
        return DefWindowProcW(handle, message, wParam, lParam);
    const Lock lock(coreMutex);
    Window* window = findWindow(handle);
    return window ? answer(*window, stateOf<TreeViewState>(*window), message, wParam, lParam) : 0;
}

}  // namespace

WindowClass treeViewClass()
{
    return {u"SysTreeView32", treeProcedure, WindowKind::TreeView, true, makeStateOf<TreeViewState>, 0};
}

}  // namespace platform::window
