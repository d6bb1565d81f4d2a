// ce/dialog.h - makes dialogs from templates, finds their controls by id, and shows message boxes.
#pragma once

#include "ce/window.h"

// The procedure of a dialog. It returns nonzero if it has handled the message. If it returns 0, the dialog manager
// handles the message. For WM_INITDIALOG, nonzero lets the dialog manager set the focus.
using DLGPROC = INT_PTR (*)(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

inline constexpr DWORD DS_SETFONT = 0x40;
inline constexpr DWORD DS_MODALFRAME = 0x80;
inline constexpr DWORD DS_CENTER = 0x800;

inline constexpr UINT DM_GETDEFID = 0x400;
inline constexpr UINT DM_SETDEFID = 0x401;
inline constexpr UINT DM_REPOSITION = 0x402;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDABORT = 3;
inline constexpr int IDRETRY = 4;
inline constexpr int IDIGNORE = 5;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

inline constexpr UINT MB_OK = 0;
inline constexpr UINT MB_OKCANCEL = 1;
inline constexpr UINT MB_ABORTRETRYIGNORE = 2;
inline constexpr UINT MB_YESNOCANCEL = 3;
inline constexpr UINT MB_YESNO = 4;
inline constexpr UINT MB_RETRYCANCEL = 5;
inline constexpr UINT MB_ICONHAND = 0x10;
inline constexpr UINT MB_ICONQUESTION = 0x20;
inline constexpr UINT MB_ICONEXCLAMATION = 0x30;
inline constexpr UINT MB_ICONASTERISK = 0x40;
inline constexpr UINT MB_DEFBUTTON1 = 0;
inline constexpr UINT MB_DEFBUTTON2 = 0x100;
inline constexpr UINT MB_DEFBUTTON3 = 0x200;

// Runs a modal dialog from a template, plain or extended, that is in the program's resources. The call creates the
// dialog hidden and sends it WM_INITDIALOG (wParam: the control that gets the focus, lParam: `parameter`). Then it
// shows the dialog, whether or not the template has WS_VISIBLE. The owner's top-level window is disabled until the
// dialog ends. Returns the `result` of EndDialog, or 0 if WM_QUIT or DestroyWindow ended the dialog. Returns 0 and sets
// the last error to 1400 for an invalid owner. Returns -1 if the dialog can't be made. In that case the last error is
// 1812 if the template isn't in the resources, 87 if it is damaged or `procedure` is null, or 1407 if a control's class
// doesn't exist.
INT_PTR DialogBoxIndirectParamW(HINSTANCE instance, const void* dialogTemplate, HWND owner, DLGPROC procedure,
                                LPARAM parameter);

// Makes a modeless dialog. It is shown only with WS_VISIBLE, its owner stays enabled, and DestroyWindow ends it. The
// owner window may belong to another thread. The call doesn't wait for that thread. Returns null on failure. The last
// error is 1400 for an invalid owner, or 87, 1407 or 1812 as for DialogBoxIndirectParamW. Also returns null if the
// dialog was destroyed while it handled WM_INITDIALOG.
HWND CreateDialogIndirectParamW(HINSTANCE instance, const void* dialogTemplate, HWND owner, DLGPROC procedure,
                                LPARAM parameter);

// Ends a modal dialog when its procedure returns. The owner is enabled before the dialog is destroyed. Allowed in
// WM_INITDIALOG. Fails with error 1400 if `dialog` isn't a window, and with error 5 if it is a window but not a modal
// dialog.
BOOL EndDialog(HWND dialog, INT_PTR result);

// Handles the keys of a dialog: Tab, arrows, Enter, Esc, mnemonics. A control can keep such keys for itself
// (WM_GETDLGCODE). Returns nonzero if this call has handled the message, so that the caller must not dispatch it.
BOOL IsDialogMessage(HWND dialog, MSG* message);

// Returns the first control with this id, in the order of creation. Returns null on failure. The last error is 1421 if
// there is no such control, or 1400 if `dialog` isn't a window.
HWND GetDlgItem(HWND dialog, int id);
// Returns the result of the message, or 0 if the dialog has no control with this id.
LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam);
BOOL SetDlgItemTextW(HWND dialog, int id, const WCHAR* text);
// Copies at most capacity - 1 characters and a NUL. Returns the number of characters without the NUL. If the dialog has
// no control with this id, the text is empty and the result is 0.
UINT GetDlgItemTextW(HWND dialog, int id, WCHAR* text, int capacity);

// Shows a modal message box. Returns the id of the button that ended the box (IDOK and so on), or 0 if WM_QUIT ended
// it. Returns 0 on failure, and the last error is 1400 for an invalid owner or 87 for an unknown type. A null `text` is
// empty, a null `caption` is "Error". In the text, \n breaks lines, and & has no special meaning. Esc and the close box
// return IDCANCEL if there is a Cancel button, and IDOK if OK is the only button. Otherwise they do nothing.
//
// Boxes of one kind have the same caption, and the same text up to the first colon or backslash. In a job
// (ce/outcome.h), a box with MB_YESNO lets the user give one answer to all further boxes of its kind. If the user does
// so, these boxes aren't shown in the rest of the job, and the call returns this answer at once. From a box with
// MB_YESNO the user can also stop the job. If the user does this, the box returns IDNO. Each later box of the job with
// MB_YESNO also returns IDNO, and isn't shown.
int MessageBoxW(HWND owner, const WCHAR* text, const WCHAR* caption, UINT type);
