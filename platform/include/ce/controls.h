// ce/controls.h - the messages and styles of the standard controls: button, static, edit, list box, progress bar, tree
// view, date picker, and the image lists. Each control handles its messages as the platform documents them. The
// platform also documents messages of these controls that no header of ce/ declares. Such a message has no effect and
// returns 0. Messages that set the state of a button, list box, progress bar or date picker send no notification. These
// messages do notify the parent: BM_CLICK, EM_REPLACESEL, WM_SETTEXT to an edit of one line, and the messages that
// select, expand or delete an item of a tree.
#pragma once

#include "ce/window.h"

// Button. The kind is the low 4 bits of the style.
inline constexpr DWORD BS_PUSHBUTTON = 0;
inline constexpr DWORD BS_DEFPUSHBUTTON = 1;
inline constexpr DWORD BS_CHECKBOX = 2;
inline constexpr DWORD BS_AUTOCHECKBOX = 3;
inline constexpr DWORD BS_RADIOBUTTON = 4;
inline constexpr DWORD BS_3STATE = 5;
inline constexpr DWORD BS_AUTO3STATE = 6;
inline constexpr DWORD BS_GROUPBOX = 7;
inline constexpr DWORD BS_AUTORADIOBUTTON = 9;
inline constexpr WORD BN_CLICKED = 0;
inline constexpr UINT BM_GETCHECK = 0xF0;
inline constexpr UINT BM_SETCHECK = 0xF1;
inline constexpr UINT BM_CLICK = 0xF5;
inline constexpr WPARAM BST_UNCHECKED = 0;
inline constexpr WPARAM BST_CHECKED = 1;

// Static.
inline constexpr DWORD SS_LEFT = 0;
inline constexpr DWORD SS_CENTER = 1;
inline constexpr DWORD SS_RIGHT = 2;
inline constexpr DWORD SS_ICON = 3;
inline constexpr DWORD SS_NOPREFIX = 0x80;

// Edit.
inline constexpr DWORD ES_MULTILINE = 4;
inline constexpr DWORD ES_AUTOVSCROLL = 0x40;
inline constexpr DWORD ES_AUTOHSCROLL = 0x80;
inline constexpr DWORD ES_READONLY = 0x800;
inline constexpr DWORD ES_WANTRETURN = 0x1000;
inline constexpr WORD EN_CHANGE = 0x300;
inline constexpr WORD EN_UPDATE = 0x400;
inline constexpr WORD EN_MAXTEXT = 0x501;
inline constexpr UINT EM_GETSEL = 0xB0;
inline constexpr UINT EM_SETSEL = 0xB1;
inline constexpr UINT EM_REPLACESEL = 0xC2;
inline constexpr UINT EM_LIMITTEXT = 0xC5;
inline constexpr UINT EM_SETREADONLY = 0xCF;

// List box.
inline constexpr DWORD LBS_NOTIFY = 1;
inline constexpr DWORD LBS_SORT = 2;
inline constexpr DWORD LBS_MULTIPLESEL = 8;
inline constexpr WORD LBN_SELCHANGE = 1;
inline constexpr WORD LBN_DBLCLK = 2;
inline constexpr LRESULT LB_ERR = -1;
inline constexpr LRESULT LB_ERRSPACE = -2;
inline constexpr UINT LB_ADDSTRING = 0x180;
inline constexpr UINT LB_INSERTSTRING = 0x181;
inline constexpr UINT LB_DELETESTRING = 0x182;
inline constexpr UINT LB_RESETCONTENT = 0x184;
inline constexpr UINT LB_SETSEL = 0x185;
inline constexpr UINT LB_SETCURSEL = 0x186;
inline constexpr UINT LB_GETSEL = 0x187;
inline constexpr UINT LB_GETCURSEL = 0x188;
inline constexpr UINT LB_GETTEXT = 0x189;
inline constexpr UINT LB_GETTEXTLEN = 0x18A;
inline constexpr UINT LB_GETCOUNT = 0x18B;
inline constexpr UINT LB_GETSELCOUNT = 0x190;
inline constexpr UINT LB_SETHORIZONTALEXTENT = 0x194;
inline constexpr UINT LB_GETCARETINDEX = 0x19F;
inline constexpr UINT LB_FINDSTRINGEXACT = 0x1A2;
// An addition of this platform. Sets the detail of row wParam to the text at lParam. A display shows the detail beside
// the row. The detail isn't part of the row's text, so messages that find or read a row don't include it. Returns
// LB_ERR if there is no such row.
inline constexpr UINT LB_SETROWDETAIL = 0x1F0;

// Progress bar.
inline constexpr UINT PBM_SETRANGE = WM_USER + 1;
inline constexpr UINT PBM_SETPOS = WM_USER + 2;
inline constexpr UINT PBM_DELTAPOS = WM_USER + 3;
inline constexpr UINT PBM_SETSTEP = WM_USER + 4;
inline constexpr UINT PBM_STEPIT = WM_USER + 5;
inline constexpr UINT PBM_GETPOS = WM_USER + 8;

// Notifications that controls have in common.
inline constexpr UINT NM_CLICK = static_cast<UINT>(-2);
inline constexpr UINT NM_DBLCLK = static_cast<UINT>(-3);
inline constexpr UINT NM_RETURN = static_cast<UINT>(-4);

// Tree view.
inline constexpr DWORD TVS_HASBUTTONS = 1;
inline constexpr DWORD TVS_HASLINES = 2;
inline constexpr DWORD TVS_LINESATROOT = 4;
inline constexpr WPARAM TVE_COLLAPSE = 1;
inline constexpr WPARAM TVE_EXPAND = 2;
inline constexpr WPARAM TVE_TOGGLE = 3;
inline constexpr WPARAM TVE_COLLAPSERESET = 0x8000;
inline constexpr UINT TVM_EXPAND = 0x1102;

// The groups of control classes that a program is going to use. InitCommonControlsEx only checks dwSize, because all
// classes are registered from the start.
struct INITCOMMONCONTROLSEX {
    DWORD dwSize;
    DWORD dwICC;
};
inline constexpr DWORD ICC_TREEVIEW_CLASSES = 2;
inline constexpr DWORD ICC_BAR_CLASSES = 4;
inline constexpr DWORD ICC_PROGRESS_CLASS = 0x20;
inline constexpr DWORD ICC_DATE_CLASSES = 0x100;
inline constexpr DWORD ICC_COOL_CLASSES = 0x400;
BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* classes);

inline constexpr COLORREF CLR_NONE = 0xFFFFFFFF;
inline constexpr COLORREF CLR_DEFAULT = 0xFF000000;

// Makes an image list from the bitmap resource with the number `name`. The list refers to the whole bitmap: `width`,
// `grow`, `mask` and `flags` are not used. Returns null on failure. The last error is 87 if `type` isn't IMAGE_BITMAP,
// 1812 if the program has no resources, 1813 if they include no bitmap, or 1814 if no bitmap has the number `name`.
HIMAGELIST ImageList_LoadImage(HINSTANCE instance, const WCHAR* name, int width, int grow, COLORREF mask, UINT type,
                               UINT flags);
