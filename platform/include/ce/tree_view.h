// ce/tree_view.h - the tree view control "SysTreeView32": a hierarchy of items, of which one can be selected.
//
// The control notifies its parent by WM_NOTIFY. A click sends NM_CLICK before the selection moves. The second click of
// a double click sends NM_CLICK, too, and then NM_DBLCLK. Before the selection moves, the control sends
// TVN_SELCHANGINGW. If the parent returns nonzero, the selection doesn't move. Otherwise the control sends
// TVN_SELCHANGEDW after the move. The parent can't refuse a move that the control makes because the selected item is
// deleted or hidden. Before an item is expanded or collapsed, the control sends TVN_ITEMEXPANDINGW. If the parent
// returns nonzero, the item stays as it is. Otherwise the control sends TVN_ITEMEXPANDEDW afterwards. For TVM_EXPAND it
// sends these two notifications only while TVIS_EXPANDEDONCE is clear. Before an item is deleted, the control sends
// TVN_DELETEITEMW. Handles of deleted items are invalid: a message with such a handle returns 0.
//
// In the comments below, a message is described as "(wParam, lParam): result".
#pragma once

#include "ce/controls.h"

inline constexpr UINT TVIF_TEXT = 1;
inline constexpr UINT TVIF_IMAGE = 2;
inline constexpr UINT TVIF_PARAM = 4;
inline constexpr UINT TVIF_STATE = 8;
inline constexpr UINT TVIF_HANDLE = 0x10;
inline constexpr UINT TVIF_SELECTEDIMAGE = 0x20;
inline constexpr UINT TVIF_CHILDREN = 0x40;
inline constexpr UINT TVIS_SELECTED = 2;
inline constexpr UINT TVIS_EXPANDED = 0x20;
inline constexpr UINT TVIS_EXPANDEDONCE = 0x40;

// These values have 32 bits in the platform's documentation. Here they are sign-extended to the size of a pointer.
inline const HTREEITEM TVI_ROOT = reinterpret_cast<HTREEITEM>(static_cast<INT_PTR>(static_cast<LONG>(0xFFFF0000)));
inline const HTREEITEM TVI_FIRST = reinterpret_cast<HTREEITEM>(static_cast<INT_PTR>(static_cast<LONG>(0xFFFF0001)));
inline const HTREEITEM TVI_LAST = reinterpret_cast<HTREEITEM>(static_cast<INT_PTR>(static_cast<LONG>(0xFFFF0002)));
inline const HTREEITEM TVI_SORT = reinterpret_cast<HTREEITEM>(static_cast<INT_PTR>(static_cast<LONG>(0xFFFF0003)));

// (0, item): nonzero, or 0 for an invalid handle. Deletes the item and all items below it. With null or TVI_ROOT as the
// item, deletes all items.
inline constexpr UINT TVM_DELETEITEM = 0x1101;
// TVM_EXPAND (TVE_..., item) is declared in ce/controls.h.

