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
// In the comments below, wParam is 0 unless the comment mentions it.
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

// Deletes the item in lParam and all items below it. If lParam is null or TVI_ROOT, deletes all items. Returns nonzero,
// or 0 for an invalid handle.
inline constexpr UINT TVM_DELETEITEM = 0x1101;
// TVM_EXPAND (wParam: TVE_..., lParam: item) is declared in ce/controls.h.

// Returns the number of items. lParam is 0.
inline constexpr UINT TVM_GETCOUNT = 0x1105;
// wParam is TVSIL_NORMAL for both messages. TVM_GETIMAGELIST returns the image list. TVM_SETIMAGELIST sets the image
// list in lParam, and returns the previous one.
inline constexpr UINT TVM_GETIMAGELIST = 0x1108;
inline constexpr UINT TVM_SETIMAGELIST = 0x1109;
// Returns the handle of the item that has the relation in wParam (TVGN_...) to the item in lParam, or 0 if there is no
// such item. With TVGN_ROOT, TVGN_FIRSTVISIBLE and TVGN_CARET, lParam is not used.
inline constexpr UINT TVM_GETNEXTITEM = 0x110A;
// With TVGN_CARET in wParam, selects the item in lParam and makes it visible as TVM_ENSUREVISIBLE does. If lParam is
// null, no item is selected afterwards. Returns nonzero, or 0 if the parent refused or the handle is invalid.
inline constexpr UINT TVM_SELECTITEM = 0x110B;
// lParam points to a TVHITTESTINFO. Returns the item whose row contains the point, or 0 if there is none.
inline constexpr UINT TVM_HITTEST = 0x1111;
// Expands the ancestors of the item in lParam, as TVM_EXPAND does, and scrolls to that item. Returns nonzero, or 0 for
// an invalid handle.
inline constexpr UINT TVM_ENSUREVISIBLE = 0x1114;
// Inserts the item that lParam, a TVINSERTSTRUCTW*, describes. The text is copied. The control selects and expands
// nothing. Returns the new item's handle, or 0 for an invalid hParent.
inline constexpr UINT TVM_INSERTITEMW = 0x1132;
// TVM_GETITEMW gets fields of an item, and TVM_SETITEMW sets them. lParam is a TVITEMW*. Its `mask` says which fields,
// and its hItem is always read. TVM_GETITEMW cuts the text at cchTextMax. Of the state, TVM_SETITEMW can set only
// TVIS_EXPANDEDONCE. To select or expand an item, use TVM_SELECTITEM or TVM_EXPAND. On success TVM_GETITEMW and
// TVM_SETITEMW return nonzero. For an invalid handle they return 0 and leave the TVITEMW unchanged.
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
