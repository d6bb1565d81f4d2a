// ce/window.h - windows, classes, messages, timers.
//
// The thread that made a window owns it. The window's procedure runs only in the name of its owner. This means that it
// runs on the owner itself, or on another thread that sends a message to the window. In the second case the owner must
// be waiting for messages, or waiting in a send of its own. DestroyWindow works only in the name of the owner.
#pragma once

#include "ce/error.h"
#include "ce/types.h"

using WNDPROC = LRESULT (*)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

struct WNDCLASSW {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    const WCHAR* lpszMenuName;
    const WCHAR* lpszClassName;
};

struct CREATESTRUCTW {
    void* lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    const WCHAR* lpszName;
    const WCHAR* lpszClass;
    DWORD dwExStyle;
};

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

struct NMHDR {
    HWND hwndFrom;
    UINT_PTR idFrom;
    UINT code;
};

inline constexpr UINT WM_NULL = 0x0;
inline constexpr UINT WM_CREATE = 0x1;
inline constexpr UINT WM_DESTROY = 0x2;
inline constexpr UINT WM_MOVE = 0x3;
inline constexpr UINT WM_SIZE = 0x5;
inline constexpr UINT WM_ACTIVATE = 0x6;
inline constexpr UINT WM_SETFOCUS = 0x7;
inline constexpr UINT WM_KILLFOCUS = 0x8;
inline constexpr UINT WM_ENABLE = 0xA;
inline constexpr UINT WM_SETTEXT = 0xC;
inline constexpr UINT WM_GETTEXT = 0xD;
inline constexpr UINT WM_GETTEXTLENGTH = 0xE;
inline constexpr UINT WM_PAINT = 0xF;
inline constexpr UINT WM_CLOSE = 0x10;
inline constexpr UINT WM_QUIT = 0x12;
inline constexpr UINT WM_SHOWWINDOW = 0x18;
inline constexpr UINT WM_NEXTDLGCTL = 0x28;
inline constexpr UINT WM_SETFONT = 0x30;
inline constexpr UINT WM_GETFONT = 0x31;
inline constexpr UINT WM_NOTIFY = 0x4E;
inline constexpr UINT WM_HELP = 0x53;
inline constexpr UINT WM_GETICON = 0x7F;
inline constexpr UINT WM_SETICON = 0x80;
inline constexpr UINT WM_GETDLGCODE = 0x87;
inline constexpr UINT WM_KEYDOWN = 0x100;
inline constexpr UINT WM_KEYUP = 0x101;
inline constexpr UINT WM_CHAR = 0x102;
inline constexpr UINT WM_SYSKEYDOWN = 0x104;
inline constexpr UINT WM_SYSCHAR = 0x106;
inline constexpr UINT WM_INITDIALOG = 0x110;
inline constexpr UINT WM_COMMAND = 0x111;
inline constexpr UINT WM_TIMER = 0x113;
inline constexpr UINT WM_LBUTTONDOWN = 0x201;
inline constexpr UINT WM_LBUTTONUP = 0x202;
inline constexpr UINT WM_LBUTTONDBLCLK = 0x203;
inline constexpr UINT WM_USER = 0x400;
inline constexpr UINT WM_APP = 0x8000;

inline constexpr DWORD WS_OVERLAPPED = 0;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_DISABLED = 0x08000000;
inline constexpr DWORD WS_CAPTION = 0x00C00000;
inline constexpr DWORD WS_BORDER = 0x00800000;
inline constexpr DWORD WS_VSCROLL = 0x00200000;
inline constexpr DWORD WS_HSCROLL = 0x00100000;
inline constexpr DWORD WS_SYSMENU = 0x00080000;
inline constexpr DWORD WS_GROUP = 0x00020000;
inline constexpr DWORD WS_TABSTOP = 0x00010000;
inline constexpr DWORD WS_EX_CAPTIONOKBTN = 0x80000000;
inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000);

inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_SHOW = 5;

