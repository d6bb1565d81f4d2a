#include "tree_control.h"
#include "window/input.h"
#include "window/notify.h"

#include <algorithm>

namespace platform::window {

namespace {

void notify(HWND handle, UINT code)
{
    NMHDR header = {};
    header.code = code;
    notifyParent(handle, header);
}

// Scrolls the item into view and stores the position of the clicked part, which GetMessagePos returns. Returns false if
// the tree is disabled, if the item doesn't exist, or if an ancestor of the item is collapsed.
bool setPointer(HWND handle, HTREEITEM item, TreePart part)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    TreeViewState* tree = findTree(handle);
    if (!tree || !takesInputOf(*window))
        return false;
    const ItemIndex index = tree->items.find(item);
    if ((item && index == 0) || tree->items.nearestVisible(index) != index)
        return false;
    currentThread().pointer = pointOn(*window, *tree, index, part);
    return true;
}

bool isOnItem(TreePart part)
{
    return part == TreePart::Label || part == TreePart::Icon;
}

// Notifies the parent of the click. If the parent returns nonzero, it has handled the click, and this function returns
// false. Otherwise a click on the button expands or collapses the item, and a click on the label or icon selects it.
bool click(HWND handle, HTREEITEM item, TreePart part)
{
    NMHDR header = {};
    header.code = NM_CLICK;
    if (notifyParent(handle, header) != 0)
        return false;
    if (item && part == TreePart::Button)
        foldByUser(handle, item, TVE_TOGGLE);
    else if (item && isOnItem(part))
        selectTreeItem(handle, item, TVC_BYMOUSE, Refusal::Possible);
    return true;
}

// Handles the second click of a double click. This click first has the effect of a single click, even if it hits
// another item than the first click did.
void doubleClick(HWND handle, HTREEITEM item, TreePart part)
{
    if (!click(handle, item, part))
        return;
    notify(handle, NM_DBLCLK);
    if (isOnItem(part))
        foldByUser(handle, item, TVE_TOGGLE);
}

HTREEITEM selectedIn(HWND handle)
{
    const Lock lock(coreMutex);
    const TreeViewState* tree = findTree(handle);
    return tree ? tree->selected : nullptr;
}

HTREEITEM nextWithin(HWND handle, HTREEITEM item, HTREEITEM top)
{
    const Lock lock(coreMutex);
    const TreeViewState* tree = findTree(handle);
    if (!tree)
        return nullptr;
    const ItemIndex index = tree->items.find(item);
    const ItemIndex within = tree->items.find(top);
    return index == 0 || within == 0 ? nullptr : tree->items.handleOf(tree->items.nextWithin(index, within));
}

// Expands `top` and all items below it, including items that the tree's parent window adds when an item is expanded.
void expandAllBelow(HWND handle, HTREEITEM top)
{
    for (HTREEITEM at = top; at; at = nextWithin(handle, at, top))
        foldByUser(handle, at, TVE_EXPAND);
}

ItemIndex manyRows(const TreeItems& items, ItemIndex from, int rows)
{
    for (; rows != 0; rows += rows > 0 ? -1 : 1) {
        const ItemIndex next = rows > 0 ? items.nextVisible(from) : items.previousVisible(from);
        if (next == 0)
            break;
        from = next;
    }
    return from;
}

// Returns the item to which the key moves the selection, or `from` if the key doesn't move the selection.
ItemIndex targetOf(const Window& window, const TreeViewState& tree, ItemIndex from, WPARAM key) REQUIRES(coreMutex)
{
    const TreeItems& items = tree.items;
    const int page = std::max(rowsInView(window) - 1, 1);
    switch (key) {
    case VK_HOME:
        return items.firstVisible();
    case VK_END:
        return items.lastVisible();
    case VK_UP:
        return manyRows(items, from, -1);
    case VK_DOWN:
        return manyRows(items, from, 1);
    case VK_PRIOR:
        return manyRows(items, from, -page);
    case VK_NEXT:
        return manyRows(items, from, page);
    case VK_BACK:
    case VK_LEFT:
        return items[from].parent != 0 ? items[from].parent : from;
    case VK_RIGHT:
        return items[from].expanded ? items[from].firstChild : from;
    default:
        return from;
    }
}

void moveByKey(HWND handle, WPARAM key)
{
    HTREEITEM target = nullptr;
    {
        const Lock lock(coreMutex);
        const Window* window = findWindow(handle);
        const TreeViewState* tree = findTree(handle);
        if (!tree)
            return;
        const ItemIndex from = tree->items.find(tree->selected);
        target = tree->items.handleOf(from != 0 ? targetOf(*window, *tree, from, key) : tree->items.firstVisible());
    }
    if (target)
        selectTreeItem(handle, target, TVC_BYKEYBOARD, Refusal::Possible);
}

// If `expand` is true: can a key expand the item now? If `expand` is false: can a key collapse the item now?
bool foldsByKey(HWND handle, HTREEITEM item, bool expand)
{
    const Lock lock(coreMutex);
    const TreeViewState* tree = findTree(handle);
    const ItemIndex index = tree ? tree->items.find(item) : 0;
    return index != 0 && tree->items[index].hasButton() && tree->items[index].expanded != expand;
}

void pressKey(HWND handle, WPARAM key)
{
    const HTREEITEM selected = selectedIn(handle);
    switch (key) {
    case VK_RETURN:
        notify(handle, NM_RETURN);
        return;
    case VK_ADD:
        foldByUser(handle, selected, TVE_EXPAND);
        return;
    case VK_SUBTRACT:
        foldByUser(handle, selected, TVE_COLLAPSE);
        return;
    case VK_MULTIPLY:
        expandAllBelow(handle, selected);
        return;
    case VK_LEFT:
    case VK_RIGHT:
        if (foldsByKey(handle, selected, key == VK_RIGHT)) {
            foldByUser(handle, selected, TVE_TOGGLE);
            return;
        }
        break;
    case VK_HOME:
    case VK_END:
    case VK_UP:
    case VK_DOWN:
    case VK_PRIOR:
    case VK_NEXT:
    case VK_BACK:
        break;
    default:
        return;
    }
    moveByKey(handle, key);
}

// Returns the first visible item whose text begins with the typed text, or null if there is none. The search begins at
// the selected item. After the last item it continues with the first. If `typed` is one letter or the same letter
// repeated (isOneLetter), the function searches for that letter, and begins at the item after the selected one.
HTREEITEM search(const TreeViewState& tree, std::u16string_view typed)
{
    const TreeItems& items = tree.items;
    const ItemIndex selected = items.find(tree.selected);
    const bool oneLetter = isOneLetter(typed);
    const std::u16string_view start = oneLetter ? typed.substr(0, 1) : typed;
    const ItemIndex first = selected == 0 ? items.firstVisible() : selected;
    ItemIndex at = oneLetter && selected != 0 ? items.nextVisible(first) : first;
    for (std::size_t step = 0; step <= items.count(); ++step) {
        if (at == 0)
            at = items.firstVisible();
        if (at == 0 || beginsWith(items[at].text, start))
            break;
        at = items.nextVisible(at);
    }
    return at != 0 && beginsWith(items[at].text, start) ? items.handleOf(at) : nullptr;
}

// While no search is in progress, some characters have the effect of a key. Returns that key, or 0 for any other
// character.
WORD keyOf(char16_t character)
{
    switch (character) {
    case u'+':
        return VK_ADD;
    case u'-':
        return VK_SUBTRACT;
    case u'*':
        return VK_MULTIPLY;
    default:
        return 0;
    }
}

void clickAt(HWND handle, HTREEITEM item, TreePart part)
{
    if (setPointer(handle, item, part))
        (void)click(handle, item, part);
}

void typeCharacter(HWND handle, char16_t character)
{
    HTREEITEM found = nullptr;
    HTREEITEM clicked = nullptr;
    WORD key = 0;
    {
        const Lock lock(coreMutex);
        TreeViewState* tree = findTree(handle);
        if (!tree || character < u' ')
            return;
        key = tree->typed.inProgress() ? WORD{0} : keyOf(character);
        const std::u16string typed = tree->typed.with(character);
        found = key ? nullptr : search(*tree, typed);
        // If a space continues a typed text and the search finds an item for the longer text, the space is part of that
        // text. Otherwise the space acts as a click on the selected item.
        if (character == u' ' && (!found || typed.size() == 1)) {
            clicked = tree->selected;
            tree->typed.end();
        } else if (!key) {
            tree->typed.note(typed);
        }
    }
    if (key)
        pressKey(handle, key);
    else if (clicked)
        clickAt(handle, clicked, TreePart::Label);
    else if (found)
        selectTreeItem(handle, found, TVC_BYKEYBOARD, Refusal::Possible);
}

// Ends the typed text. The next letter begins a new search from the selected item.
void endTyping(HWND handle)
{
    const Lock lock(coreMutex);
    if (TreeViewState* tree = findTree(handle))
        tree->typed.end();
}

void notifyKey(HWND handle, WPARAM key)
{
    NMTVKEYDOWN report = {};
    report.hdr.code = TVN_KEYDOWN;
    report.wVKey = static_cast<WORD>(key);
    notifyParent(handle, report.hdr);
}

bool takesInputNow(HWND handle)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    return window && takesInputOf(*window);
}

}  // namespace

LRESULT takeTreeInput(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == InputClick || message == InputDoubleClick) {
        const auto item = wParam == ~WPARAM{0} ? nullptr : reinterpret_cast<HTREEITEM>(wParam);
        const auto part = static_cast<TreePart>(lParam);
        endTyping(handle);
        if (message == InputClick)
            clickAt(handle, item, part);
        else if (setPointer(handle, item, part))
            doubleClick(handle, item, part);
        return 0;
    }
    if (!takesInputNow(handle))
        return 0;
    if (message == InputRelist) {
        relistTree(handle);
        return 0;
    }
    if (message == WM_CHAR) {
        typeCharacter(handle, static_cast<char16_t>(wParam));
        return 0;
    }
    if (!typesCharacter(wParam))
        endTyping(handle);
    notifyKey(handle, wParam);
    // A key with Ctrl doesn't change the tree. Ctrl with an arrow key scrolls, and the display does that by itself.
    if (!(lParam & KeyWithControl))
        pressKey(handle, wParam);
    return 0;
}

}  // namespace platform::window
