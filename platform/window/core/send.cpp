// Messages that are answered before the call returns.
#include "turn.h"
#include "window/core.h"
#include "window/input.h"

#include <optional>

using namespace platform::window;

namespace {

// The receiver's own last error isn't the sender's: a visit leaves the sender's as it was.
LRESULT runAsReceiver(Lock& lock, WNDPROC procedure, HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const DWORD error = GetLastError();
    lock.unlock();
    const LRESULT result = procedure(window, message, wParam, lParam);
    SetLastError(error);
    lock.lock();
    return result;
}

LRESULT sendAcross(Lock& lock, Thread& self, HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const Visit visit(lock, self, window);
    if (!visit.receiver())
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const WNDPROC procedure = visit.receiver()->windowClass->procedure;
    return runAsReceiver(lock, procedure, window, message, wParam, lParam);
}

}  // namespace

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    Lock lock = lockCore();
    const Window* receiver = findWindow(window);
    if (!receiver)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    Thread& self = currentThread();
    if (receiver->thread != &self)
        return sendAcross(lock, self, window, message, wParam, lParam);
    const WNDPROC procedure = receiver->windowClass->procedure;
    lock.unlock();
    return procedure(window, message, wParam, lParam);
}

LRESULT DispatchMessageW(const MSG* message)
{
    if (!message || !message->hwnd)
        return 0;
    if (message->message >= InputFirst)
        return dispatchInput(*message);
    return SendMessageW(message->hwnd, message->message, message->wParam, message->lParam);
}

namespace {

// The character of a key, as far as the core makes any: typed text comes as text, not as keys.
std::optional<WPARAM> characterOf(WPARAM key, LPARAM modifiers)
{
    const bool shift = modifiers & KeyWithShift;
    if (modifiers & KeyWithControl)
        return key == VK_RETURN ? std::optional<WPARAM>(u'\n') : std::nullopt;
    if (key >= u'A' && key <= u'Z')
        return shift ? key : key - u'A' + u'a';
    if (key >= u'0' && key <= u'9' && !shift)
        return key;
    if (key == VK_SPACE || key == VK_RETURN || key == VK_TAB || key == VK_BACK || key == VK_ESCAPE)
        return key;
    return std::nullopt;
}

}  // namespace

BOOL TranslateMessage(const MSG* message)
{
    if (!message || (message->message != WM_KEYDOWN && message->message != WM_SYSKEYDOWN))
        return FALSE;
    const auto character = characterOf(message->wParam, message->lParam);
    if (!character)
        return FALSE;
    const UINT kind = message->message == WM_KEYDOWN ? WM_CHAR : WM_SYSCHAR;
    return PostMessageW(message->hwnd, kind, *character, message->lParam);
}
