// ce/command_bands.h - the bar across the top of a main window. It consists of bands, such as a menu and a toolbar.
//
// A button or menu item sends WM_COMMAND with its id to the bands' parent. The parent also gets WM_NOTIFY with
// RBN_HEIGHTCHANGE, so that it can move the windows below the bands. This happens when the bar's height changes, even
// while the bar is built, and whenever the parent gets a new size. The bands send no other notifications.
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

// Null on failure. The bands are hidden until CommandBands_Show.
HWND CommandBands_Create(HINSTANCE instance, HWND parent, UINT id, DWORD styles, HIMAGELIST images);
// Each band gets a separate command bar. Fails with 87 for a wrong cbSize, and with 1400.
BOOL CommandBands_AddBands(HWND bands, HINSTANCE instance, UINT count, const REBARBANDINFOW* infos);
// The command bar in band `index`, from 0; null if there is no such band.
HWND CommandBands_GetCommandBar(HWND bands, UINT index);
BOOL CommandBands_AddAdornments(HWND bands, HINSTANCE instance, DWORD flags, REBARBANDINFOW* info);
BOOL CommandBands_Show(HWND bands, BOOL show);
// Both heights are in virtual pixels.
UINT CommandBands_Height(HWND bands);
int CommandBar_Height(HWND bar);
// Loads menu resource `menuId` and inserts it to the left of button `at`. Fails with 1814 and 1400.
BOOL CommandBar_InsertMenubar(HWND bar, HINSTANCE instance, WORD menuId, WORD at);
// Returns the index of the first image, or -1. `count` may exceed the number of images in the bitmap. A width
// and height of 0 mean 16 by 16.
int CommandBar_AddBitmap(HWND bar, HINSTANCE instance, int bitmapId, int count, int width, int height);