inline constexpr UINT SWP_NOSIZE = 1;
inline constexpr UINT SWP_NOMOVE = 2;
inline constexpr UINT SWP_NOZORDER = 4;
inline constexpr UINT SWP_NOACTIVATE = 0x10;
inline constexpr UINT SWP_SHOWWINDOW = 0x40;

inline constexpr WPARAM ICON_SMALL = 0;
inline constexpr UINT IMAGE_BITMAP = 0;
inline constexpr UINT IMAGE_ICON = 1;
inline constexpr UINT_PTR IDC_WAIT = 32514;
inline constexpr int WHITE_BRUSH = 0;

inline constexpr WORD VK_BACK = 0x8;
inline constexpr WORD VK_TAB = 0x9;
inline constexpr WORD VK_RETURN = 0xD;
inline constexpr WORD VK_SHIFT = 0x10;
inline constexpr WORD VK_CONTROL = 0x11;
inline constexpr WORD VK_MENU = 0x12;
inline constexpr WORD VK_ESCAPE = 0x1B;
inline constexpr WORD VK_SPACE = 0x20;
inline constexpr WORD VK_PRIOR = 0x21;
inline constexpr WORD VK_NEXT = 0x22;
inline constexpr WORD VK_END = 0x23;
inline constexpr WORD VK_HOME = 0x24;
inline constexpr WORD VK_LEFT = 0x25;
inline constexpr WORD VK_UP = 0x26;
inline constexpr WORD VK_RIGHT = 0x27;
inline constexpr WORD VK_DOWN = 0x28;
inline constexpr WORD VK_DELETE = 0x2E;
inline constexpr WORD VK_MULTIPLY = 0x6A;
inline constexpr WORD VK_ADD = 0x6B;
inline constexpr WORD VK_SUBTRACT = 0x6D;
inline constexpr WORD VK_F4 = 0x73;

// Registers a window class. Names of classes are compared without case. Returns 0 on failure. The last error is 1410 if
// a class with the name exists already, or 87 if the class has no name or no procedure.
ATOM RegisterClassW(const WNDCLASSW* windowClass);

// Makes a window, and sends WM_CREATE (lParam: CREATESTRUCTW) to it. If the window's procedure returns -1 for this
// message, the call fails. If `x` or `width` of a top-level window is CW_USEDEFAULT, the window fills the whole work
// area. For a child window, `menu` is its id. Returns null on failure. The last error is 1407 if there is no such
// class, and 1400 if `parent` is invalid. For a child window it is also 1400 if `parent` is null, belongs to another
// thread or is being destroyed.
HWND CreateWindowExW(DWORD exStyle, const WCHAR* className, const WCHAR* title, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU menu, HINSTANCE instance, void* parameter);

// Destroys the window, its children and the windows that it owns. The owned windows are destroyed first, except those
// of another thread, which that thread destroys in its current or next GetMessageW. WM_DESTROY is sent to the window,
// and after that to its children. The timers of the windows end, and messages posted to them are dropped. Fails with
// error 1400 if the handle is invalid, and with error 5 if the window belongs to another thread.
BOOL DestroyWindow(HWND window);

// WM_CLOSE destroys the window. WM_SETTEXT, WM_GETTEXT and WM_GETTEXTLENGTH set and return the title. WM_SETICON with
// ICON_SMALL sets the icon. All other messages have no effect and return 0.
LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Runs the window's procedure and returns its result. If another thread owns the window, the call waits until that
// thread retrieves messages or waits in a send itself. Meanwhile, messages sent to the caller's windows are handled. If
// the handle is invalid, or if the window is destroyed while the call waits, returns 0 and sets error 1400.
LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Adds the message to the end of the queue of the window's thread. Never waits. Returns nonzero on success. Fails with
// error 1400 if the handle is invalid.
BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Takes the calling thread's next message. Posted messages come first, then input, then WM_QUIT, then timers. Sent
// messages are handled during the call. If `window` isn't null, the call takes only messages of this window and its
// descendants. If `low` or `high` isn't 0, it takes only messages from `low` to `high`. WM_QUIT is always taken.
// Returns 0 for WM_QUIT, -1 on failure, otherwise nonzero. The last error is 1400 if `window` is invalid, and 87 if
// `message` is null.
BOOL GetMessageW(MSG* message, HWND window, UINT low, UINT high);

