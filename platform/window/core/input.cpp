#include "window/input.h"

#include "window/focus.h"

#include "ce/dialog.h"

#include <algorithm>

namespace platform::window {

namespace {

bool isKept(UINT message)
{
    return message == InputClose || message == InputResize;
}

bool isBusy(const Thread& thread) REQUIRES(coreMutex)
{
    return thread.retrieving == 0 && thread.inCommand;
}

bool queue(Window& window, Input input) REQUIRES(coreMutex)
{
    const UINT message = input.message.message;
    if (window.dying || (message != InputResize && !takesInputOf(window)))
        return false;
    Thread& thread = *window.thread;
    if (!isKept(message) && isBusy(thread))
        return false;
    input.message.hwnd = window.handle;
    // A new InputClose or InputResize replaces an earlier one for the same window that is still queued.
    if (isKept(message))
        std::erase_if(thread.input, [&](const Input& earlier) REQUIRES(coreMutex) {
            return earlier.message.hwnd == window.handle && earlier.message.message == message;
        });
    thread.input.push_back(std::move(input));
    noteArrival(thread);
    return true;
}

bool queue(HWND handle, UINT message, WPARAM wParam = 0, LPARAM lParam = 0)
{
    const Lock lock(coreMutex);
    Window* window = findWindow(handle);
    return window && queue(*window, {MSG{nullptr, message, wParam, lParam, 0, {}}, {}});
}

bool queueText(HWND handle, UINT message, std::u16string text)
{
    const Lock lock(coreMutex);
    Window* window = findWindow(handle);
    return window && queue(*window, {MSG{nullptr, message, 0, 0, 0, {}}, std::move(text)});
}

// A key for a top-level window goes to the focused control in that window.
Window& keyTarget(Window& window) REQUIRES(coreMutex)
{
    Window* focused = findWindow(window.thread->focus);
    return !window.parent && focused && isWithin(*focused, window) ? *focused : window;
}

bool isDisabledCommand(const Window& window, WORD id) REQUIRES(coreMutex)
{
    return std::ranges::any_of(window.children, [id](const Window* child) REQUIRES(coreMutex) {
        return child->state->disablesCommand(*child, id);
    });
}

}  // namespace

bool isDeliverable(const Input& input)
{
    const Window* window = findWindow(input.message.hwnd);
    return window && (input.message.message == InputResize || takesInputOf(*window));
}

bool isToBeDropped(const Input& input)
{
    return !isKept(input.message.message) && !isDeliverable(input);
}

bool queueInput(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return queue(window, message, wParam, lParam);
}

bool queueClickAndCommand(HWND control, WPARAM wParam, LPARAM lParam, WORD command)
{
    const Lock lock(coreMutex);
    Window* window = findWindow(control);
    return window && !isDisabledCommand(topLevelOf(*window), command) &&
           queue(*window, {MSG{nullptr, InputClick, wParam, lParam, 0, {}}, {}}) &&
           queue(topLevelOf(*window), {MSG{nullptr, InputCommand, command, 0, 0, {}}, {}});
}

bool queueClickAndKey(HWND control, WPARAM wParam, LPARAM lParam, WORD virtualKey)
{
    const Lock lock(coreMutex);
    Window* window = findWindow(control);
    return window && queue(*window, {MSG{nullptr, InputClick, wParam, lParam, 0, {}}, {}}) &&
           queue(*window, {MSG{nullptr, WM_KEYDOWN, virtualKey, 0, 0, {}}, {}});
}

bool postClick(HWND window, long row)
{
    return queue(window, InputClick, static_cast<WPARAM>(row));
}

bool postDoubleClick(HWND window, long row)
{
    return queue(window, InputDoubleClick, static_cast<WPARAM>(row));
}

bool postFocus(HWND window)
{
    return queue(window, InputFocus);
}

bool postKey(HWND handle, WORD virtualKey, bool shift, bool control, bool alt)
{
    const LPARAM modifiers = (shift ? KeyWithShift : 0) | (control ? KeyWithControl : 0) | (alt ? KeyWithAlt : 0);
    const Lock lock(coreMutex);
    Window* window = findWindow(handle);
    return window && queue(keyTarget(*window),
                           {MSG{nullptr, alt ? WM_SYSKEYDOWN : WM_KEYDOWN, virtualKey, modifiers, 0, {}}, {}});
}

bool postText(HWND handle, std::u16string text)
{
    const Lock lock(coreMutex);
    Window* window = findWindow(handle);
    return window && queue(keyTarget(*window), {MSG{nullptr, InputText, 0, 0, 0, {}}, std::move(text)});
}

bool postNewText(HWND edit, std::u16string text)
{
    return queueText(edit, InputNewText, std::move(text));
}

// A dialog has a close box only with WS_SYSMENU; a main window always has one.
bool postClose(HWND handle)
{
    {
        const Lock lock(coreMutex);
        const Window* window = findWindow(handle);
        if (!window || (window->state->isDialog() && !hasStyle(*window, WS_SYSMENU)))
            return false;
    }
    return queue(handle, InputClose);
}

bool postAnswerToAll(HWND messageBox, int id)
{
    return queue(messageBox, InputAnswer, static_cast<WPARAM>(id), static_cast<LPARAM>(AnswerReach::AllOfItsKind));
}

bool postRefusal(HWND messageBox)
{
    return queue(messageBox, InputAnswer, 0, static_cast<LPARAM>(AnswerReach::OneQuestion));
}

bool postStopJob(HWND messageBox, bool closesOwner)
{
    const AnswerReach reach = closesOwner ? AnswerReach::JobAndOwner : AnswerReach::Job;
    return queue(messageBox, InputAnswer, 0, static_cast<LPARAM>(reach));
}

bool postCaptionOk(HWND handle)
{
    {
        const Lock lock(coreMutex);
        const Window* window = findWindow(handle);
        if (!window || !(window->exStyle & WS_EX_CAPTIONOKBTN))
            return false;
    }
    return queue(handle, InputCaptionOk);
}

bool postCommand(HWND handle, WORD id)
{
    {
        const Lock lock(coreMutex);
        const Window* window = findWindow(handle);
        if (!window || isDisabledCommand(*window, id))
            return false;
    }
    return queue(handle, InputCommand, id);
}

bool postResize(HWND topLevel, int width, int height)
{
    return queue(topLevel, InputResize, static_cast<WPARAM>(width), height);
}

bool takesInput(HWND handle)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    if (!window)
        return false;
    const Thread& thread = *window->thread;
    return thread.retrieving > 0 && thread.posted.empty() && thread.toDestroy.empty() && !thread.quit &&
           std::ranges::none_of(thread.input, isDeliverable);
}

