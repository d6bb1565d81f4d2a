// ce/tree_view.h - the tree view control "SysTreeView32": a hierarchy of items, of which one can be selected.
//
// It notifies its parent by WM_NOTIFY, in this order: NM_CLICK before the selection moves, TVN_SELCHANGINGW (nonzero
// refuses), TVN_SELCHANGEDW; TVN_ITEMEXPANDINGW (nonzero refuses) before and TVN_ITEMEXPANDEDW after an item expands or
// collapses; TVN_DELETEITEMW for each item that is deleted. Both clicks of a double click send NM_CLICK; NM_DBLCLK
// follows the second one. Handles of deleted items are invalid: a message with one gives 0.
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

// Sign-extended from their 32 bits.
inline const HTREEITEM TVI_ROOT = reinterpret_cast<HTREEITEM>(static_cast<INT_PTR>(static_cast<LONG>(0xFFFF0000)));
inline const HTREEITEM TVI_FIRST = reinterpret_cast<HTREEITEM>(static_cast<INT_PTR>(static_cast<LONG>(0xFFFF0001)));
inline const HTREEITEM TVI_LAST = reinterpret_cast<HTREEITEM>(static_cast<INT_PTR>(static_cast<LONG>(0xFFFF0002)));
inline const HTREEITEM TVI_SORT = reinterpret_cast<HTREEITEM>(static_cast<INT_PTR>(static_cast<LONG>(0xFFFF0003)));

// (0, item): nonzero; deletes all items below it, too. An item of null or TVI_ROOT deletes everything.
inline constexpr UINT TVM_DELETEITEM = 0x1101;
// TVM_EXPAND (action, item) is in ce/controls.h: the two notifications come only while TVIS_EXPANDEDONCE is clear.
inline constexpr UINT TVM_GETCOUNT = 0x1105;
// TVM_SETIMAGELIST (TVSIL_NORMAL, image list): the previous list.
inline constexpr UINT TVM_GETIMAGELIST = 0x1108;
inline constexpr UINT TVM_SETIMAGELIST = 0x1109;
// (TVGN_..., item): a handle, or 0 if there is no such item.
inline constexpr UINT TVM_GETNEXTITEM = 0x110A;
// (TVGN_CARET, item): nonzero; 0 if the parent refused. Null selects nothing.
inline constexpr UINT TVM_SELECTITEM = 0x110B;
// (0, TVHITTESTINFO): the item whose row contains the point, or 0.
inline constexpr UINT TVM_HITTEST = 0x1111;
// (0, item): expands the items above it, as TVM_EXPAND does, and scrolls to it.
inline constexpr UINT TVM_ENSUREVISIBLE = 0x1114;
// (0, TVINSERTSTRUCTW): the new item's handle, or 0. The text is copied. Never selects or expands.
inline constexpr UINT TVM_INSERTITEMW = 0x1132;
// (0, TVITEMW): nonzero; 0 for an invalid handle, and then the record is unchanged. hItem is read whatever the mask is.
// A text is cut at cchTextMax. Of the state only TVIS_EXPANDEDONCE can be set: messages select and expand an item.
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