// If the message is WM_KEYDOWN or WM_SYSKEYDOWN of a key that types a character, posts WM_CHAR or WM_SYSCHAR and
// returns nonzero.
BOOL TranslateMessage(const MSG* message);
LRESULT DispatchMessageW(const MSG* message);

// Makes GetMessageW return WM_QUIT with `exitCode` when no posted message and no input is left.
void PostQuitMessage(int exitCode);

// WM_TIMER (wParam: id) comes every `milliseconds`. It has the lowest priority of all messages, and at most one is
// pending. A call with the same window and id replaces the timer. The timer ends with its window. `procedure` must be
// null. SetTimer returns `id`, or 1 for the id 0. It returns 0 on failure. The last error is 1400 if `window` is
// invalid, or 87 if `procedure` isn't null. KillTimer takes the `id` that was passed to SetTimer and not its result.
// KillTimer fails with error 1400 if `window` is invalid, and with error 87 if there is no such timer.
UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, void* procedure);
BOOL KillTimer(HWND window, UINT_PTR id);

// Returns nonzero if the window was visible before.
BOOL ShowWindow(HWND window, int show);
// Has no effect: the program paints nothing, because the display shows the window's state by itself. Returns nonzero on
// success. Fails with error 1400 if the handle is invalid.
BOOL UpdateWindow(HWND window);
BOOL IsWindow(HWND window);
BOOL IsWindowVisible(HWND window);
BOOL IsWindowEnabled(HWND window);
// Returns nonzero if the window was disabled before.
BOOL EnableWindow(HWND window, BOOL enable);
// A null `window` takes the focus away. Returns the window that had the focus, or null if none had it. Also returns
// null on failure. The last error is 1400 if the handle is invalid, and 5 if the window belongs to another thread, is
// being destroyed, or is disabled itself or by an ancestor.
HWND SetFocus(HWND window);
HWND GetFocus();
HWND GetParent(HWND window);
BOOL SetForegroundWindow(HWND window);

// Searches the top-level windows of this process. Texts are compared without case, and null matches any text. Returns
// null if there is no such window.
//
// WinMain calls this function to find an earlier instance of the program, and never finds one. Only one process at a
// time can open a device. A second quillbox process for the same device ends before it calls WinMain.
HWND FindWindowW(const WCHAR* className, const WCHAR* title);

BOOL SetWindowTextW(HWND window, const WCHAR* text);
// Copies at most capacity - 1 characters and a NUL. Returns the number of characters without the NUL.
int GetWindowTextW(HWND window, WCHAR* text, int capacity);
int GetWindowTextLengthW(HWND window);

// Gets the client area in virtual pixels, which the display can scale. Its left and top are 0.
BOOL GetClientRect(HWND window, RECT* rectangle);
// Gets the window's rectangle in virtual pixels of the screen.
BOOL GetWindowRect(HWND window, RECT* rectangle);
BOOL ScreenToClient(HWND window, POINT* point);
// Returns the position of the user's last click on a tree view of this thread, in screen coordinates: x in the low
// half, y in the high half, signed 16 bits each.
DWORD GetMessagePos();
BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags);
BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);

HICON LoadIconW(HINSTANCE instance, const WCHAR* name);
// Returns the icon (as HICON) or the bitmap with the number `name` in the resources. Returns null on failure. The last
// error is that of FindResourceW (ce/resource.h), 1814 if `name` isn't a number, or 87 for another `type`.
HANDLE LoadImageW(HINSTANCE instance, const WCHAR* name, UINT type, int width, int height, UINT flags);
// Returns the platform's wait cursor for a null `instance` and the name IDC_WAIT. There is no other cursor. For any
// other arguments, returns null and sets error 1814.
HCURSOR LoadCursorW(HINSTANCE instance, const WCHAR* name);
// Sets the cursor of the calling thread, and returns the previous one. Null removes the wait cursor.
HCURSOR SetCursor(HCURSOR cursor);
HBRUSH GetStockObject(int object);