// (0, 0): the number of items.
inline constexpr UINT TVM_GETCOUNT = 0x1105;
// TVM_GETIMAGELIST (TVSIL_NORMAL, 0): the image list. TVM_SETIMAGELIST (TVSIL_NORMAL, image list): the previous list.
inline constexpr UINT TVM_GETIMAGELIST = 0x1108;
inline constexpr UINT TVM_SETIMAGELIST = 0x1109;
// (TVGN_..., item): a handle, or 0 if there is no such item.
inline constexpr UINT TVM_GETNEXTITEM = 0x110A;
// (TVGN_CARET, item): nonzero, or 0 if the parent refused or the handle is invalid. Selects the item and makes it
// visible as TVM_ENSUREVISIBLE does. With null as the item, no item is selected afterwards.
inline constexpr UINT TVM_SELECTITEM = 0x110B;
// (0, TVHITTESTINFO): the item whose row contains the point, or 0.
inline constexpr UINT TVM_HITTEST = 0x1111;
// (0, item): nonzero, or 0 for an invalid handle. Expands the items above this item, as TVM_EXPAND does, and scrolls to
// the item.
inline constexpr UINT TVM_ENSUREVISIBLE = 0x1114;
// (0, TVINSERTSTRUCTW): the new item's handle, or 0 for an invalid hParent. The text is copied. Selects and expands
// nothing.
inline constexpr UINT TVM_INSERTITEMW = 0x1132;
// (0, TVITEMW): nonzero, or 0 for an invalid handle, which leaves the TVITEMW unchanged. hItem is read whatever the
// mask is. A text is cut at cchTextMax. Of the state only TVIS_EXPANDEDONCE can be set. To select or expand an item,
// use TVM_SELECTITEM or TVM_EXPAND.
inline constexpr UINT TVM_GETITEMW = 0x113E;
inline constexpr UINT TVM_SETITEMW = 0x113F;

inline constexpr WPARAM TVSIL_NORMAL = 0;
inline constexpr WPARAM TVGN_ROOT = 0;
inline constexpr WPARAM TVGN_NEXT = 1;
inline constexpr WPARAM TVGN_PREVIOUS = 2;
inline constexpr WPARAM TVGN_PARENT = 3;
inline constexpr WPARAM TVGN_CHILD = 4;
inline constexpr WPARAM TVGN_FIRSTVISIBLE = 5;
inline constexpr WPARAM TVGN_NEXTVISIBLE = 6;
inline constexpr WPARAM TVGN_PREVIOUSVISIBLE = 7;
inline constexpr WPARAM TVGN_CARET = 9;

inline constexpr UINT TVC_UNKNOWN = 0;
inline constexpr UINT TVC_BYMOUSE = 1;
inline constexpr UINT TVC_BYKEYBOARD = 2;

inline constexpr UINT TVHT_NOWHERE = 1;
inline constexpr UINT TVHT_ONITEMICON = 2;
inline constexpr UINT TVHT_ONITEMLABEL = 4;
inline constexpr UINT TVHT_ONITEMINDENT = 8;
inline constexpr UINT TVHT_ONITEMBUTTON = 0x10;
inline constexpr UINT TVHT_ONITEMRIGHT = 0x20;
inline constexpr UINT TVHT_ABOVE = 0x100;
inline constexpr UINT TVHT_BELOW = 0x200;
inline constexpr UINT TVHT_TOLEFT = 0x800;

inline constexpr UINT TVN_KEYDOWN = static_cast<UINT>(-412);
inline constexpr UINT TVN_SELCHANGINGW = static_cast<UINT>(-450);
inline constexpr UINT TVN_SELCHANGEDW = static_cast<UINT>(-451);
inline constexpr UINT TVN_ITEMEXPANDINGW = static_cast<UINT>(-454);
inline constexpr UINT TVN_ITEMEXPANDEDW = static_cast<UINT>(-455);
inline constexpr UINT TVN_DELETEITEMW = static_cast<UINT>(-458);

struct TVITEMW {
    UINT mask;
    HTREEITEM hItem;
    UINT state;
    UINT stateMask;
    WCHAR* pszText;
    int cchTextMax;
    int iImage;
    int iSelectedImage;
    int cChildren;
    LPARAM lParam;
};

struct TVINSERTSTRUCTW {
    HTREEITEM hParent;
    HTREEITEM hInsertAfter;
    TVITEMW item;
};

struct TVHITTESTINFO {
    POINT pt;
    UINT flags;
    HTREEITEM hItem;
};

struct NMTVKEYDOWN {
    NMHDR hdr;
    WORD wVKey;
    UINT flags;
};

struct NMTREEVIEWW {
    NMHDR hdr;
    UINT action;
    TVITEMW itemOld;
    TVITEMW itemNew;
    POINT ptDrag;
};
