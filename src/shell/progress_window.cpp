// progress_window.cpp - shows dialog 106, the progress window of a run. The window has a thread of its own, so that it
// is drawn while a run blocks the main thread.
//
// While a window is being opened, its thread and the main thread share gOpenedWindow. The threads of an older and a
// newer window share gProgressRange. Both variables are atomic. The run sends texts and steps to the window as
// messages.

#include "engine/questions.h"

#include "ce/controls.h"
#include "ce/dialog.h"
#include "ce/resource.h"
#include "ce/thread.h"

#include <atomic>

namespace {

constexpr WORD ProgressDialog = 106;
constexpr int BarId = 1001;
constexpr int MessageId = 1002;
constexpr int CountId = 1029;

// Private messages of the dialog. The first two have the same numbers as DM_SETDEFID and DM_REPOSITION. The dialog
// procedure returns TRUE for StepMessage, so it never acts as DM_SETDEFID. AnimateMessage does act as DM_REPOSITION
// too, but this only moves a window that is partly outside the screen.
constexpr UINT StepMessage = 1025;
constexpr UINT AnimateMessage = 1026;
constexpr UINT CloseMessage = 1027;
constexpr UINT SetMessageMessage = 1028;
constexpr UINT SetCountMessage = 1029;

constexpr UINT_PTR AnimationTimer = 1;
constexpr UINT AnimationMilliseconds = 1;

struct ProgressInit {
    DWORD range;
    DWORD step;
    const WCHAR* title;
    const WCHAR* message;
};

// ProgressOpen has this structure on its stack, and can return as soon as the new thread has set gOpenedWindow. So the
// new thread must not use the structure after that.
struct ProgressStart {
    ProgressInit* init;
    HWND owner;
    HINSTANCE instance;
    DWORD resource;
    DLGPROC procedure;
};

const HWND NoDialog = reinterpret_cast<HWND>(INVALID_HANDLE_VALUE);

// The window that the latest ProgressOpen has opened. Null until the new thread has made the window. NoDialog if the
// window can't be made. The new thread sets this variable and then calls notify_one() on it. Between these two steps
// ProgressOpen can return, and then its ProgressStart no longer exists. So this variable isn't a member of
// ProgressStart. Only one thread at a time may call ProgressOpen.
std::atomic<HWND> gOpenedWindow;

// The end of the progress bar in the window that was opened last. If the bar of an older window is still moving, that
// window also compares the position of its bar with this value, and not with an end of its own.
std::atomic<LONG> gProgressRange;

void InitProgress(HWND dialog, const ProgressInit& init)
{
    gProgressRange = static_cast<LONG>(init.range);
    SetWindowTextW(dialog, init.title);
    SetWindowTextW(GetDlgItem(dialog, MessageId), init.message);
    const DWORD range = MAKELONG(0, LOWORD(init.range));
    SendDlgItemMessageW(dialog, BarId, PBM_SETRANGE, 0, static_cast<LPARAM>(range));
    SendDlgItemMessageW(dialog, BarId, PBM_SETSTEP, init.step, 0);
    SendDlgItemMessageW(dialog, BarId, PBM_SETPOS, 0, 0);
}

void StepBar(HWND dialog)
{
    SendDlgItemMessageW(dialog, BarId, PBM_STEPIT, 0, 0);
}

void SetText(HWND dialog, int id, WPARAM text)
{
    SetWindowTextW(GetDlgItem(dialog, id), reinterpret_cast<const WCHAR*>(text));
}

INT_PTR ProgressDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_INITDIALOG:
        InitProgress(dialog, *reinterpret_cast<const ProgressInit*>(lParam));
        return TRUE;
    case StepMessage:
        StepBar(dialog);
        return TRUE;
    case AnimateMessage:
        SetTimer(dialog, AnimationTimer, AnimationMilliseconds, nullptr);
        return FALSE;
    case WM_TIMER:
        StepBar(dialog);
        if (SendDlgItemMessageW(dialog, BarId, PBM_GETPOS, 0, 0) >= gProgressRange)
            PostMessageW(dialog, CloseMessage, 0, 0);
        return FALSE;
    case CloseMessage:
        DestroyWindow(dialog);
        return FALSE;
    case SetMessageMessage:
        SetText(dialog, MessageId, wParam);
        return FALSE;
    case SetCountMessage:
        SetText(dialog, CountId, wParam);
        return FALSE;
    default:
        return FALSE;
    }
}

DWORD ProgressThreadProc(void* parameter)
{
    auto* start = static_cast<ProgressStart*>(parameter);
    HRSRC found = FindResourceW(start->instance, MAKEINTRESOURCEW(start->resource), RT_DIALOG);
    const void* dialogTemplate = LoadResource(start->instance, found);
    HWND dialog = CreateDialogIndirectParamW(start->instance, dialogTemplate, start->owner, start->procedure,
                                             reinterpret_cast<LPARAM>(start->init));
    gOpenedWindow = dialog ? dialog : NoDialog;  // from here on `start` and `init` are invalid
    gOpenedWindow.notify_one();
    if (!dialog)
        return 0;

    // The window has no keyboard input to translate. The loop ends with CloseMessage, or if the window was destroyed
    // with its owner.
    MSG message = {};
    while (message.message != CloseMessage) {
        if (GetMessageW(&message, dialog, 0, 0) <= 0)
            return 0;
        DispatchMessageW(&message);
    }
    return 0;
}

}  // namespace

HWND ProgressOpen(const WCHAR* title, const WCHAR* message, DWORD range, DWORD step)
{
    ProgressInit init = {range, step, title, message};
    ProgressStart start = {&init, gMainWindow, gInstance, ProgressDialog, ProgressDialogProc};
    gOpenedWindow = nullptr;
    HANDLE thread = CreateThread(nullptr, 0, ProgressThreadProc, &start, 0, nullptr);
    if (!thread)
        return nullptr;
    CloseHandle(thread);
    gOpenedWindow.wait(nullptr);
    const HWND dialog = gOpenedWindow;
    return dialog == NoDialog ? nullptr : dialog;
}

DWORD ProgressStep(HWND progress, DWORD)
{
    SendMessageW(progress, StepMessage, 0, 0);
    return 1;
}

DWORD ProgressSetMessage(HWND progress, const WCHAR* text)
{
    SendMessageW(progress, SetMessageMessage, reinterpret_cast<WPARAM>(text), 0);
    return 1;
}

DWORD ProgressSetCount(HWND progress, const WCHAR* text)
{
    SendMessageW(progress, SetCountMessage, reinterpret_cast<WPARAM>(text), 0);
    return 1;
}

DWORD ProgressAnimate(HWND progress)
{
    PostMessageW(progress, AnimateMessage, 0, 0);
    return 1;
}

DWORD ProgressClose(HWND progress)
{
    PostMessageW(progress, CloseMessage, 0, 0);
    return 1;
}
