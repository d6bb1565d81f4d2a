// screen.cpp - all windows of the core on the desktop.

#include "screen.h"

#include "dialog_view.h"
#include "view_makers.h"

#include "ce/window.h"

#include <QApplication>

#include <algorithm>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowKind;
using window::WindowState;
using namespace std::chrono_literals;

constexpr auto FrameTime = 16ms;
// As long as a user's input waits for its outcome. A run that begins with it takes longer and isn't waited for.
constexpr auto AnswerTime = 50ms;
// A program that is busy for less shows no wait cursor: it would only flicker.
constexpr auto CursorTime = 150ms;

bool isTopLevel(const WindowState& state)
{
    return (state.style & WS_CHILD) == 0;
}

// Is deleted with it. The toolkit's own isAncestorOf() ends at the window.
bool belongsTo(const QWidget& widget, const QWidget& owner)
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

// Applies the states that every kind of control has, then those of its kind.
void followControl(View& view, const window::WindowState& state, Changes changes)
{
    view.widget().setEnabled(state.enabled);
    view.follow(state, changes);
    view.widget().setVisible(state.visible);
}

}  // namespace

Screen::Screen()
    : batch_([this] {
          QMetaObject::invokeMethod(
              this, [this] { frame_.start(); }, Qt::QueuedConnection);
      }),
      courier_([this](HWND) { settle(); })
{
    frame_.setSingleShot(true);
    frame_.setTimerType(Qt::PreciseTimer);
    frame_.setInterval(FrameTime);
    connect(&frame_, &QTimer::timeout, this, [this] { flush(); });
    patience_.setSingleShot(true);
    patience_.setInterval(CursorTime);
    connect(&patience_, &QTimer::timeout, this, [this] { showWaiting(); });
    window::setDisplay(&batch_);
}

Screen::~Screen()
{
    window::setDisplay(nullptr);
    // What the program took away last stands here until now.
    while (!tops_.empty())
        retire(tops_.begin()->first);
}

void Screen::flush()
{
    frame_.stop();
    focus_ = nullptr;
    for (const Changed& changed : batch_.take())
        apply(changed);
    const auto focused = views_.find(focus_);
    if (focused != views_.end() && !focused->second->widget().hasFocus())
        focused->second->widget().setFocus(Qt::TabFocusReason);
}

void Screen::settle()
{
    batch_.waitUntil([this] { return programRests(); }, AnswerTime);
    flush();
}

// Does the thread of the main window wait for its user, whatever window stands in front?
bool Screen::programRests() const
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
        retire(changed.window);
        return;
    }
    if (changed.changes.has(Change::Focus) && state.focused)
        focus_ = changed.window;
    if (const auto known = views_.find(changed.window); known != views_.end()) {
        if (isTopLevel(state))
            known->second->follow(state, changed.changes);
        else
            followControl(*known->second, state, changed.changes);
        if (changed.changes.has(Change::Focus))
            if (TopView* top = topOf(isTopLevel(state) ? state.window : state.parent))
                top->followFocus();
        if (changed.changes.has(Change::Foreground))
            if (TopView* top = topOf(changed.window))
                top->comeToFront();
        return;
    }
    if (!isTopLevel(state)) {
        if (TopView* top = topOf(state.parent))
            addControl(*top, state);
    } else if (!state.parent || isAlive(state.parent)) {
        build(state);  // with a dead owner it goes as well, as soon as its thread gets to it
    }
}

void Screen::applyGlobal(Changes changes)
{
    if (changes.has(Change::Idle) || changes.has(Change::Busy) || changes.has(Change::Cursor)) {
        if (programRests())
            showWaiting();
        else if (!patience_.isActive())
            patience_.start();
    }
    // An edit that was ahead of a program at work is brought in line now.
    if (const auto focused = std::find_if(views_.begin(), views_.end(),
                                          [](const auto& each) { return each.second->widget().hasFocus(); });
        changes.has(Change::Idle) && focused != views_.end()) {
        WindowState state;
        Changes text;
        text.add(Change::Text);
        if (window::readWindow(focused->first, state) && state.kind == WindowKind::Edit)
            focused->second->follow(state, text);
    }
}

void Screen::showWaiting()
{
    const bool waiting = window::showsWaitCursor() || !programRests();
    for (const auto& [window, top] : tops_)
        if (window == main_)
            top->setWaiting(waiting);
}

TopView* Screen::makeTop(const WindowState& state)
{
    WindowState owner;
    QWidget* ownerWidget = nullptr;
    bool modal = false;
    if (window::readWindow(state.parent, owner)) {
        if (const TopView* top = topOf(state.parent))
            ownerWidget = &const_cast<TopView*>(top)->widget();
        // A window of the owner's own thread keeps that from going on; a run's window has a thread of its own.
        modal = owner.thread == state.thread;
    }
    switch (state.kind) {
    case WindowKind::MessageBox:
        return makeMessageView(state, courier_, ownerWidget);
    case WindowKind::Dialog:
        return new DialogView(state, courier_, ownerWidget, modal);
    default:
        return makeMainView(state, courier_);
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
    top->present();
}

void Screen::addControl(TopView& top, const WindowState& state)
{
    if (state.kind == WindowKind::CommandBands) {
        top.followBands(state.window);
        return;
    }
    View* view = top.bringsItsControls() ? nullptr : makeControlView(state, courier_, &top.content());
    if (!view)
        return;
    views_[state.window] = view;
    followControl(*view, state, Changes::all());
    top.addControl(*view, state);
    if (state.focused)
        focus_ = state.window;
}

// Gone from the screen at once; the widget itself only later, since the click that ends it may come from it.
void Screen::retire(HWND window)
{
    const auto found = views_.find(window);
    if (found == views_.end())
        return;
    View* view = found->second;
    views_.erase(found);
    if (tops_.erase(window) > 0) {
        // All that belongs to its widget goes with it, known to the core or not: windows over it, controls in it.
        const auto isOver = [view](const auto& top) { return belongsTo(top.second->widget(), view->widget()); };
        for (auto over = std::ranges::find_if(tops_, isOver); over != tops_.end();
             over = std::ranges::find_if(tops_, isOver))
            retire(over->first);
        std::erase_if(views_, [view](const auto& each) { return belongsTo(each.second->widget(), view->widget()); });
        if (window == main_)
            main_ = nullptr;
    } else {
        for (const auto& [handle, each] : tops_)
            each->removeControl(*view);
    }
    view->widget().hide();
    view->widget().deleteLater();
}

TopView* Screen::topOf(HWND window) const
{
    const auto found = tops_.find(window);
    return found == tops_.end() ? nullptr : found->second;
}

}  // namespace platform::qt
