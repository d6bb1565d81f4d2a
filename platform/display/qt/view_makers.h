// view_makers.h - makes the view of each kind of window. The source of each kind defines its maker.
//
// `parent` and `owner` delete the widget of the view together with their own.
#pragma once

#include "top_view.h"
#include "view.h"

#include "start/window_module.h"

class QTreeView;

namespace platform::qt {

// Makes the view for the control's kind. Null for a kind that isn't shown.
View* makeControlView(const window::WindowState& state, const UserInput& input, QWidget* parent);

// Push buttons, check boxes, radio buttons and group boxes, by the window's style.
View* makeButtonView(const window::WindowState& state, const UserInput& input, QWidget* parent);
View* makeDateView(const window::WindowState& state, const UserInput& input, QWidget* parent);
// One line or many, by the window's style.
View* makeEditView(const window::WindowState& state, const UserInput& input, QWidget* parent);
View* makeListView(const window::WindowState& state, const UserInput& input, QWidget* parent);
View* makeProgressView(const window::WindowState& state, const UserInput& input, QWidget* parent);
// A text or an icon.
View* makeStaticView(const window::WindowState& state, const UserInput& input, QWidget* parent);
View* makeTreeView(const window::WindowState& state, const UserInput& input, QWidget* parent);

TopView* makeMainView(const window::WindowState& state, const UserInput& input, const display::HostServices& host);
TopView* makeMessageView(const window::WindowState& state, const UserInput& input, QWidget* owner);

// tree_accessible.cpp: shows screen readers each tree view with a TreeItemsModel as a tree whose items can be
// partly marked. Repeated calls change nothing.
void useTreeAccessible();
// The current item of the tree was expanded, collapsed, marked or unmarked. The toolkit passes no event on from which a
// screen reader could tell that, so it gets the item as a new object with the focus, and reads it with its new state.
void reportCurrentAgain(QTreeView& tree);

}  // namespace platform::qt