namespace {

// A click activates the top-level window and sets the focus to the control.
void activateAndFocus(HWND handle)
{
    HWND top = nullptr;
    bool accepts = false;
    {
        const Lock lock(coreMutex);
        Window* window = findWindow(handle);
        if (!window)
            return;
        if (topLevelOf(*window).handle != currentThread().active)
            top = topLevelOf(*window).handle;
        accepts = acceptsFocus(*window);
    }
    if (top)
        activate(top);
    if (accepts)
        SetFocus(handle);
}

void captionOk(HWND handle)
{
    HWND control = nullptr;
    {
        const Lock lock(coreMutex);
        Window* window = findWindow(handle);
        const Window* ok = window ? findChild(*window, IDOK) : nullptr;
        if (ok && hasStyle(*ok, WS_DISABLED))
            return;
        control = ok ? ok->handle : nullptr;
    }
    SendMessageW(handle, WM_COMMAND, IDOK, reinterpret_cast<LPARAM>(control));
}

bool isEdit(HWND handle)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    return window && window->state->editsText();
}

// An edit receives a text in one message. Every other window receives one WM_CHAR for each typed character.
void typeInto(const MSG& message)
{
    if (isEdit(message.hwnd)) {
        SendMessageW(message.hwnd, message.message, message.wParam, message.lParam);
        return;
    }
    std::u16string text;
    {
        const Lock lock(coreMutex);
        text = std::exchange(currentThread().arrivedText, {});
    }
    if (message.message == InputText)
        for (const char16_t character : text)
            SendMessageW(message.hwnd, WM_CHAR, character, 0);
}

}  // namespace

LRESULT dispatchInput(const MSG& message)
{
    switch (message.message) {
    case InputAnswer:
        return SendMessageW(message.hwnd, message.message, message.wParam, message.lParam);
    case InputClick:
    case InputDoubleClick:
    case InputDate:
        activateAndFocus(message.hwnd);
        return SendMessageW(message.hwnd, message.message, message.wParam, message.lParam);
    case InputFocus:
        activateAndFocus(message.hwnd);
        return 0;
    case InputRelist:
        return SendMessageW(message.hwnd, message.message, 0, 0);
    case InputText:
    case InputNewText:
        typeInto(message);
        return 0;
    case InputClose:
        return SendMessageW(message.hwnd, WM_CLOSE, 0, 0);
    case InputCaptionOk:
        captionOk(message.hwnd);
        return 0;
    case InputCommand:
        return SendMessageW(message.hwnd, WM_COMMAND, message.wParam, 0);
    case InputResize:
        return SetWindowPos(message.hwnd, nullptr, 0, 0, static_cast<int>(message.wParam),
                            static_cast<int>(message.lParam), SWP_NOMOVE | SWP_NOZORDER);
    default:
        return 0;
    }
}

}  // namespace platform::window
