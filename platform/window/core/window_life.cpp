#include "window/window_life.h"

#include "window/focus.h"
#include "window/window_class.h"

#include <algorithm>

namespace platform::window {

namespace {

void setFirstRectangle(Window& window, const Creation& creation) REQUIRES(coreMutex)
{
    const bool wholeArea = creation.x == CW_USEDEFAULT || creation.width == CW_USEDEFAULT;
    if (wholeArea && !hasStyle(window, WS_CHILD))
        window.rectangle = {0, 0, ScreenWidth, ScreenHeight};
    else
        window.rectangle = {creation.x, creation.y, creation.x + std::max(creation.width, 0),
                            creation.y + std::max(creation.height, 0)};
}

std::unique_ptr<ClassState> makeState(const WindowClass& windowClass, DWORD style)
{
    return windowClass.makeState ? windowClass.makeState(style) : std::make_unique<ClassState>();
}

// Returns null and sets the last error if the class doesn't exist or the parent isn't valid (see createWindow).
Window* makeWindow(Creation& creation) REQUIRES(coreMutex)
{
    const WindowClass* windowClass = findClass(creation.className);
    Window* parent = findWindow(creation.parent);
    Thread& self = currentThread();
    const bool child = creation.style & WS_CHILD;
    if (!windowClass) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    if ((creation.parent && !parent) || (child && (!parent || parent->thread != &self || parent->dying))) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    Window& window = addWindow();
    window.thread = &self;
    window.windowClass = windowClass;
    window.style = child ? creation.style : creation.style & ~WS_VISIBLE;  // shown after WM_CREATE
    window.exStyle = creation.exStyle;
    window.id = creation.id;
    window.text = creation.title;
    window.iconId = creation.iconId ? creation.iconId : windowClass->iconId;
    window.state = creation.state ? std::move(creation.state) : makeState(*windowClass, creation.style);
    setFirstRectangle(window, creation);
    if (child) {
        window.parent = parent;
        parent->children.push_back(&window);
    } else {
        window.owner = parent ? topLevelOf(*parent).handle : nullptr;
        core().topLevel.insert(core().topLevel.begin(), window.handle);
    }
    announce(window, Change::Created);
    return &window;
}

LRESULT sendCreate(HWND window, const Creation& creation, const RECT& rectangle)
{
    const std::u16string title(creation.title);
    const std::u16string className(creation.className);
    CREATESTRUCTW report = {};
    report.lpCreateParams = creation.parameter;
    report.hInstance = creation.instance;
    report.hMenu = reinterpret_cast<HMENU>(static_cast<std::intptr_t>(creation.id));
    report.hwndParent = creation.parent;
    report.cx = rectangle.right - rectangle.left;
    report.cy = rectangle.bottom - rectangle.top;
    report.x = rectangle.left;
    report.y = rectangle.top;
    report.style = static_cast<LONG>(creation.style);
    report.lpszName = title.c_str();
    report.lpszClass = className.c_str();
    report.dwExStyle = creation.exStyle;
    return SendMessageW(window, WM_CREATE, 0, reinterpret_cast<LPARAM>(&report));
}

void forgetWindow(HWND handle)
{
    const Lock lock(coreMutex);
    if (Window* window = findWindow(handle))
        removeWindow(*window);
}

}  // namespace

HWND createWindow(Creation creation)
{
    Lock lock(coreMutex);
    const Window* made = makeWindow(creation);
    if (!made)
        return nullptr;
    const HWND window = made->handle;
    const RECT rectangle = made->rectangle;
    lock.unlock();
    if (sendCreate(window, creation, rectangle) == -1) {
        forgetWindow(window);
        return nullptr;
    }
    if (!(creation.style & WS_CHILD) && (creation.style & WS_VISIBLE))
        ShowWindow(window, SW_SHOW);
    return IsWindow(window) ? window : nullptr;
}

void destroyPending(Thread& self)
{
    while (!self.toDestroy.empty()) {
        const HWND window = self.toDestroy.back();
        self.toDestroy.pop_back();
        if (Window* found = findWindow(window))
            found->style &= ~WS_VISIBLE;
        const kernel::MutexUnlock unlocked(coreMutex);
        DestroyWindow(window);
    }
}

namespace {

// Returns those windows of the calling thread that `owner` owns. The caller destroys them at once. Windows of other
// threads that `owner` owns are added to Thread::toDestroy. Each thread destroys its own windows in GetMessageW, so the
// caller waits for no other thread.
std::vector<HWND> releaseOwned(HWND owner) REQUIRES(coreMutex)
{
    std::vector<HWND> own;
    for (const HWND top : core().topLevel) {
        Window* owned = findWindow(top);
        if (owned->owner != owner)
            continue;
        if (owned->thread == &currentThread())
            own.push_back(top);
        else
            destroyLater(*owned);
    }
    return own;
}

void collectBelow(const Window& window, std::vector<HWND>& found) REQUIRES(coreMutex)
{
    for (const Window* child : window.children) {
        found.push_back(child->handle);
        collectBelow(*child, found);
    }
}

// Sends WM_DESTROY to the window and then to its descendants. A parent receives the message before its children.
void sendDestroy(HWND window)
{
    SendMessageW(window, WM_DESTROY, 0, 0);
    std::vector<HWND> below;
    {
        const Lock lock(coreMutex);
        if (const Window* found = findWindow(window))
            collectBelow(*found, below);
    }
    for (const HWND child : below)
        if (IsWindow(child))
            SendMessageW(child, WM_DESTROY, 0, 0);
}

// Removes the window. If the window was active and its owner is visible, the owner becomes active.
void removeAndActivateOwner(HWND handle)
{
    HWND next = nullptr;
    {
        const Lock lock(coreMutex);
        Window* window = findWindow(handle);
        if (!window)
            return;
        if (currentThread().active == handle)
            next = window->owner;
        removeWindow(*window);
        const Window* owner = findWindow(next);
        if (!owner || !isVisible(*owner))
            next = nullptr;
    }
    if (next)
        activate(next);
}

}  // namespace

}  // namespace platform::window

