#include "screen.h"

#include "dialog_view.h"
#include "view_makers.h"

#include "start/restore_request.h"

#include "ce/window.h"

#include <QApplication>

#include <algorithm>
#include <chrono>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowKind;
using window::WindowState;
using namespace std::chrono_literals;

constexpr auto FrameTime = 16ms;
// The longest time that the toolkit's thread waits for the program's reaction to an input. A backup or restore takes
// longer and continues after the wait.
constexpr auto ReactionTime = 50ms;
// The wait cursor appears only if the program has been busy for this time, because a cursor for a shorter time would
// only flicker.
constexpr auto CursorTime = 150ms;

bool isTopLevel(const WindowState& state)
{
    return (state.style & WS_CHILD) == 0;
}

// Is the widget inside `owner` at any depth, or in a window that `owner` owns? The toolkit's isAncestorOf() doesn't
// include such windows.
bool isInside(const QWidget& widget, const QWidget& owner)
{
    const QWidget* above = widget.parentWidget();
    while (above && above != &owner)
        above = above->parentWidget();
    return above != nullptr;
}

bool isAlive(HWND window)
{
    WindowState state;
    return window::readWindow(window, state);
}

void followControl(View& view, const WindowState& state, Changes changes)
{
    view.widget().setEnabled(state.enabled);
    view.follow(state, changes);
    view.widget().setVisible(state.visible);
}

}  // namespace

// batch_ calls the function below on a thread of the program, while the window core's mutex is held. So this function
// only queues a call that starts the timer on the toolkit's thread.
Screen::Screen(display::HostServices host)
    : batch_([this] {
          QMetaObject::invokeMethod(
              this, [this] { frameTimer_.start(); }, Qt::QueuedConnection);
      }),
      input_([this] { showReaction(); }), host_(std::move(host)), runWatch_(tops_, [this] { return programIsIdle(); })
{
    frameTimer_.setSingleShot(true);
    frameTimer_.setTimerType(Qt::PreciseTimer);
    frameTimer_.setInterval(FrameTime);
    connect(&frameTimer_, &QTimer::timeout, this, [this] { flush(); });
    cursorTimer_.setSingleShot(true);
    cursorTimer_.setInterval(CursorTime);
    connect(&cursorTimer_, &QTimer::timeout, this, [this] { showCursor(); });
    window::setDisplay(&batch_);
    if (host_.restoreRequest) {
        host_.restoreRequest->setListener([this] {
            QMetaObject::invokeMethod(
                this, [this] { openSet(); }, Qt::QueuedConnection);
        });
    }
}

Screen::~Screen()
{
    if (host_.restoreRequest)
        host_.restoreRequest->setListener({});
    window::setDisplay(nullptr);
    runWatch_.look();
    // Removes the remaining views. The program may have destroyed their windows after the last call of flush().
    while (!tops_.empty())
        remove(tops_.begin()->first);
}

void Screen::flush()
{
    frameTimer_.stop();
    focus_ = nullptr;
    // step() may answer a dialog for the user. It is called before the changes are shown, so that the program can close
    // such a dialog before the dialog appears.
    setOpener_.step();
    for (const Changed& changed : batch_.take())
        apply(changed);
    const auto focused = views_.find(focus_);
    if (focused != views_.end() && !focused->second->widget().hasFocus())
        focused->second->widget().setFocus(Qt::TabFocusReason);
}

void Screen::openSet()
{
    if (auto listFile = host_.restoreRequest->take())
        setOpener_.begin(std::move(*listFile));
    setOpener_.step();
}

void Screen::showReaction()
{
    batch_.waitUntil([this] { return programIsIdle(); }, ReactionTime);
    flush();
}

// Returns true if the thread of the main window waits for messages, even if another window is in front. Also returns
// true if no main window is shown, or if the window core has no window.
bool Screen::programIsIdle() const
{
    return !main_ || window::takesInput(main_) || window::topLevelWindows().empty();
}

void Screen::apply(const Changed& changed)
{
    if (!changed.window) {
        applyGlobal(changed.changes);
        return;
    }
    WindowState state;
    if (!window::readWindow(changed.window, state) || (isTopLevel(state) && !state.visible)) {
        remove(changed.window);
        return;
    }
    if (changed.changes.has(Change::Focus) && state.focused)
        focus_ = changed.window;
    if (const auto known = views_.find(changed.window); known != views_.end()) {
        follow(*known->second, state, changed.changes);
    } else if (!isTopLevel(state)) {
        if (TopView* top = topOf(state.parent))
            addControl(*top, state);
    } else if (!state.parent || isAlive(state.parent)) {
        build(state);  // not if the owner is destroyed, because this window is about to be destroyed too
    }
}

