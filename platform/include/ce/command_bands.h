// ce/command_bands.h - the bar across the top of a main window. It consists of bands, such as a menu and a toolbar.
//
// A button or menu item sends WM_COMMAND with its id to the bands' parent. The parent also gets WM_NOTIFY with
// RBN_HEIGHTCHANGE, so that it can move the windows below the bands. The bands send this notification when the bar's
// height changes, even while the bar is built, and whenever the parent gets a new size. They send no other
// notification.
#pragma once

#include "ce/controls.h"
#include "ce/window.h"

struct REBARBANDINFOW {
    UINT cbSize;
    UINT fMask;
    UINT fStyle;
    COLORREF clrFore;
    COLORREF clrBack;
    WCHAR* lpText;
    UINT cch;
    int iImage;
    HWND hwndChild;
    UINT cxMinChild;
    UINT cyMinChild;
    UINT cx;
    HBITMAP hbmBack;
    UINT wID;
    UINT cyChild;
    UINT cyMaxChild;
    UINT cyIntegral;
    UINT cxIdeal;
    LPARAM lParam;
};

struct TBBUTTON {
    int iBitmap;
    int idCommand;
    BYTE fsState;
    BYTE fsStyle;
    DWORD_PTR dwData;
    INT_PTR iString;
};

inline constexpr DWORD RBS_BANDBORDERS = 0x400;
inline constexpr UINT RBBS_CHILDEDGE = 4;
inline constexpr UINT RBBS_NOGRIPPER = 0x100;
inline constexpr UINT RBBIM_STYLE = 1;
inline constexpr UINT RBBIM_IMAGE = 8;
inline constexpr UINT RBBIM_CHILD = 0x10;
inline constexpr UINT RBBIM_SIZE = 0x40;
inline constexpr UINT RBBIM_ID = 0x100;
inline constexpr UINT RBBS_BREAK = 1;
inline constexpr UINT RB_GETBARHEIGHT = WM_USER + 27;
inline constexpr UINT RBN_HEIGHTCHANGE = static_cast<UINT>(-831);
inline constexpr UINT TB_ENABLEBUTTON = WM_USER + 1;
inline constexpr UINT TB_BUTTONCOUNT = WM_USER + 24;
inline constexpr UINT TB_ADDBUTTONSW = WM_USER + 68;
inline constexpr BYTE TBSTATE_ENABLED = 4;
inline constexpr BYTE TBSTYLE_SEP = 1;

// CommandBands_AddAdornments always adds a close button. With this flag it adds a help button, too.
inline constexpr DWORD CMDBAR_HELP = 11;

// Makes a bar without bands. It is hidden until CommandBands_Show, unless `styles` contains WS_VISIBLE. If `parent`
// isn't a window of the calling thread, returns null and sets error 1400.
HWND CommandBands_Create(HINSTANCE instance, HWND parent, UINT id, DWORD styles, HIMAGELIST images);
// Adds `count` bands. A band shows its hwndChild if RBBIM_CHILD is set, otherwise a new command bar. Fails with error
// 87 if `infos` is null or a cbSize is wrong. Fails with error 1400 if `bands` isn't a window that CommandBands_Create
// has made, or if an hwndChild isn't a window.
BOOL CommandBands_AddBands(HWND bands, HINSTANCE instance, UINT count, const REBARBANDINFOW* infos);
// Returns the window that band `index` shows. The first band has index 0. If there is no such band, returns null and
// sets error 1400.
HWND CommandBands_GetCommandBar(HWND bands, UINT index);
BOOL CommandBands_AddAdornments(HWND bands, HINSTANCE instance, DWORD flags, REBARBANDINFOW* info);
BOOL CommandBands_Show(HWND bands, BOOL show);
// CommandBands_Height returns the height of the whole bar, and CommandBar_Height the height of one command bar, in
// virtual pixels. For any other window both return 0.
UINT CommandBands_Height(HWND bands);
int CommandBar_Height(HWND bar);
// Loads menu resource `menuId` and shows it to the left of all buttons, in place of an earlier menu. `at` is not used.
// Fails with error 1814 if there is no such resource, with error 1812 if it is damaged, and with error 1400 if `bar` is
// no command bar.
BOOL CommandBar_InsertMenubar(HWND bar, HINSTANCE instance, WORD menuId, WORD at);
// Sets the bitmap with the images of the bar's buttons, 16 by 16 pixels each. It replaces an earlier bitmap. `count`,
// `width` and `height` are not used. On success returns the index of the first image, which is always 0. On failure
// returns -1. The last error is that of FindResourceW (ce/resource.h), or 1400 if `bar` is no command bar.
int CommandBar_AddBitmap(HWND bar, HINSTANCE instance, int bitmapId, int count, int width, int height);