using namespace platform::window;

HWND CreateWindowExW(DWORD exStyle, const WCHAR* className, const WCHAR* title, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU menu, HINSTANCE instance, void* parameter)
{
    // An atom in place of a class name is not supported.
    if (reinterpret_cast<std::uintptr_t>(className) <= 0xFFFF) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    Creation creation;
    creation.className = className;
    creation.title = title ? title : u"";
    creation.style = style;
    creation.exStyle = exStyle;
    creation.x = x;
    creation.y = y;
    creation.width = width;
    creation.height = height;
    creation.parent = parent;
    creation.id = static_cast<int>(reinterpret_cast<std::intptr_t>(menu));
    creation.instance = instance;
    creation.parameter = parameter;
    return createWindow(std::move(creation));
}

BOOL DestroyWindow(HWND handle)
{
    Lock lock(coreMutex);
    Window* window = findWindow(handle);
    if (!window)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    if (window->thread != &currentThread())
        return fail(ERROR_ACCESS_DENIED);
    if (window->dying)
        return TRUE;  // called again while the window handles WM_DESTROY
    const HWND ownerToEnable = window->state->takeOwnerToEnable();
    const std::vector<HWND> owned = releaseOwned(handle);
    lock.unlock();

    for (const HWND other : owned)
        DestroyWindow(other);
    if (ownerToEnable)
        EnableWindow(ownerToEnable, TRUE);

    lock.lock();
    window = findWindow(handle);
    if (!window)
        return TRUE;
    window->dying = true;
    window->style &= ~WS_VISIBLE;
    announce(*window, Change::Shown);
    lock.unlock();
    moveFocusOff(handle);
    sendDestroy(handle);
    removeAndActivateOwner(handle);
    return TRUE;
}

BOOL IsWindow(HWND window)
{
    const Lock lock(coreMutex);
    return findWindow(window) != nullptr;
}
