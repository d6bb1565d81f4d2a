#include "tree/tree_events.h"

#include "engine/questions.h"
#include "set/item_list.h"
#include "set/set_state.h"
#include "tree/marking.h"
#include "tree_listing.h"

#include "ce/command_bands.h"

namespace {

// Toggles the mark of the item under the pointer if the item is already selected. A click on another item selects that
// item, and the notification of the new selection toggles its mark. So each click toggles one mark once.
void Click()
{
    const DWORD position = GetMessagePos();
    TVHITTESTINFO hit = {};
    hit.pt = {static_cast<SHORT>(LOWORD(position)), static_cast<SHORT>(HIWORD(position))};
    ScreenToClient(gTreeView, &hit.pt);
    auto* item = reinterpret_cast<HTREEITEM>(SendMessageW(gTreeView, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
    if (item && item == NextTreeItem(TVGN_CARET, nullptr))
        ToggleItem(item);
    RefreshMarks(gRootFiles);
}

void FillItem(HTREEITEM handle)
{
    TreeItem item;
    if (!ReadTreeItem(handle, item, false))
        return;
    SetWaitCursor();
    ListChildren(handle, TreeCodeOf(item.parameter));
    SetCursor(nullptr);
}

void EmptyItem(HTREEITEM handle)
{
    for (HTREEITEM child = NextTreeItem(TVGN_CHILD, handle); child;) {
        HTREEITEM next = NextTreeItem(TVGN_NEXT, child);
        SendMessageW(gTreeView, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(child));
        child = next;
    }
}

void PlaceTree(HWND window)
{
    RECT client = {};
    if (!GetClientRect(window, &client))
        return;
    const auto height = static_cast<int>(SendMessageW(gCommandBands, RB_GETBARHEIGHT, 0, 0));
    SetWindowPos(gTreeView, nullptr, 1, height + 1, client.right, client.bottom - height - 1,
                 SWP_NOZORDER | SWP_SHOWWINDOW);
}

// Sets the picture of a top item. `image` is the index of the picture for an empty list. The picture at the next index
// is for a list with entries.
void UpdateRootImage(HTREEITEM root, const ItemList* list, WORD code, int image)
{
    TreeItem item;
    const int wanted = !list || list->IsEmpty() ? image : image + 1;
    if (!ReadTreeItem(root, item, false) || item.image == wanted)
        return;
    item.image = wanted;
    item.parameter = TreeParameter(code, 0);
    WriteTreeItem(item);
}

}  // namespace

LRESULT TreeNotify(HWND window, WPARAM, LPARAM header)
{
    const auto* change = reinterpret_cast<const NMTREEVIEWW*>(header);
    switch (change->hdr.code) {
    case NM_CLICK:
        Click();
        break;
    case TVN_SELCHANGEDW:
        ToggleItem(change->itemNew.hItem);
        RefreshMarks(gRootFiles);
        break;
    case TVN_ITEMEXPANDINGW:
        if (change->action != TVE_COLLAPSE)
            FillItem(change->itemNew.hItem);
        break;
    case TVN_ITEMEXPANDEDW:
        if (change->action == TVE_COLLAPSE)
            EmptyItem(change->itemNew.hItem);
        break;
    case RBN_HEIGHTCHANGE:
        PlaceTree(window);
        break;
    default:
        break;
    }
    return 0;
}

DWORD UpdateRootImages()
{
    for (const NamedKind& kind : NamedKinds)
        UpdateRootImage(*kind.root, *KindOf(kind.kind).list, kind.rootCode, kind.rootImage);
    UpdateRootImage(gRootFiles, gFileList, TreeCodeFilesRoot, ImageFilesRoot);
    return 1;
}

void ResetFilesRoot()
{
    SendMessageW(gTreeView, TVM_EXPAND, TVE_TOGGLE | TVE_COLLAPSERESET, reinterpret_cast<LPARAM>(gRootFiles));
}