void Screen::follow(View& view, const WindowState& state, Changes changes)
{
    if (isTopLevel(state))
        view.follow(state, changes);
    else
        followControl(view, state, changes);
    if (TopView* top = topOf(isTopLevel(state) ? state.window : state.parent); top && changes.has(Change::Focus))
        top->followFocus();
    if (TopView* top = topOf(state.window); top && changes.has(Change::Foreground))
        top->comeToFront();
}

void Screen::applyGlobal(Changes changes)
{
    if (changes.has(Change::Idle) || changes.has(Change::Busy) || changes.has(Change::Cursor)) {
        if (programIsIdle())
            showCursor();
        else if (!cursorTimer_.isActive())
            cursorTimer_.start();
    }
    if (changes.has(Change::Idle))
        followFocusedEdit();
    if (changes.has(Change::Busy))
        runWatch_.programWorks();
    if (changes.has(Change::Idle))
        runWatch_.look();
    if (TopView* main = topOf(main_); main && changes.has(Change::Status))
        main->followStatus(window::programStatus());
}

// Shows the text of the edit that has the focus. While the program was busy, the edit ignored the program's changes of
// the text.
void Screen::followFocusedEdit()
{
    const auto focused =
        std::ranges::find_if(views_, [](const auto& each) { return each.second->widget().hasFocus(); });
    WindowState state;
    if (focused == views_.end() || !window::readWindow(focused->first, state) || state.kind != WindowKind::Edit)
        return;
    Changes text;
    text.add(Change::Text);
    focused->second->follow(state, text);
}

void Screen::showCursor()
{
    if (TopView* main = topOf(main_))
        main->setWaiting(window::showsWaitCursor() || !programIsIdle());
}

TopView* Screen::makeTop(const WindowState& state)
{
    WindowState owner;
    QWidget* ownerWidget = nullptr;
    bool modal = false;
    if (window::readWindow(state.parent, owner)) {
        if (TopView* top = topOf(state.parent))
            ownerWidget = &top->widget();
        // A window on the owner's thread blocks the owner. The progress window of a run belongs to another thread, so
        // it doesn't block the owner.
        modal = owner.thread == state.thread;
    }
    switch (state.kind) {
    case WindowKind::MessageBox:
        return makeMessageView(state, input_, ownerWidget);
    case WindowKind::Dialog:
        return new DialogView(state, input_, ownerWidget, modal);
    default:
        return makeMainView(state, input_, host_);
    }
}

void Screen::build(const WindowState& state)
{
    TopView* top = makeTop(state);
    views_[state.window] = top;
    tops_[state.window] = top;
    if (state.kind == WindowKind::Main && !main_)
        main_ = state.window;
    for (const HWND child : window::childrenOf(state.window)) {
        WindowState control;
        if (window::readWindow(child, control))
            addControl(*top, control);
    }
    top->followStatus(window::programStatus());
    runWatch_.look();
    top->present();
}

void Screen::addControl(TopView& top, const WindowState& state)
{
    if (state.kind == WindowKind::CommandBands) {
        top.followBands(state.window);
        return;
    }
    View* view = top.makesOwnControls() ? nullptr : makeControlView(state, input_, &top.content());
    if (!view)
        return;
    views_[state.window] = view;
    followControl(*view, state, Changes::all());
    top.addControl(*view, state);
    if (state.focused)
        focus_ = state.window;
}

// Hides the widget now and deletes it later, because the click that destroys the window may come from the widget.
void Screen::remove(HWND window)
{
    const auto found = views_.find(window);
    if (found == views_.end())
        return;
    View* view = found->second;
    views_.erase(found);
    if (tops_.erase(window) > 0) {
        removeInside(view->widget());
        if (window == main_)
            main_ = nullptr;
    } else {
        for (const auto& [handle, top] : tops_)
            top->removeControl(*view);
    }
    view->widget().hide();
    view->widget().deleteLater();
}

// Removes the views of the controls in `top`, of the windows that `top` owns, and of the controls in those windows. The
// toolkit deletes the widgets of these views together with `top`, even if the windows still exist in the window core.
void Screen::removeInside(const QWidget& top)
{
    const auto isOwned = [&top](const auto& other) { return isInside(other.second->widget(), top); };
    for (auto owned = std::ranges::find_if(tops_, isOwned); owned != tops_.end();
         owned = std::ranges::find_if(tops_, isOwned))
        remove(owned->first);
    std::erase_if(views_, isOwned);
}

TopView* Screen::topOf(HWND window) const
{
    const auto found = tops_.find(window);
    return found == tops_.end() ? nullptr : found->second;
}

}  // namespace platform::qt
