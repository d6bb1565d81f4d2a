// Sends, dispatches and translates messages. A send to a window of the sender's own thread calls the window's procedure
// directly. A send to a window of another thread makes a Visit (turn.h). While the Visit exists, the sender's system
// thread runs on behalf of the other thread and calls the procedure.
#include "turn.h"
#include "window/core.h"
#include "window/input.h"

#include <optional>

using namespace platform::window;
namespace kernel = platform::kernel;

namespace {

// Calls the procedure and then restores the sender's last error. The procedure runs on the sender's system thread, so
// it can overwrite that error.
LRESULT runAsReceiver(WNDPROC procedure, HWND window, UINT message, WPARAM wParam, LPARAM lParam) REQUIRES(coreMutex)
{
    const DWORD error = GetLastError();
    const kernel::MutexUnlock unlocked(coreMutex);
    const LRESULT result = procedure(window, message, wParam, lParam);
    SetLastError(error);
    return result;
}

LRESULT sendAcross(Thread& self, HWND window, UINT message, WPARAM wParam, LPARAM lParam) REQUIRES(coreMutex)
{
    const Visit visit(self, window);
    if (!visit.receiver())
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    return runAsReceiver(visit.receiver()->windowClass->procedure, window, message, wParam, lParam);
}

}  // namespace

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    Lock lock(coreMutex);
    const Window* receiver = findWindow(window);
    if (!receiver)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    Thread& self = currentThread();
    if (receiver->thread != &self)
        return sendAcross(self, window, message, wParam, lParam);
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

// Returns the character that TranslateMessage posts for a key, or nothing if it posts none. Only a few keys have a
// character here, because most typed text arrives as InputText and not as keys.
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
