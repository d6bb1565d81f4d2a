// snapshot.cpp - a window and its controls as they are at one moment.

#include "snapshot.h"

#include "window/core.h"

namespace platform::headless {

using window::WindowKind;
using window::WindowState;

namespace {

WindowState stateUnderLock(const window::Window& window)
{
    WindowState state;
    state.window = window.handle;
    state.thread = window.thread->id;
    state.kind = window.dialog && window.dialog->messageBox ? WindowKind::MessageBox : window.windowClass->kind;
    state.text = window.text;
    state.id = window.id;
    state.style = window.style;
    state.visible = window::hasStyle(window, WS_VISIBLE);
    return state;
}

}  // namespace

std::optional<Snapshot> snapshotOf(HWND window)
{
    Snapshot snapshot;
    if (!window::readWindow(window, snapshot.window))
        return std::nullopt;
    for (const HWND child : window::childrenOf(window)) {
        if (WindowState control; window::readWindow(child, control))
            snapshot.controls.push_back(std::move(control));
    }
    return snapshot;
}

std::optional<Snapshot> snapshotUnderLock(HWND window)
{
    const window::Window* found = window::findWindow(window);
    if (!found)
        return std::nullopt;
    Snapshot snapshot;
    snapshot.window = stateUnderLock(*found);
    for (const window::Window* child : found->children)
        snapshot.controls.push_back(stateUnderLock(*child));
    return snapshot;
}

}  // namespace platform::headless
